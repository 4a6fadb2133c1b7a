"""Browsers that are told what to do over a WebSocket, and their tabs: what does not depend on which browser it is."""

import asyncio
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

# A name that all browsers here hold to be this computer's: somebody else's, turned to it.
REBOUND = "rebound.example"


class RunningBrowser:
    """One without a window, in a folder of its own; `in_page` opens tabs in it."""

    def __init__(self, name, *options):
        """`{}` in an option stands for the folder."""
        program = shutil.which(name)
        if program is None:
            pytest.skip(f"{name} is not installed (scripts/setup --developer)")
        self.folder = Path(tempfile.mkdtemp(prefix="tarnly-test-"))
        self._prepare()
        self._process = subprocess.Popen([program, *(option.format(self.folder) for option in options)],
                                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                         env=os.environ | {"HOME": str(self.folder)})
        self.address = wait_until(self._look, f"{name}'s port", PATIENCE)

    def _prepare(self):
        pass

    def _look(self):
        assert self._process.poll() is None, f"it ended with {self._process.returncode}"
        return self._address()

    def close(self):
        self._process.terminate()
        try:
            self._process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        # Its other processes end a little later, and write until then.
        wait_until(self._is_removed, f"{self.folder} is removed", PATIENCE)

    def _is_removed(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        return not self.folder.exists()


class Tab:
    """What it asked the network for, and what it complained of, is kept."""

    def __init__(self, connection):
        self._connection = connection
        self._numbers = itertools.count(1)
        self._answers = {}
        self._envelope = {}
        self.requests = []
        self.complaints = []
        self._loaded = asyncio.Event()
        self._reader = asyncio.ensure_future(self._read())

    async def _read(self):
        async for text in self._connection:
            message = json.loads(text)
            if "id" in message:
                self._answers.pop(message["id"]).set_result(message)
            else:
                self._note(message["method"], message["params"])

    async def call(self, method, **params):
        number = next(self._numbers)
        answer = self._answers[number] = asyncio.get_running_loop().create_future()
        await self._connection.send(json.dumps({"id": number, "method": method, "params": params} | self._envelope))
        result = await asyncio.wait_for(answer, PATIENCE)
        assert "error" not in result, f"{method}: {result}"
        return result["result"]

    async def go(self, url):
        self._loaded.clear()
        await self._navigate(url)
        await asyncio.wait_for(self._loaded.wait(), PATIENCE)

    async def open(self, path):
        await self.go(path.resolve().as_uri())

    async def wait_for(self, script):
        """Until the expression is true, and what was asked for is drawn."""
        async def look():
            while not await self.ask(script):
                await asyncio.sleep(0.05)
        await asyncio.wait_for(look(), PATIENCE)

    async def drawn(self):
        await self.ask("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(true))))")


def in_page(browser, work):
    """Runs `work(page)` with a new tab; returns what it returns."""
    async def run():
        async with websockets.connect(browser.address, max_size=None, compression=None, ping_interval=None) as connection:
            page = browser.tab(connection)
            await page.attach()
            try:
                return await work(page)
            finally:
                await page.leave()
    return asyncio.run(run())
