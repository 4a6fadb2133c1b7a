"""The switches of the lesson page: what is pressed becomes the simulator's, and is then seen on the page."""

import json

from browser import in_page
from harness import reserved_port
from lesson_page import Rig, flying, load_situation, press, press_load, shows, text, type_into

ENGINE = "sim/operation/failures/rel_engfai0"
BRAKE = "sim/cockpit2/controls/parking_brake_ratio"


def in_flight(programs, browser, work):
    with reserved_port() as port:
        rig = Rig(programs, port)

        async def fly(page):
            await flying(page, port)
            await work(page, rig)
            assert not page.complaints, page.complaints
        in_page(browser, fly)


def reads(page, key, value):
    return page.wait_for(f"document.querySelector('[data-reading={key}] dd').textContent === {json.dumps(value)}")


async def has_a_value(page, name, value):
    """Of those that are shown by name."""
    await page.wait_for(f"[...document.querySelectorAll('#datarefs li')].find(one => one.textContent.includes("
                        f"{json.dumps(name)}))?.querySelector('output').textContent === {json.dumps(value)}")


async def watch(page, name):
    await type_into(page, "#dataref", name)
    await press(page, "Add", "#datarefs")


async def is_asked_and_says(page, answer, question):
    await page.wait_for("document.querySelector('dialog').open")
    assert question in await text(page, "dialog p")
    await press(page, answer, "dialog")


def test_switches_and_failures_switch(programs, browser):
    async def work(page, rig):
        await reads(page, "gear", "down")
        await press(page, "Gear", "#controls")
        await reads(page, "gear", "up")
        flaps = int(await text(page, "[data-reading=flaps] dd"))
        await press(page, "Flaps down")
        await reads(page, "flaps", str(flaps + 25))
        await press(page, "Flaps up")
        await reads(page, "flaps", str(flaps))
        await watch(page, BRAKE)
        await press(page, "Parking brake")
        await has_a_value(page, BRAKE, "1")

        await press(page, "Pause")
        await shows(page, "#state", "Paused")
        await shows(page, "#pause", "Resume")
        await press(page, "Resume")
        await shows(page, "#state", "Flying")

        await watch(page, ENGINE)
        await page.ask("document.querySelector('[aria-label=\"Engine 1: Fail\"]').click()")
        await has_a_value(page, ENGINE, "6")
        await page.ask("document.querySelector('[aria-label=\"Engine 1: Repair\"]').click()")
        await has_a_value(page, ENGINE, "0")

    in_flight(programs, browser, work)


def test_headings_are_magnetic_on_the_dial_and_true_on_the_track(programs, browser):
    true_heading = "sim/flightmodel/position/psi"

    async def work(page, rig):
        await press(page, "Pause")
        await shows(page, "#state", "Paused")
        await watch(page, true_heading)
        await type_into(page, f"#datarefs input[aria-label='{true_heading}']", "90")
        await page.ask(f"document.querySelector('#datarefs [aria-label=\"{true_heading}: Write\"]').click()")
        await reads(page, "heading", "087")
        assert (await page.ask("document.querySelector('#track .aircraft').getAttribute('transform')")).endswith(" rotate(90)")

    in_flight(programs, browser, work)


def test_values_are_written_by_name_and_a_wrong_name_is_told(programs, browser):
    throttle = "sim/cockpit2/engine/actuators/throttle_ratio[0]"

    async def work(page, rig):
        await watch(page, "sim/none")
        await has_a_value(page, "sim/none", "no such dataref")
        await watch(page, throttle)
        await page.wait_for("!['', '–'].includes(document.querySelectorAll('#datarefs output')[1].textContent)")
        await type_into(page, f"#datarefs input[aria-label='{throttle}']", "0,75")
        await page.ask(f"document.querySelector(\"#datarefs input[aria-label='{throttle}']\").nextSibling.click()")
        await has_a_value(page, throttle, "0.75")
        await type_into(page, "#datarefs input[aria-label='sim/none']", "1")
        await page.ask("document.querySelector(\"#datarefs input[aria-label='sim/none']\").nextSibling.click()")
        await shows(page, "#outcome", "Not done: sim/none = 1")
        await shows(page, "#outcome", "unknownDataref")

    in_flight(programs, browser, work)


def test_what_cannot_be_taken_back_is_asked_for_first(programs, browser):
    async def work(page, rig):
        await press(page, "Move there")
        await shows(page, "#place [role=status]", "Latitude, °: from -90 to 90")
        await press(page, "Where it is now")
        here = (await page.ask("document.querySelector('#place-latitude').value"))[:4]
        await type_into(page, "#place-latitude", "48.25")
        await press(page, "Move there")
        await is_asked_and_says(page, "No", "Move the aircraft to")
        assert here in await text(page, "#position")
        await press(page, "Move there")
        await is_asked_and_says(page, "Yes", "Move the aircraft to")
        await shows(page, "#position", "48.2")

        await type_into(page, "#place-bank", "25")
        await type_into(page, "#place-throttleRatio", "80")
        await press(page, "Put into this attitude")
        await is_asked_and_says(page, "Yes", "bank 25°, 100 kt, throttle 80 %?")
        await reads(page, "bank", "25")
        await reads(page, "throttle", "80")

    in_flight(programs, browser, work)


def test_a_situation_is_loaded_by_who_says_yes(programs, browser, command_port):
    async def work(page, rig):
        async with rig.at(command_port.host):
            await flying(page, rig.port)
            await press_load(page, "No")
            await load_situation(page, rig, command_port)
        assert not page.complaints, page.complaints

    with reserved_port() as port:
        rig = Rig(programs, port, "--sim-host", command_port.host)
        in_page(browser, lambda page: work(page, rig))
