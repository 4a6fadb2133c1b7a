"""The page that `tarnly-track plot` makes, in a browser."""

import asyncio
import json
import re

import pytest
import recordings
from accessibility import need_judge, violations
from browser import in_page

LESSON = [(40, "rotate", "speak"), (290, "downwind", "speak"), (560, "gear-check", "speak")]


def name_of(day):
    return f"session-2026-11-{day}T010938Z.jsonl"


def plotted(programs, *files, svg=False, script=None, tolerances=None):
    """The plot of these recordings."""
    output = programs.new_folder() / ("flight.svg" if svg else "flight.html")
    options = (["--svg"] if svg else []) + (["--script", script] if script else [])
    options += ["--tolerances", tolerances] if tolerances else []
    ended = programs.run("tarnly-track", "plot", *files, "-o", output, *options)
    assert ended.status == 0 and ended.errors == "", ended
    return output


def trigger(name, kind, **condition):
    return {"id": name, "condition_kind": kind, "condition": condition, "action_kind": "speak",
            "action": {"text": name}}


def a_script(programs, *triggers):
    file = programs.new_folder() / "lesson.json"
    file.write_text(json.dumps(list(triggers)))
    return file


def a_trial(programs):
    """What a script would have done: two fire, of which one did fire as well; two do not, one of them without a moment."""
    return a_script(programs, trigger("rotate", "crosses_agl", feet=400, climbing=True),
                    trigger("late", "after_start", seconds=200), trigger("too-high", "crosses_agl", feet=2000, climbing=True),
                    trigger("never", "after_trigger", after_trigger_id="too-high", seconds=5))


def one_flight(programs):
    file = programs.new_folder() / name_of(16)
    recordings.write(file, 1200, gaps=[(300, 380)], frozen=[(700, 760)], fired=LESSON)
    return plotted(programs, file)


def attempts(programs, count=4):
    """Of the same circuit, each a little later and elsewhere; the last one does not get to the second trigger."""
    folder = programs.new_folder()
    return [recordings.write(folder / name_of(16 + number), 620 + 30 * number, lap=600 + 20 * number, shift=0.3 * number,
                             fired=[(40 + 7 * number, "rotate", "speak"), (300, "downwind", "speak")][:2 - (number == 3)])
            for number in range(count)]


def cursors(page):
    return page.ask("[...document.querySelectorAll('.cursor')].map(line => Number(line.getAttribute('x1')))")


def values(page, key):
    return page.ask(f"[...document.querySelectorAll('[data-key={key}] .value')].map(one => one.textContent)")


async def window(page):
    """From, to; seconds."""
    await page.drawn()
    return await page.ask("[Number(document.querySelector('.strips').dataset.from),"
                          " Number(document.querySelector('.strips').dataset.to)]")


async def place_of(page, selector):
    """Its left, top, width and height in the window, scrolled to."""
    return await page.ask(f"(() => {{ const node = document.querySelector('{selector}');"
                          "node.scrollIntoView({block: 'center'}); const box = node.getBoundingClientRect();"
                          "return [box.left, box.top, box.width, box.height]; })()")


async def opened(page, file, width=1000, height=900, **screen):
    await page.show(width, height, **screen)
    await page.open(file)
    await page.wait_for("document.querySelector('[data-key=alt_ft] path.line') !== null"
                        " && [...document.querySelectorAll('.strip svg')].every(one => one.childElementCount > 0)")


def assert_is_alone(page, file):
    assert page.complaints == []
    assert set(page.requests) == {file.resolve().as_uri()}


