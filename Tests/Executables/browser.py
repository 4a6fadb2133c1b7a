"""Chromium without a window, told what to do by its own protocol of developers."""

import base64

from tab import REBOUND, RunningBrowser, Tab, in_page  # noqa: F401

# Of those keys with which the browser itself does something.
KEY_CODES = {"Tab": 9, "Enter": 13, "Escape": 27, " ": 32}


class Browser(RunningBrowser):
    def __init__(self):
        super().__init__("chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                         "--no-first-run", "--disable-background-networking", "--disable-component-update",
                         "--disable-sync", "--disable-dev-shm-usage", "--remote-debugging-port=0", "--user-data-dir={}",
                         f"--host-resolver-rules=MAP {REBOUND} 127.0.0.1", "about:blank")

    def _address(self):
        file = self.folder / "DevToolsActivePort"
        if not file.exists() or file.read_text().count("\n") != 1:
            return None
        port, path = file.read_text().split("\n")
        return f"ws://127.0.0.1:{port}{path}"

    def tab(self, connection):
        return Page(connection)


class Page(Tab):
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

    async def attach(self):
        target = await self.call("Target.createTarget", url="about:blank")
        session = await self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)
        self._envelope = {"sessionId": session["sessionId"]}
        for domain in ("Page", "Runtime", "Log", "Network"):
            await self.call(f"{domain}.enable")

    async def leave(self):
        await self.call("Page.close")

    async def show(self, width, height, dark=False, touch=False, still=False):
        """What kind of screen it is on, from now on; `still` is for people who want nothing to move."""
        await self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                        mobile=touch)
        await self.call("Emulation.setTouchEmulationEnabled", enabled=touch)
        await self.call("Emulation.setEmulatedMedia",
                        features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"},
                                  {"name": "prefers-reduced-motion", "value": "reduce" if still else "no-preference"}])

    async def begin_with(self, script):
        """Runs it in all that is opened from now on, before what is there does."""
        await self.call("Page.addScriptToEvaluateOnNewDocument", source=script)

    async def prefer(self, language):
        """Of the person, from now on."""
        version = await self.call("Browser.getVersion")
        await self.call("Emulation.setUserAgentOverride", userAgent=version["userAgent"], acceptLanguage=language)

    async def _navigate(self, url):
        await self.call("Page.navigate", url=url)

    async def ask(self, script):
        """The value of an expression."""
        result = await self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        assert "exceptionDetails" not in result, result
        return result["result"].get("value")

    async def choose_file(self, selector, path):
        document = await self.call("DOM.getDocument")
        node = await self.call("DOM.querySelector", nodeId=document["root"]["nodeId"], selector=selector)
        await self.call("DOM.setFileInputFiles", nodeId=node["nodeId"], files=[str(path)])

    async def download_to(self, folder):
        await self.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=str(folder))

    async def mouse(self, kind, x, y, **params):
        await self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **params)

    async def key(self, key, text=None, shift=False):
        params = {"key": key, "windowsVirtualKeyCode": KEY_CODES.get(key, 0), "modifiers": 8 if shift else 0}
        text = text or {"Enter": "\r", " ": " "}.get(key)
        await self.call("Input.dispatchKeyEvent", type="keyDown", **params, **({"text": text} if text else {}))
        await self.call("Input.dispatchKeyEvent", type="keyUp", **params)

    async def type(self, text):
        await self.call("Input.insertText", text=text)

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
