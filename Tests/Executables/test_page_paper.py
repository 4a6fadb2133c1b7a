"""The lesson page on paper: dark on white, whatever the screen has, and without what only a finger can use."""

import re

from browser import in_page
from harness import reserved_port
from lesson_page import PASSWORD, Rig, open_page, pair, press, shows

# The contrast of a colour's channels with white: 21 is black.
CONTRAST = """(element => {
    const channels = getComputedStyle(element).color.match(/[\\d.]+/g).slice(0, 3).map(one => Number(one) / 255)
        .map(one => one <= 0.04045 ? one / 12.92 : ((one + 0.055) / 1.055) ** 2.4);
    return 1.05 / (0.2126 * channels[0] + 0.7152 * channels[1] + 0.0722 * channels[2] + 0.05);
})"""


def seen(page, selector, root="document"):
    """How many of these take room."""
    return page.ask(f"[...{root}.querySelectorAll('{selector}')].filter(one => one.getClientRects().length > 0).length")


async def on_paper(page, is_on_paper):
    await page.call("Emulation.setEmulatedMedia", media="print" if is_on_paper else "",
                    features=[{"name": "prefers-color-scheme", "value": "dark"}])
    await page.drawn()


async def sheets(page, programs):
    file = programs.new_folder() / "page.pdf"
    await page.paper(file)
    return len(re.findall(rb"/Type\s*/Page\b", file.read_bytes()))


def test_the_page_and_its_plot_are_printed_dark_on_white(programs, browser):
    async def look(page):
        await open_page(page, rig.port, 794, 1123)
        await shows(page, "#state", "Password needed")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        await press(page, "Record")
        await page.wait_for("Number(document.querySelector('#recorded').textContent.split(' ')[0]) > 3")
        await page.ask("document.querySelector('#night').click()")
        assert await page.ask("getComputedStyle(document.body).backgroundColor") == "rgb(0, 0, 0)"

        await on_paper(page, True)
        assert await page.ask("getComputedStyle(document.body).backgroundColor") == "rgb(255, 255, 255)"
        assert await seen(page, "button, input, #bar, #outcome, #controls, #situations, #place, #datarefs, footer") == 0
        assert await seen(page, "#state, #instruments, #track svg, #script, #recorded") == 5
        for selector in ("#state", "#recorded", ".dials dd", ".dials dt"):
            assert await page.ask(f"{CONTRAST}(document.querySelector('{selector}'))") >= 7, selector
        assert await page.ask("document.documentElement.scrollWidth") <= 794
        await on_paper(page, False)
        assert await sheets(page, programs) == 1

        await press(page, "Look at the flight")
        root = "document.querySelector('#flight > div').shadowRoot"
        await page.wait_for(f"{root}?.querySelector('[data-key=autopilot_on] path.line') != null")
        await on_paper(page, True)
        assert await seen(page, "header, button, main, #flight p") == 0
        assert await seen(page, ".toolbar, .hint, .sticky", root) == 0
        assert await seen(page, ".track svg, [data-key=alt_ft] svg", root) == 2
        assert await page.ask(f"getComputedStyle({root}.querySelector('.sheet')).backgroundColor") == "rgb(255, 255, 255)"
        assert await page.ask(f"{CONTRAST}({root}.querySelector('h1'))") >= 7
        await on_paper(page, False)
        assert 2 <= await sheets(page, programs) <= 3
        assert not page.complaints, page.complaints

        # The same without the companion, where the screen is grey.
        rig.companion.program.end()
        await shows(page, "#state", "Looking for the companion")
        assert await page.ask("getComputedStyle(document.querySelector('main')).filter") == "grayscale(1)"
        await on_paper(page, True)
        assert await page.ask("getComputedStyle(document.querySelector('main')).filter") == "none"

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(browser, look)