def test_one_cursor_goes_through_all_strips_and_the_track(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file)
        assert set(await cursors(page)) == {-9}
        left, top, width, height = await place_of(page, "[data-key=bank_deg] svg")
        # A fifth of the way: 52 pixels are the labels', 24 the margin's. A pixel is more than a second wide.
        await page.mouse("mouseMoved", left + 52 + (width - 76) * 0.2, top + height / 2)
        at = await cursors(page)
        assert len(at) == len(set(await page.ask("[...document.querySelectorAll('.strip')].map(one => one.dataset.key)"))) + 1
        assert len(set(at)) == 1 and abs(at[0] - (52 + (width - 76) * 0.2)) < 1
        assert re.fullmatch(r"3:5[89]|4:0[01]", await page.ask("document.querySelector('.time').textContent"))
        expected = recordings.sample(240)
        altitude = float((await values(page, "alt_ft"))[0].replace(",", "").split("\xa0")[0])
        assert abs(altitude - expected["alt_ft"]) < 12
        assert await values(page, "gear_down") == ["up"]
        assert await values(page, "mixture_ratio") == ["100\xa0%"]
        assert await page.ask("document.querySelectorAll('.dot').length") == 1
        # In the gap nobody knows anything.
        await page.mouse("mouseMoved", left + 52 + (width - 76) * 340 / 1200, top + height / 2)
        assert await values(page, "alt_ft") == ["–"]
        assert await page.ask("document.querySelectorAll('.dot').length") == 0
        # And from the track to the strips.
        await page.ask("document.querySelector('.track').scrollIntoView()")
        x, y = await page.ask("(() => { const flag = document.querySelectorAll('.flag')[1].getBoundingClientRect();"
                              "return [flag.left + flag.width / 2, flag.bottom]; })()")
        await page.mouse("mouseMoved", x, y)
        assert re.fullmatch(r"4:[45]\d · downwind", await page.ask("document.querySelector('.time').textContent"))
        assert_is_alone(page, file)
    in_page(browser, work)


def test_no_line_crosses_a_gap_or_a_pause(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file)
        longest = await page.ask("""(() => {
            const width = document.querySelector('[data-key=alt_ft] svg').getBoundingClientRect().width;
            const points = document.querySelector('[data-key=alt_ft] path.line').getAttribute('d')
                .match(/[ML][-\\d.]+/g);
            let longest = 0;
            points.forEach((point, i) => {
                if (point[0] === 'L') longest = Math.max(longest, Number(point.slice(1)) - Number(points[i - 1].slice(1)));
            });
            return longest / (width - 76) * 1200;
        })()""")
        # Both last a minute at least; the longest level stretch is on the ground, between two circuits.
        assert 0 < longest < 62
        breaks = await page.ask("document.querySelector('[data-key=alt_ft] path.line').getAttribute('d').match(/M/g).length")
        assert breaks == 3
        for kind in ("gap", "frozen"):
            assert await page.ask(f"document.querySelectorAll('[data-key=alt_ft] .{kind}').length") == 1
        assert "simulator paused" in await page.ask("document.querySelector('.key').textContent")
    in_page(browser, work)


def test_it_zooms_by_wheel_mouse_keys_and_fingers(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file)
        assert await window(page) == [0, 1200]
        left, top, width, height = await place_of(page, "[data-key=pitch_deg] svg")
        middle, level = left + 52 + (width - 76) / 2, top + height / 2

        scrolled = await page.ask("scrollY")
        await page.mouse("mouseWheel", middle, level, deltaX=0, deltaY=120)
        await page.wait_for(f"scrollY > {scrolled}")
        assert await window(page) == [0, 1200], "the wheel alone is the page's"
        left, top, width, height = await place_of(page, "[data-key=pitch_deg] svg")
        level = top + height / 2
        await page.mouse("mouseWheel", middle, level, deltaX=0, deltaY=-300, modifiers=2)
        await page.wait_for("Number(document.querySelector('.strips').dataset.from) > 0")
        begin, end = await window(page)
        assert end - begin < 1000 and abs((begin + end) / 2 - 600) < 20

        await page.mouse("mousePressed", middle, level, button="left", clickCount=1)
        await page.mouse("mouseMoved", middle + 60, level, button="left", buttons=1)
        await page.mouse("mouseReleased", middle + 60, level, button="left", clickCount=1)
        moved = await window(page)
        assert moved[0] < begin and abs((moved[1] - moved[0]) - (end - begin)) < 0.1

        await page.ask("document.querySelector('.strips').focus()")
        await page.key("0", "0")
        assert await window(page) == [0, 1200]
        await page.key("+", "+")
        begin, end = await window(page)
        assert abs((end - begin) - 600) < 0.1
        before = await page.ask("Number(document.querySelector('.strips').getAttribute('aria-valuenow'))")
        await page.key("ArrowRight")
        after = await page.ask("Number(document.querySelector('.strips').getAttribute('aria-valuenow'))")
        assert abs(after - before - 6) < 0.2
        assert "altitude" in await page.ask("document.querySelector('.strips').getAttribute('aria-valuetext')")
        await page.key("End")
        assert (await window(page))[1] == 1200
        assert_is_alone(page, file)
    in_page(browser, work)


