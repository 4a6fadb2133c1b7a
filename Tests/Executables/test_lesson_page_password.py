"""The password on the lesson page: what the browser keeps of it, and for how long."""

import pytest
from browser import Browser, in_page
from harness import reserved_port
from lesson_page import PASSWORD, Rig, open_page, pair, press, shows

KEPT = "localStorage.getItem('tarnly.password')"


@pytest.fixture
def browser():
    started = Browser()
    yield started
    started.close()


def is_seen(page, selector):
    return page.ask(f"document.querySelector('{selector}').checkVisibility()")


def test_a_password_is_kept_once_it_was_right_until_it_is_forgotten(programs, browser):
    async def fly(page):
        await open_page(page, port)
        await shows(page, "#state", "Password needed")
        await page.ask("document.querySelector('#keep').click()")
        await pair(page, "wrong one")
        await shows(page, "#words", "That is not the companion's password.")
        assert await page.ask(KEPT) is None and not await is_seen(page, "footer button")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        assert await page.ask(KEPT) == PASSWORD

        await open_page(page, port)
        await shows(page, "#state", "Flying")
        await press(page, "Forget the password", "footer")
        assert await page.ask(KEPT) is None and not await is_seen(page, "footer button")

        await open_page(page, port)
        await shows(page, "#state", "Password needed")
        assert not await page.ask("document.querySelector('#keep').checked")

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, fly)


def test_a_kept_password_is_forgotten_where_the_box_is_emptied(programs, browser):
    async def fly(page):
        await page.go(f"http://127.0.0.1:{port}/licences.txt")
        await page.ask("localStorage.setItem('tarnly.password', 'an old one')")
        await open_page(page, port)
        await shows(page, "#state", "Password needed")
        assert await page.ask("document.querySelector('#keep').checked")
        await page.ask("document.querySelector('#keep').click()")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        assert await page.ask(KEPT) is None and not await is_seen(page, "footer button")

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, fly)


def test_who_has_paired_is_told_so_before_the_simulator_is_known(programs, browser):
    async def fly(page):
        await open_page(page, port)
        await shows(page, "#state", "Password needed")
        await page.ask("""window.told = []; new MutationObserver(() => told.push(document.querySelector('#state').textContent))
            .observe(document.querySelector('#state'), { childList: true, characterData: true, subtree: true })""")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        assert await page.ask("told") == ["Looking for the companion…", "Paired; looking for the simulator…", "Flying"]

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, fly)
