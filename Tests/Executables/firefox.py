"""Firefox without a window, told what to do by WebDriver BiDi."""

import json

from tab import REBOUND, RunningBrowser, Tab

# It asks for nothing but what the page asks for.
PREFERENCES = f"""\
user_pref("network.dns.localDomains", "{REBOUND}");
user_pref("services.settings.server", "data:,none");
user_pref("app.normandy.enabled", false);
user_pref("network.captive-portal-service.enabled", false);
user_pref("network.connectivity-service.enabled", false);
"""


class Firefox(RunningBrowser):
    def __init__(self):
        super().__init__("firefox-esr", "--headless", "--no-remote", "--profile", "{}", "--remote-debugging-port", "0")

    def _prepare(self):
        (self.folder / "user.js").write_text(PREFERENCES)

    def _address(self):
        file = self.folder / "WebDriverBiDiServer.json"
        try:
            return f"ws://127.0.0.1:{json.loads(file.read_text())['ws_port']}/session"
        except (FileNotFoundError, json.JSONDecodeError):
            return None

    def tab(self, connection):
        return FirefoxPage(connection)


def plain(found):
    """A value as it came over the wire, as one of Python."""
    kind, value = found["type"], found.get("value")
    if kind == "array":
        return [plain(one) for one in value]
    if kind == "object":
        return {name: plain(one) for name, one in value}
    return float(value) if kind == "number" else value


class FirefoxPage(Tab):
    def _note(self, method, params):
        if method == "network.beforeRequestSent":
            self.requests.append(params["request"]["url"])
        elif method == "log.entryAdded":
            self.complaints.append(params)
        elif method == "browsingContext.load":
            self._loaded.set()

    async def attach(self):
        await self.call("session.new", capabilities={})
        created = await self.call("browsingContext.create", type="tab")
        self._context = created["context"]
        await self.call("session.subscribe", contexts=[self._context],
                        events=["browsingContext.load", "network.beforeRequestSent", "log.entryAdded"])

    async def leave(self):
        await self.call("browsingContext.close", context=self._context)
        await self.call("session.end")

    async def show(self, width, height, touch=False):
        """How large the window is, from now on; `touch` is nothing that this browser can be given."""
        await self.call("browsingContext.setViewport", context=self._context,
                        viewport={"width": width, "height": height})

    async def begin_with(self, script):
        """Runs it in all that is opened from now on, before what is there does."""
        await self.call("script.addPreloadScript", contexts=[self._context], functionDeclaration=f"() => {{ {script} }}")

    async def _navigate(self, url):
        await self.call("browsingContext.navigate", context=self._context, url=url)

    async def ask(self, script):
        """The value of an expression."""
        result = await self.call("script.evaluate", expression=script, target={"context": self._context},
                                 awaitPromise=True)
        assert result["type"] == "success", result
        return plain(result["result"])

    async def choose_file(self, selector, path):
        found = await self.call("browsingContext.locateNodes", context=self._context,
                                locator={"type": "css", "value": selector})
        [node] = found["nodes"]
        await self.call("input.setFiles", context=self._context, element={"sharedId": node["sharedId"]},
                        files=[str(path)])

    async def download_to(self, folder):
        await self.call("browser.setDownloadBehavior",
                        downloadBehavior={"type": "allowed", "destinationFolder": str(folder)})