def test_fingers_zoom_by_two_and_point_by_one(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file, 390, 844, touch=True)
        left, top, width, height = await place_of(page, "[data-key=bank_deg] svg")
        middle, level = left + width / 2, top + height / 2
        await page.touch("touchStart", [(middle, level)])
        await page.touch("touchEnd", [])
        assert len(await values(page, "bank_deg")) == 1
        assert await window(page) == [0, 1200]
        await page.touch("touchStart", [(middle - 30, level), (middle + 30, level)])
        for step in range(1, 7):
            await page.touch("touchMove", [(middle - 30 - 10 * step, level), (middle + 30 + 10 * step, level)])
        await page.touch("touchEnd", [])
        begin, end = await window(page)
        assert 300 < end - begin < 600, "fingers that are three times as far apart"
        assert_is_alone(page, file)
    in_page(browser, work)


def test_flights_are_laid_over_each_other_by_time_or_by_a_trigger(programs, browser):
    file = plotted(programs, *attempts(programs))

    async def choose(page, label):
        await page.ask("(() => { const choice = document.getElementById('align');"
                       f"choice.value = [...choice.options].findIndex(one => one.text.includes('{label}'));"
                       "choice.dispatchEvent(new Event('change')); })()")
        await page.drawn()

    async def work(page):
        await opened(page, file)
        lines = "document.querySelectorAll('[data-key=alt_ft] path.line').length"
        assert await page.ask(lines) == 4
        assert await window(page) == [0, 710]
        await choose(page, "rotate")
        # The earliest rotates after 40 s, the last one flies for 710 - 61 s after that.
        assert await window(page) == [-61, 649]
        await choose(page, "downwind")
        assert await page.ask(lines) == 3
        assert "not drawn: D." in await page.ask("document.querySelector('.remark').textContent")
        await choose(page, "time of day")
        begin, _ = await window(page)
        assert begin == 1794791378
        await choose(page, "start")
        await page.ask("document.getElementById('flight1').click()")
        await page.drawn()
        assert await page.ask("[...document.querySelectorAll('[data-key=alt_ft] path.line')]"
                              ".map(one => one.getAttribute('class'))") == [f"line flight{n}" for n in (0, 2, 3)]
        dashes = await page.ask("[...document.querySelectorAll('.flights path.line')]"
                                ".map(one => getComputedStyle(one).strokeDasharray)")
        assert len(set(dashes)) == 4, "without colours they can be told apart as well"
        assert_is_alone(page, file)
    in_page(browser, work)


def test_what_people_have_named_is_text_and_nothing_else(programs, browser):
    evil = "</script><script>document.title='taken'</script><img src=x onerror=\"document.title='taken'\">"
    recording = programs.new_folder() / "<img src=x onerror=document.title='taken'>&amp;.jsonl"
    recordings.write(recording, 100, fired=[(20, evil, "<b>"), (30, "<!-- <script>", "\u2028'")])
    file = plotted(programs, recording)

    async def work(page):
        await opened(page, file)
        await page.drawn()
        assert await page.ask("document.title") == "Recorded flight, start unknown"
        assert await page.ask("document.querySelectorAll('img').length") == 0
        shown = await page.ask("[...document.querySelectorAll('td.id')].map(one => one.textContent)")
        assert shown == [evil, "<b>", "<!-- <script>", "\u2028'"]
        assert await page.ask("document.querySelector('.name').textContent") == recording.name
        assert_is_alone(page, file)
    in_page(browser, work)


