"""The lesson page for people who use it by another way than eyes and fingers."""

import re

import pytest
from accessibility import need_judge, violations
from browser import in_page
from harness import reserved_port
from keyboard import REACHABLE, focused, step, walk_to
from lesson import trigger
from lesson_page import (PASSWORD, SITUATION, Rig, is_flying, open_page, pair, press, script_file, shows, text,
                         type_into)


@pytest.fixture
def rig(programs):
    with reserved_port() as port:
        yield Rig(programs, port)


@pytest.fixture
def script(programs):
    return script_file(programs, trigger("begun", "after_start", seconds=0, action={"text": "Your aircraft."}),
                       trigger("never", "after_start", seconds=9999))


@pytest.mark.parametrize("language, width, height, record, stop, no, look", [
    ("en", 390, 844, "Record", "Stop", "No", "Look at the flight"),
    ("de", 820, 1180, "Aufzeichnen", "Beenden", "Nein", "Den Flug ansehen"),
], ids=["phone", "tablet"])
def test_no_rule_of_accessibility_is_broken(browser, rig, script, language, width, height, record, stop, no, look):
    need_judge()
    found = []

    async def work(page):
        async def judge(state):
            found.extend([state, *one] for one in await violations(page))

        async def judge_colours(state):
            for colours in ("light", "dark", "night"):
                await page.show(width, height, dark=colours == "dark", touch=True, still=True)
                await page.ask(f"document.documentElement.classList.toggle('night', {str(colours == 'night').lower()})")
                await judge(f"{state}, {colours}")
            await page.ask("document.documentElement.classList.remove('night')")

        await page.prefer(language)
        await page.show(width, height, touch=True, still=True)
        await page.go(f"http://127.0.0.1:{rig.port}/")
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        assert await page.ask("document.documentElement.lang") == language
        await judge_colours("password")
        await pair(page, "wrong one")
        await page.wait_for("document.querySelector('#words').textContent !== ''")
        await judge("wrong password")
        await pair(page)
        await is_flying(page)
        await page.choose_file("#script-file", script)
        await page.wait_for("document.querySelector('.triggers li') !== null")
        await press(page, record)
        await shows(page, "#cards", "Your aircraft.")
        await page.ask("document.querySelector('#controls details').open = true")
        await judge_colours("recording")
        await press(page, stop)
        await shows(page, "#record", record)
        await press(page, record)
        await page.wait_for("document.querySelector('dialog').open")
        await judge_colours("question")
        await press(page, no)
        await press(page, look)
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track') != null")
        await judge_colours("plot")
        await page.ask("document.querySelector('#flight button').click()")
        rig.simulator.end()
        await page.wait_for("document.querySelector('header').dataset.state === 'away'")
        await judge("simulator away")
        rig.companion.program.end()
        await page.wait_for("document.querySelector('header').dataset.state === 'looking'")
        await judge_colours("looking")
    in_page(browser, work)
    assert not found, "\n".join(map(str, found))


