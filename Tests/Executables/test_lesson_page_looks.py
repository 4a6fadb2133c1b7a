"""How the lesson page looks on phones, tablets and desktops: all of it in sight, to be touched, and red by night."""

import base64
import struct
import zlib

import pytest
from browser import in_page
from harness import reserved_port
from lesson import trigger
from lesson_page import Rig, flying, press, script_file, shows

SCREENS = [(320, 640), (360, 740), (390, 844), (844, 390), (820, 1180), (1180, 820), (1440, 900)]
FINGER = 44

TOO_SMALL = f"""
[...document.querySelectorAll("button, input, summary, label.button")]
    .map(one => one.type === "checkbox" ? one.closest("label") : one)
    .filter(one => one.checkVisibility() && one.type !== "file")
    .map(one => [one.id || one.textContent, one.getBoundingClientRect()])
    .filter(([, box]) => box.width < {FINGER} || box.height < {FINGER}).map(([name]) => name)
"""
CUT_OFF = """
[...document.querySelectorAll("dt, dd, button, label, h2, #state")]
    .filter(one => one.checkVisibility() && one.scrollWidth > one.clientWidth + 1 && one.clientWidth > 0)
    .map(one => one.textContent)
"""
CORNER = "(({right, bottom}) => [right, bottom])(document.querySelector('#bar').getBoundingClientRect())"
COLUMNS = "new Set([...document.querySelectorAll('main .part')].map(one => one.getBoundingClientRect().left)).size"


def pixels(png):
    """Red, green and blue of each pixel, as Chromium writes pictures."""
    at, data = 8, b""
    while at < len(png):
        length, kind = struct.unpack(">I4s", png[at:at + 8])
        body = png[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colours = struct.unpack(">IIBB", body[:10])
        if kind == b"IDAT":
            data += body
        at += length + 12
    assert depth == 8 and colours in (2, 6)
    size = 3 if colours == 2 else 4
    data, before = zlib.decompress(data), bytearray(width * size)
    for row in range(height):
        start = row * (width * size + 1)
        line = unfiltered(data[start], bytearray(data[start + 1:start + 1 + width * size]), before, size)
        yield from zip(line[0::size], line[1::size], line[2::size])
        before = line


def unfiltered(kind, line, above, size):
    for at, byte in enumerate(line):
        left = line[at - size] if at >= size else 0
        corner = above[at - size] if at >= size else 0
        if kind == 1:
            byte += left
        elif kind == 2:
            byte += above[at]
        elif kind == 3:
            byte += (left + above[at]) // 2
        elif kind == 4:
            guess = left + above[at] - corner
            byte += min((left, above[at], corner), key=lambda one: abs(guess - one))
        line[at] = byte & 255
    return line


async def other_colours(page):
    """Those on the screen that are not red."""
    await page.drawn()
    found = await page.call("Page.captureScreenshot", format="png")
    return {colour for colour in pixels(base64.b64decode(found["data"])) if max(colour[1:]) > 0.45 * colour[0] + 2}


async def is_red(page):
    others = await other_colours(page)
    assert not others, sorted(others)[-10:]


@pytest.mark.parametrize("language", ["en", "de"])
def test_all_of_it_is_in_sight_and_large_enough_for_a_finger(programs, browser, language):
    script = script_file(programs, trigger("begun", "after_start", seconds=0,
                                           action={"text": "Abeam the threshold: turn base, thirty degrees of bank."}))

    async def look(page):
        await page.call("Emulation.setUserAgentOverride", userAgent="Test", acceptLanguage=language)
        await flying(page, port)
        await page.choose_file("#script-file", script)
        await page.ask("document.querySelector('#record').click()")
        await shows(page, "#cards", "Abeam")
        await page.ask("document.querySelector('#controls details').open = true")
        for width, height in SCREENS:
            await page.show(width, height, touch=True)
            await page.drawn()
            assert await page.ask("document.documentElement.scrollWidth") <= width, (width, height)
            assert await page.ask(TOO_SMALL) == [], (width, height)
            assert await page.ask(CUT_OFF) == [], (width, height)
            columns = await page.ask(COLUMNS)
            assert columns == (1 if width < 700 else 2 if width < 1000 else 3), (width, columns)
            assert await page.ask(CORNER) == [width, height]

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, look)


def test_the_night_is_red(programs, browser):
    async def look(page):
        await flying(page, port)
        await page.call("Emulation.setUserAgentOverride", userAgent="Test", acceptLanguage="en")
        await press(page, "Night")
        await press(page, "Record")
        await shows(page, "#recorded", "samples")
        await page.ask("document.querySelector('#datarefs input').focus()")
        await is_red(page)
        await page.ask("scrollTo(0, 0); document.querySelector('#speak').focus()")
        await is_red(page)
        await page.ask("document.querySelector('#situations li button').click()")
        await is_red(page)
        await press(page, "No")
        await press(page, "Look at the flight")
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track')")
        await is_red(page)
        assert await page.ask("localStorage.length + sessionStorage.length") == 0
        address = await page.ask("location.href")
        await page.go("about:blank")
        await page.go(address)
        await shows(page, "#state", "Password needed")
        await is_red(page)
        # That it would be seen.
        for colour in ((255, 200, 0), (60, 60, 60)):
            await page.ask(f"document.querySelector('#state').style.color = 'rgb{colour}'")
            assert colour in await other_colours(page)
        assert await page.ask("[...document.querySelectorAll('meta[name=theme-color]')].map(one => one.content)") \
            == ["#000000", "#000000"]

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, look)


def test_the_page_can_be_put_on_a_home_screen(programs, browser):
    async def look(page):
        await page.go(f"http://127.0.0.1:{port}/")
        found = await page.call("Page.getAppManifest")
        assert found["errors"] == [] and found["url"].endswith(".webmanifest"), found
        problems = await page.call("Page.getInstallabilityErrors")
        assert [one["errorId"] for one in problems["installabilityErrors"] if one["errorId"] != "in-incognito"] == []
        touch = await page.ask("fetch(document.querySelector('link[rel=apple-touch-icon]').href)"
                               ".then(answer => answer.blob()).then(createImageBitmap).then(one => one.width)")
        assert touch == 180

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, look)