def test_what_a_script_would_have_done_is_marked_beside_what_fired(programs, browser):
    recording = programs.new_folder() / name_of(16)
    recordings.write(recording, 1200, fired=LESSON)
    file = plotted(programs, recording, script=a_trial(programs))

    async def work(page):
        await opened(page, file)
        # On the track, in the strip of what was recorded, on the lines of altitude and height, and in the key.
        for kind, count in (("would", 2), ("miss", 1)):
            for key in ("track", "recorded", "alt_ft", "agl_ft"):
                assert await page.ask(f"document.querySelectorAll('[data-key={key}] .{kind}').length") == count, (kind, key)
            assert await page.ask(f"document.querySelectorAll('.key .{kind}').length") == 1
        assert await page.ask("document.querySelectorAll('.track .flag').length") == 3
        rows = await page.ask("[...document.querySelectorAll('section.fired:last-of-type tr')]"
                              ".map(row => [...row.children].map(cell => cell.textContent).join('|'))")
        assert rows[0] == "Mark|After|UTC|Trigger|Action|Outcome|Altitude, ft|Above ground, ft"
        assert [row.split("|")[0] for row in rows[1:]] == ["s1", "s2", "m1", "m2"]
        assert "rotate|speak|would have fired; fired in the recording after 0:40" in rows[1]
        assert "|3:20|01:12:58|late|speak|would have fired; did not fire in the recording|" in rows[2]
        assert re.search(r"too-high\|–\|would not have fired: never above \d+ ft AGL \(at \d+:\d\d\), and waits", rows[3])
        assert rows[4].startswith("m2|\u2013|\u2013|never|\u2013|would not have fired: waits for")
        summary = await page.ask("document.querySelector('.flights').textContent")
        assert "With the script lesson.json 2 triggers would have fired, 2 would not (too-high: never above" in summary
        # A row leads to its moment, of which the line at the top says what is marked there.
        await page.ask("document.querySelectorAll('section.fired:last-of-type td button')[2].click()")
        await page.drawn()
        assert "script missed too-high: never above" in await page.ask("document.querySelector('.time').textContent")
        assert len(set(await cursors(page)) - {-9}) == 1
        await page.picture(programs.folder / "marks.png")
        assert_is_alone(page, file)
    in_page(browser, work)


def some_tolerances(programs):
    """What is met, what is not, of which the recording does not tell, how long something takes, and an approach."""
    file = programs.new_folder() / "tolerances.json"
    file.write_text(json.dumps([
        {"id": "bank", "name": "Bank", "kind": "bank_not_exceeded", "bank_deg": 30},
        {"id": "high", "name": "Downwind height", "kind": "altitude_held", "from": "rotate", "to": "gear-check", "feet": 2200,
         "within_ft": 300},
        {"id": "never", "kind": "height_held", "from": "no such", "feet": 5, "within_ft": 1},
        {"id": "time", "name": "To the gear check", "kind": "time_between", "from": "rotate", "to": "gear-check",
         "at_least_s": 300, "at_most_s": 600},
        {"id": "stable", "kind": "stable_at", "feet": 500, "bank_deg": 10, "pitch_at_least_deg": -5, "flap_ratio": 0.4}]))
    return file


def test_grades_have_words_and_pictures_that_lead_to_the_worst_moment(programs, browser):
    recording = programs.new_folder() / name_of(16)
    recordings.write(recording, 600, fired=LESSON)
    file = plotted(programs, recording, tolerances=some_tolerances(programs))

    async def work(page):
        await opened(page, file)
        rows = await page.ask("[...document.querySelectorAll('.grades tbody tr')]"
                              ".map(row => [...row.children].slice(0, 3).map(cell => cell.textContent))")
        assert [row[0] for row in rows] == ["✓ met", "✗ not met", "? not judged", "✓ met", "✗ not met"]
        assert [row[1] for row in rows] == ["Bank", "Downwind height", "never", "To the gear check", "stable"]
        assert rows[1][2].startswith("farthest ") and "did not fire" in rows[2][2]
        assert "Grades: 2 of 5 met" in await page.ask("document.querySelector('.grades').textContent")
        assert "Of 5 tolerances 2 met (Downwind height: not met; " in await page.ask("document.querySelector('.flights').textContent")
        shown = await page.ask("[...document.querySelectorAll('.grades tbody tr')].map(row => "
                               "[row.querySelectorAll('button.graded').length, row.querySelectorAll('.permitted').length,"
                               " row.querySelector('.beyond')?.getAttribute('d').length > 0])")
        assert shown == [[1, 1, False], [1, 1, True], [0, 0, False], [0, 1, False], [3, 3, True]]
        await page.ask("document.querySelectorAll('button.graded')[1].click()")
        await page.drawn()
        said = rows[1][2].split(", at ")[1].split(";")[0]
        assert (await page.ask("document.querySelector('.time').textContent")).split(" ")[0] == said
        await page.picture(programs.folder / "grades.png")
        assert_is_alone(page, file)
    in_page(browser, work)