def test_a_lesson_is_flown_by_keyboard_alone(browser, rig, script):
    async def work(page):
        await open_page(page, rig.port, 820, 1180)
        await page.call("Page.setInterceptFileChooserDialog", enabled=True)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await walk_to(page, "Password")
        await page.type(PASSWORD)
        await page.key("Enter")
        await is_flying(page)

        await walk_to(page, "Choose a script…")
        await page.choose_file("#script-file", script)
        await shows(page, "#script", "Loaded: 2 triggers.")
        await walk_to(page, "Record")
        await page.key("Enter")
        await shows(page, "#cards", "Your aircraft.")

        await shows(page, "#record", "Stop")
        await page.key(" ")
        await shows(page, "#record", "Record")
        await page.key("Enter")
        await page.wait_for("document.querySelector('dialog').open")
        assert await focused(page) == "No"
        around = {await step(page) for _ in range(6)} | {await step(page, back=True) for _ in range(6)}
        assert around - {None} == {"No", "Yes"}, "the focus has left the question"
        await page.key("Escape")
        await page.wait_for("!document.querySelector('dialog').open")
        assert await focused(page) == "Record"
        assert "Your aircraft." in await text(page, "#cards"), "Escape says no"
        await page.key(" ")
        await walk_to(page, "Yes")
        await page.key(" ")
        await page.wait_for("[...document.querySelectorAll('#recording button:not([hidden])')]"
                            ".some(one => one.textContent.startsWith('Download the one before'))")
        await shows(page, "#recorded", "samples")
        await page.key("Enter")
        await shows(page, "#outcome", "Done: Stop")
        await walk_to(page, "Look at the flight")
        await page.key("Enter")
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track') != null")
        assert await focused(page) == "Back to the lesson"
        await walk_to(page, "Moment of the flight")
        await page.key("ArrowRight")
        await page.wait_for("document.querySelector('#flight div').shadowRoot.querySelector('.time').textContent !== ''")
        await walk_to(page, "Back to the lesson", back=True)
        await page.key("Enter")
        assert await focused(page) == "Look at the flight"
    in_page(browser, work)


@pytest.mark.parametrize("width, height", [(390, 844), (844, 390), (1180, 820)], ids=["phone", "on its side", "tablet"])
def test_the_keyboard_gets_to_everything_in_the_order_of_reading(browser, rig, width, height):
    async def work(page):
        await open_page(page, rig.port, width, height)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await pair(page)
        await is_flying(page)
        await page.ask("document.querySelector('#controls details').open = true")
        await page.wait_for("document.querySelector('#controls details li') !== null"
                            " && document.querySelector('#situations li button') !== null")
        reachable = await page.ask(REACHABLE)
        assert len(reachable) > 20 and all(reachable)
        assert [await step(page) for _ in reachable] == reachable
        # And back, where the header must not lie over what is farther down.
        assert [await step(page, back=True) for _ in reachable[1:]] == reachable[-2::-1]
    in_page(browser, work)


def test_nothing_has_to_be_scrolled_sideways_where_the_page_is_enlarged(browser, rig, script):
    """A phone's width of 320 pixels is a small window at 400 %."""
    async def work(page):
        async def overhang(state):
            await page.drawn()
            wide = await page.ask("""[...document.querySelectorAll('#page *')]
                .filter(one => one.checkVisibility() && one.closest('svg') === null && one.getBoundingClientRect().right > 321)
                .map(one => one.outerHTML.slice(0, 99))""")
            assert wide == [] and await page.ask("document.documentElement.scrollWidth") <= 320, state
        await page.prefer("de")
        await open_page(page, rig.port, 320, 480)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await overhang("password")
        await pair(page)
        await is_flying(page)
        await page.choose_file("#script-file", script)
        await press(page, "Aufzeichnen")
        await shows(page, "#cards", "Your aircraft.")
        await page.ask("document.querySelector('#controls details').open = true")
        await overhang("lesson")
        await press(page, "Den Flug ansehen")
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track') != null")
        await overhang("plot")
    in_page(browser, work)


def test_nothing_is_told_aloud_while_nothing_happens(browser, rig):
    """Values that change twice a second would talk over all else."""
    async def work(page):
        await open_page(page, rig.port)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await pair(page)
        await is_flying(page)
        await type_into(page, "#dataref", "sim/flightmodel/position/latitude")
        await press(page, "Add")
        await press(page, "Record")
        await shows(page, "#recorded", "samples")
        await page.wait_for("document.querySelector('#outcome').textContent === ''")
        await page.wait_for("/\\d/.test(document.querySelector('#datarefs output').textContent)")
        return await page.ask("""new Promise(done => {
            const told = [], changed = new Set();
            const live = '[role=status], [role=log], [role=alert], output, [aria-live]:not([aria-live=off])';
            new MutationObserver(changes => changes.forEach(({ target }) => {
                const one = target.nodeType === 1 ? target : target.parentElement;
                changed.add(one);
                const region = one.closest(live);
                if (region !== null && region.ariaLive !== 'off') told.push(region.outerHTML);
            })).observe(document.body, { subtree: true, childList: true, characterData: true });
            setTimeout(() => done([told, changed.size]), 4000);
        })""")
    told, changed = in_page(browser, work)
    assert changed > 2 and told == []


