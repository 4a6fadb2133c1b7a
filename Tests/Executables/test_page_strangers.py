"""What other people's web pages can do with the companion's port, in the browser of somebody who looks at both."""

import http.server
import threading

import pytest
from browser import Browser, in_page
from firefox import Firefox
from lesson import trigger
from lesson_page import script_file
from tab import REBOUND

# A page that may be framed, to see that framing would be noticed.
PAGES = {"/": b"<p>Somebody else's page.", "/framed": b"<script src=shown.js></script>", "/shown.js": b""}


class Stranger(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        page = PAGES.get(self.path)
        self.send_response(404 if page is None else 200)
        self.send_header("Content-Type", "text/javascript" if self.path.endswith(".js") else "text/html")
        self.end_headers()
        self.wfile.write(page or b"")

    def log_message(self, *_):
        pass


@pytest.fixture(scope="module")
def stranger():
    """Where somebody else's pages are."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Stranger)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    yield f"http://127.0.0.1:{server.server_address[1]}"
    server.shutdown()
    thread.join()
    server.server_close()


@pytest.fixture(scope="module", params=[Browser, Firefox], ids=["chromium", "firefox"])
def browser(request):
    started = request.param()
    yield started
    started.close()


def opens(page, address):
    """Whether a page gets a WebSocket there."""
    return page.ask(f"new Promise(done => {{ const socket = new WebSocket('ws://{address}/');"
                    "socket.onopen = () => { socket.close(); done(true); }; socket.onerror = () => done(false); })")


def loads(page, kind, attribute, url):
    return page.ask(f"new Promise(done => {{ const one = document.createElement('{kind}');"
                    f"one.onload = () => done(true); one.onerror = () => done(false); one.{attribute} = '{url}';"
                    "document.body.append(one); })")


def fetches(page, url, mode):
    return page.ask(f"fetch('{url}', {{ mode: '{mode}' }}).then(() => true, () => false)")


async def parts_of(page, url):
    """What the companion's page is made of."""
    await page.go(url)
    return await page.ask("[document.querySelector('script').src, document.querySelector('link[rel=icon]').href]")


def test_a_page_from_elsewhere_gets_nothing(programs, browser, stranger):
    companion = programs.companion()
    address = f"127.0.0.1:{companion.port}"

    async def work(page):
        script, icon = await parts_of(page, f"http://{address}/")
        assert await opens(page, address), "the companion's own page"
        await page.go(f"{stranger}/")
        assert await loads(page, "script", "src", f"{stranger}/shown.js")
        assert not await opens(page, address)
        for url in (f"http://{address}/", f"http://{address}/failures.json"):
            assert not await fetches(page, url, "cors") and not await fetches(page, url, "no-cors"), url
        assert not await loads(page, "script", "src", script)
        assert not await loads(page, "img", "src", icon)
    in_page(browser, work)


def test_the_page_is_shown_within_no_other(programs, browser, stranger):
    companion = programs.companion()

    async def scripts_in_frame(page, url):
        await page.go(f"{stranger}/")
        page.requests.clear()
        await loads(page, "iframe", "src", url)
        await page.drawn()
        return [request for request in page.requests if request.endswith(".js")]

    async def work(page):
        assert await scripts_in_frame(page, f"{stranger}/framed") == [f"{stranger}/shown.js"]
        assert await scripts_in_frame(page, f"http://127.0.0.1:{companion.port}/") == []
    in_page(browser, work)


def test_a_name_that_was_turned_to_this_computer_gets_nothing(programs, browser):
    companion = programs.companion()

    async def work(page):
        await page.go(f"http://localhost:{companion.port}/")
        assert await opens(page, f"localhost:{companion.port}")
        await page.go(f"http://{REBOUND}:{companion.port}/")
        assert await page.ask("location.hostname") == REBOUND
        assert (await page.ask("document.body.innerText")).startswith("The header Host must name this computer once")
        assert await page.ask("fetch('/failures.json').then(answer => answer.status)") == 403
        assert not await opens(page, f"{REBOUND}:{companion.port}")
    in_page(browser, work)


def test_a_page_that_was_allowed_gets_a_websocket_and_no_more(programs, browser, stranger):
    companion = programs.companion("--allow-origin", stranger)

    async def work(page):
        await page.go(f"{stranger}/")
        assert await opens(page, f"127.0.0.1:{companion.port}")
        assert not await fetches(page, f"http://127.0.0.1:{companion.port}/failures.json", "cors")
    in_page(browser, work)


def test_a_script_from_somebody_else_is_text_and_nothing_else(programs, browser):
    companion = programs.companion()
    markup = "<img src=/icon.svg onerror=document.title='taken'>"
    script = script_file(programs, trigger(markup, "after_start", seconds=0, action={"text": markup}))

    async def work(page):
        await page.go(f"http://127.0.0.1:{companion.port}/")
        await page.choose_file("#script-file", script)
        await page.wait_for("document.querySelector('#script li') !== null")
        assert markup in await page.ask("document.querySelector('#script li').textContent")
        assert await page.ask("document.querySelectorAll('main img').length") == 0
        assert await page.ask("document.title") == "Tarnly"
    in_page(browser, work)