CONTRAST = """(() => {
    const channels = (text) => text.match(/[\\d.]+/g).slice(0, 3).map(Number);
    const light = (text) => channels(text).map((c) => c / 255)
        .map((c) => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
    const ground = light(getComputedStyle(document.body).backgroundColor);
    const worst = {};
    const look = (selector, property) => {
        const found = [...document.querySelectorAll(selector)];
        if (found.length === 0) worst[selector] = 'missing';
        for (const node of found) {
            const other = light(getComputedStyle(node)[property]);
            const contrast = (Math.max(ground, other) + 0.05) / (Math.min(ground, other) + 0.05);
            worst[selector] = Math.min(worst[selector] ?? 99, contrast);
        }
    };
    for (const selector of ['body', '.unit', '.hint', '.value', 'td', 'footer', 'button']) look(selector, 'color');
    for (const selector of ['svg text.tick', '.flag']) look(selector, 'fill');
    for (const selector of ['[data-key=alt_ft] path.line', '.track .would', '.track .miss',
        '.grades path.beyond']) look(selector, 'stroke');
    return worst;
})()"""


@pytest.mark.parametrize("dark", [False, True])
@pytest.mark.parametrize("width, height", [(390, 844), (1280, 800)])
def test_it_can_be_read_on_a_phone_and_a_desk_in_light_and_dark(programs, browser, width, height, dark):
    file = plotted(programs, *attempts(programs), script=a_trial(programs), tolerances=some_tolerances(programs))

    async def work(page):
        await opened(page, file, width, height, dark=dark, touch=width < 600)
        ground = await page.ask("getComputedStyle(document.body).backgroundColor")
        assert (ground == "rgb(255, 255, 255)") != dark
        left, top, across, height_ = await place_of(page, "[data-key=alt_ft] svg")
        await page.mouse("mouseMoved", left + across / 2, top + height_ / 2)
        await page.drawn()
        for selector, contrast in (await page.ask(CONTRAST)).items():
            assert contrast != "missing" and contrast >= 4.5, (selector, contrast)
        assert await page.ask("document.documentElement.scrollWidth") <= width
        await page.picture(programs.folder / "page.png")
        assert_is_alone(page, file)
    in_page(browser, work)


def test_on_paper_it_has_the_drawings_and_no_buttons(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file, dark=True)
        await page.paper(programs.folder / "page.pdf")
        paper = (programs.folder / "page.pdf").read_bytes()
        assert paper.startswith(b"%PDF") and 2 <= len(re.findall(rb"/Type\s*/Page\b", paper)) <= 5
        await page.call("Emulation.setEmulatedMedia", media="print",
                        features=[{"name": "prefers-color-scheme", "value": "dark"}])
        await page.drawn()
        assert await page.ask("getComputedStyle(document.body).backgroundColor") == "rgb(255, 255, 255)"
        assert await page.ask("[...document.querySelectorAll('.toolbar, .hint')]"
                              ".every(one => one.getClientRects().length === 0)")
        assert await page.ask("document.querySelector('[data-key=alt_ft] svg').getClientRects().length") == 1
    in_page(browser, work)


def test_a_page_tells_those_who_listen_what_it_shows(programs, browser):
    file = one_flight(programs)

    async def work(page):
        await opened(page, file)
        tree = await page.call("Accessibility.getFullAXTree")
        found = {(node.get("role", {}).get("value"), node.get("name", {}).get("value")) for node in tree["nodes"]
                 if not node.get("ignored")}
        assert ("slider", "Moment of the flight") in found
        assert ("region", "Summary") in found
        assert {("columnheader", "Trigger"), ("cell", "gear-check")} <= found
        said = await page.ask("document.querySelector('.flights').textContent")
        assert "3 triggers fired" in said
        assert "Nothing was recorded during one gap (5:00 to 6:20)" in said
        assert "The simulator was paused once (11:40 to 12:39)" in said
        button = await place_of(page, "td button")
        await page.mouse("mousePressed", button[0] + 5, button[1] + 5, button="left", clickCount=1)
        await page.mouse("mouseReleased", button[0] + 5, button[1] + 5, button="left", clickCount=1)
        assert await page.ask("document.querySelector('.time').textContent") == "0:40 · rotate"
    in_page(browser, work)


def test_no_rule_of_accessibility_is_broken(programs, browser):
    need_judge()
    everything = {"script": a_trial(programs), "tolerances": some_tolerances(programs)}
    pages = {"one flight": one_flight(programs), "four flights": plotted(programs, *attempts(programs), **everything)}

    async def work(page):
        found = []
        for name, file in pages.items():
            for dark in (False, True):
                await opened(page, file, 390, 844, dark=dark)
                found += [[name, "dark" if dark else "light", *one] for one in await violations(page)]
        return found
    assert not (found := in_page(browser, work)), "\n".join(map(str, found))
