"""Chromium without a window, told what to do by its own protocol of developers."""

import asyncio
import base64
import itertools
import json
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest
import websockets
from harness import wait_until

PATIENCE = 120


class Browser:
    """For one test; `page` opens a page in it."""

    def __init__(self):
        program = shutil.which("chromium")
        if program is None:
            pytest.skip("chromium is not installed (scripts/setup --developer)")
        self._folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        command = [program, "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--no-first-run",
                   "--disable-background-networking", "--disable-component-update", "--disable-sync",
                   "--disable-dev-shm-usage", "--remote-debugging-port=0", f"--user-data-dir={self._folder.name}",
                   "about:blank"]
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL, env=os.environ | {"HOME": self._folder.name})
        self.address = self._wait_for_address()

    def _wait_for_address(self):
        file = Path(self._folder.name) / "DevToolsActivePort"

        def found():
            assert self._process.poll() is None, f"chromium ended with {self._process.returncode}"
            return file.exists() and file.read_text().count("\n") == 1
        wait_until(found, "chromium's port", PATIENCE)
        port, path = file.read_text().split("\n")
        return f"ws://127.0.0.1:{port}{path}"

    def close(self):
        self._process.terminate()
        try:
            self._process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._folder.cleanup()


class Page:
    """A tab: what it asked the network for, and what it complained of, is kept."""

    def __init__(self, connection):
        self._connection = connection
        self._numbers = itertools.count(1)
        self._answers = {}
        self._session = None
        self.requests = []
        self.complaints = []
        self._loaded = asyncio.Event()
        self._reader = asyncio.ensure_future(self._read())

    async def _read(self):
        async for text in self._connection:
            message = json.loads(text)
            if "id" in message:
                self._answers[message["id"]].set_result(message)
            else:
                self._note(message["method"], message["params"])

    def _note(self, method, params):
        if method == "Network.requestWillBeSent":
            self.requests.append(params["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            self.complaints.append(params["exceptionDetails"])
        elif method == "Log.entryAdded":
            self.complaints.append(params["entry"])
        elif method == "Runtime.consoleAPICalled":
            self.complaints.append(params)
        elif method == "Page.loadEventFired":
            self._loaded.set()

    async def call(self, method, **params):
        number = next(self._numbers)
        answer = self._answers[number] = asyncio.get_running_loop().create_future()
        message = {"id": number, "method": method, "params": params}
        if self._session is not None:
            message["sessionId"] = self._session
        await self._connection.send(json.dumps(message))
        result = await asyncio.wait_for(answer, PATIENCE)
        assert "error" not in result, f"{method}: {result['error']}"
        return result["result"]

    async def attach(self):
        target = await self.call("Target.createTarget", url="about:blank")
        session = await self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)
        self._session = session["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            await self.call(f"{domain}.enable")

    async def show(self, width, height, dark=False, touch=False):
        """What kind of screen it is on, from now on."""
        await self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                        mobile=touch)
        await self.call("Emulation.setTouchEmulationEnabled", enabled=touch)
        await self.call("Emulation.setEmulatedMedia",
                        features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    async def open(self, path):
        self._loaded.clear()
        await self.call("Page.navigate", url=path.resolve().as_uri())
        await asyncio.wait_for(self._loaded.wait(), PATIENCE)

    async def ask(self, script):
        """The value of an expression."""
        result = await self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        assert "exceptionDetails" not in result, result
        return result["result"].get("value")

    async def wait_for(self, script):
        """Until the expression is true, and what was asked for is drawn."""
        async def look():
            while not await self.ask(script):
                await asyncio.sleep(0.05)
        await asyncio.wait_for(look(), PATIENCE)

    async def drawn(self):
        await self.ask("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(true))))")

    async def mouse(self, kind, x, y, **params):
        await self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **params)

    async def key(self, key, text=None):
        params = {"key": key} | ({"text": text} if text else {})
        await self.call("Input.dispatchKeyEvent", type="keyDown", **params)
        await self.call("Input.dispatchKeyEvent", type="keyUp", key=key)

    async def touch(self, kind, points):
        await self.call("Input.dispatchTouchEvent", type=kind,
                        touchPoints=[{"x": x, "y": y, "id": number} for number, (x, y) in enumerate(points)])

    async def picture(self, path):
        """The whole page, as far down as it goes."""
        found = await self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        path.write_bytes(base64.b64decode(found["data"]))

    async def paper(self, path):
        found = await self.call("Page.printToPDF", paperWidth=8.27, paperHeight=11.69, printBackground=False)
        path.write_bytes(base64.b64decode(found["data"]))


def in_page(browser, work):
    """Runs `work(page)` with a new tab; returns what it returns."""
    async def run():
        async with websockets.connect(browser.address, max_size=None, compression=None, ping_interval=None) as connection:
            page = Page(connection)
            await page.attach()
            return await work(page)
    return asyncio.run(run())