def test_what_happens_is_told_aloud(browser, rig):
    async def work(page):
        await open_page(page, rig.port)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await pair(page, "wrong one")
        await shows(page, "[role=status]#words", "That is not the companion's password.")
        await pair(page)
        await shows(page, "[role=status]#state", "Flying")
        await press(page, "Record")
        await shows(page, "[role=status]#outcome", "Done: Record")
    in_page(browser, work)


def test_the_plot_speaks_the_language_of_the_page(browser, rig, script):
    """What is said in both languages is no word of either: names, units, and what the script has."""
    async def words(page, language, look):
        await page.prefer(language)
        await open_page(page, rig.port)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await pair(page)
        await is_flying(page)
        if language == "de":
            await page.choose_file("#script-file", script)
            await press(page, "Aufzeichnen")
            await shows(page, "#cards", "Your aircraft.")
        await page.wait_for("Number(document.querySelector('#recorded').textContent.split(' ')[0]) > 3")
        await press(page, look)
        root = "document.querySelector('#flight div').shadowRoot"
        await page.wait_for(f"{root}?.querySelector('[data-key=autopilot_on] path.line') != null")
        await page.ask(f"{root}.querySelector('[role=slider]').focus()")
        await page.key("ArrowRight")
        await page.wait_for(f"{root}.querySelector('.time').textContent !== ''")
        said = await page.ask(f"""[...{root}.querySelectorAll('.sheet *')].flatMap(one =>
            [...[...one.childNodes].filter(node => node.nodeType === Node.TEXT_NODE).map(node => node.data),
             ...[...one.attributes].filter(({{ name }}) => /^(aria-(label|valuetext|description)|title|alt)$/.test(name))
                 .map(({{ value }}) => value)])""")
        return set(re.findall(r"[^\W\d_]{2,}", " ".join(said)))

    async def work(page):
        german = await words(page, "de", "Den Flug ansehen")
        english = await words(page, "en", "Look at the flight")
        assert {"Höhe", "Auslöser", "Fuß", "Vergrößern"} <= german and {"Altitude", "Trigger", "feet", "Zoom"} <= english
        assert german & english <= {"UTC", "ft", "session", "jsonl", "begun", "speak", "Autopilot", "Propeller"}
    in_page(browser, work)


def test_the_focus_stays_where_it_is_and_follows_to_the_script(browser, rig):
    async def work(page):
        async def with_focus():
            return await page.ask("document.activeElement.ariaLabel ?? document.activeElement.textContent")
        await open_page(page, rig.port)
        await page.wait_for("document.querySelector('#password')?.checkVisibility()")
        await pair(page)
        await is_flying(page)
        await page.ask("document.querySelector('#controls details').open = true")
        for kept in (f"{SITUATION}: Load", "Engine 1: Fail"):
            await page.wait_for(f"document.querySelector('[aria-label=\"{kept}\"]') !== null")
            await page.ask(f"document.querySelector('[aria-label=\"{kept}\"]').focus(); performance.clearResourceTimings()")
            rig.companion.program.end()
            await shows(page, "#state", "Looking for the companion")
            rig.start()
            await page.wait_for("performance.getEntriesByType('resource').some(one => one.name.endsWith('/failures.json'))")
            await is_flying(page)
            assert await with_focus() == kept
        await page.call("Page.setInterceptFileChooserDialog", enabled=True)
        await page.ask("document.querySelector('#to-script').focus()")
        await page.key("Enter")
        assert await with_focus() == "Script" and await page.ask("document.activeElement.tagName") == "H2"
    in_page(browser, work)
