"""The plot of the lesson page is that which tarnly-track makes of the same recording.

Times and values are compared to half the unit to which tarnly-track rounds them; what it leaves out may be what lies on a
level line and, in a recording of more than 8,192 points, what no column of pixels shows.
"""

import json
import random
import subprocess
import tempfile
from pathlib import Path

import pytest
import recordings

WEB = Path(__file__).resolve().parents[1] / "Web"
NAME = "session-2026-11-16T010938Z.jsonl"
METRES_PER_DEGREE = 6_371_008.8 * 3.141592653589793 / 180


@pytest.fixture(scope="module")
def driver():
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as folder:
        file = Path(folder) / "driver.js"
        subprocess.run(["esbuild", WEB / "flightDriver.ts", "--bundle", "--platform=node", "--log-level=warning",
                        f"--outfile={file}"], check=True)
        yield lambda *arguments: subprocess.run(["node", file, *arguments], check=True, stdout=subprocess.PIPE).stdout.decode()


def written(programs, lines):
    file = programs.new_folder() / NAME
    file.write_text("".join(json.dumps(line) + "\n" for line in lines))
    return file


def differences(programs, driver, lines):
    """Between the page's plot of a recording and that which tarnly-track makes of the file that the page gives people."""
    held = written(programs, lines)
    saved = programs.new_folder() / NAME
    saved.write_text(driver("log", held))
    shown = programs.run("tarnly-track", "show", "--json", saved)
    assert shown.status == 0 and shown.errors == "", shown
    summary = json.loads(shown.output)["recording"]
    kinds = [line["kind"] for line in lines]
    assert (summary["samples"], summary["fired"]) == (kinds.count("sample"), kinds.count("fired"))
    assert not summary["torn_end"] and summary["unreadable_lines"] == summary["unknown_lines"] == 0
    return compared(programs, driver, held, saved)


def compared(programs, driver, held, saved):
    plot = programs.new_folder() / "plot.html"
    ended = programs.run("tarnly-track", "plot", saved, "-o", plot)
    assert ended.status == 0 and ended.errors == "", ended
    return driver("compare", held, plot).splitlines()


def changed(lines, change):
    """`change(elapsed, sample)` on each sample."""
    result = json.loads(json.dumps(list(lines)))
    for line in result:
        if line["kind"] == "sample":
            change(line["sample"]["elapsed_s"], line["sample"])
    return result


def lesson():
    fired = [(0, "first", "speak"), (40, "rotate", "speak"), (310, "in the gap", "speak"), (700, "paused", "hint")]
    return list(recordings.lines(900, gaps=[(300, 380)], frozen=[(690, 760)], fired=fired))


def moments(*times, **values):
    """A level flight east with samples at these times."""
    return [{"kind": "sample", "sample": recordings.sample(at) | {"elapsed_s": at} | values} for at in times]


def edges_of_time():
    """Steps of exactly the longest, and a little more; stretches that stand exactly long enough, and not quite."""
    stands = {key: recordings.sample(100)[key] for key in ("lat", "lon", "alt_ft", "agl_ft", "bank_deg", "pitch_deg")}
    return [*moments(2.25, 2.75, 5.75, 8.7501, 11.7502, 12), *moments(20, 22.5, 25, **stands), *moments(25.5, 26),
            *moments(26.5, 29, 31.4999, **stands), *moments(32, 32.05, 32.1), *moments(32.1, 32.5, pitch_deg=-3)]


def jumps():
    """As fast as anything flies, faster, fast between two samples that follow each other at once, and across the date line."""
    lines = moments(*(number / 2 for number in range(60)), 29.55, 29.6, 30)
    speeds = {10: 2490, 20: 2510, 30: 900, 31: 1100, 60: 490, 61: 510}
    east = 179.99
    for number, line in enumerate(lines):
        east += speeds.get(number, 60) * 0.5 / METRES_PER_DEGREE
        line["sample"] |= {"lat": 0.0, "lon": east if east < 180 else east - 360}
    return lines


def unknowns():
    """No altitude at first nor after a gap, positions that are away or lack one half, and values that come and go."""
    def change(elapsed, sample):
        if elapsed < 3 or 380 <= elapsed < 383 or elapsed == 50:
            sample["alt_ft"] = 0
        if 20 <= elapsed < 25:
            del sample["lat"], sample["lon"]
        if 30 <= elapsed < 40:
            del sample["lon"]
        for number, key in enumerate(("agl_ft", "gear_down", "flap_ratio", "bank_deg", "autopilot_on", "throttle_ratio")):
            if elapsed % 97 < number:
                sample.pop(key, None)
        sample.pop("gear_ratio")
    return changed(lesson(), change)


def engines():
    """Five that differ in one lever, agree in another, and begin to be told late in the third."""
    def change(elapsed, sample):
        sample["throttle_ratio"] = [round(0.1 * engine + elapsed / 2000, 4) for engine in range(5)]
        sample["mixture_ratio"] = [1] * (2 if elapsed < 100 else 5)
        sample["prop_ratio"] = [] if elapsed < 200 else [1, 1] if elapsed < 300 else [0, -0.0, 1]
    return changed(lesson(), change)


def one_engine_silent():
    return changed(lesson(), lambda elapsed, sample: sample.update(
        prop_ratio=[0.5] if elapsed < 30 else [], throttle_ratio=[2e9, elapsed / 1000]))


def joined_late():
    """The first seconds were forgotten, and a trigger fired before what is left."""
    early = {"kind": "fired", "fired": {"trigger_id": "early", "elapsed_s": 1, "action_kind": "speak"}}
    return [early, *(line for line in lesson() if line[line["kind"]]["elapsed_s"] > 39)]


def one_sample():
    return moments(3.5)


def nothing():
    return []


@pytest.mark.parametrize("lines", [lesson, edges_of_time, jumps, unknowns, engines, one_engine_silent, joined_late,
                                   one_sample, nothing])
def test_both_plots_are_the_same(programs, driver, lines):
    assert differences(programs, driver, lines()) == []


def any_recording(seed):
    """Samples of which each does something odd to the flight, now and then."""
    chance = random.Random(seed)
    elapsed, stands = 0.0, None
    for _ in range(chance.randint(2, 3000)):
        elapsed += chance.choice([0.5] * 60 + [0.1, 2.9, 3, 3.1, 20])
        stands = elapsed if chance.random() < 0.01 else None if chance.random() < 0.05 else stands
        sample = recordings.sample(elapsed if stands is None else stands) | {"elapsed_s": elapsed}
        if chance.random() < 0.01:
            sample["lon"] += chance.uniform(-0.05, 0.05)
        if chance.random() < 0.02:
            sample.pop(chance.choice([key for key in sample if key not in ("elapsed_s", "alt_ft")]))
        if chance.random() < 0.02:
            sample["alt_ft"] = 0
        if chance.random() < 0.002:
            sample["mixture_ratio"] = [chance.random() for _ in range(chance.randint(0, 6))]
        yield {"kind": "sample", "sample": sample}
        if chance.random() < 0.01:
            yield {"kind": "fired", "fired": {"trigger_id": f"t{elapsed}", "elapsed_s": elapsed, "action_kind": "speak"}}


@pytest.mark.parametrize("seed", range(12))
def test_both_plots_are_the_same_of_any_recording(programs, driver, seed):
    assert differences(programs, driver, list(any_recording(seed))) == []


def test_both_plots_are_the_same_of_a_day(programs, driver):
    day = list(recordings.lines(24 * 3600, lap=1800, gaps=[(30_000, 30_100)], frozen=[(50_000, 53_000)],
                                fired=[(40, "rotate", "speak"), (80_000, "late", "speak")]))
    assert differences(programs, driver, day) == []


@pytest.mark.parametrize("change", [
    lambda elapsed, sample: elapsed == 41 and sample.update(alt_ft=sample["alt_ft"] + 1),
    lambda elapsed, sample: elapsed == 100 and sample.update(lat=sample["lat"] + 2e-6),
    lambda elapsed, sample: elapsed == 100 and sample.pop("bank_deg"),
    lambda elapsed, sample: elapsed == 200 and sample.update(elapsed_s=199.98),
    lambda elapsed, sample: 800 <= elapsed and sample.update(elapsed_s=elapsed + 3),
], ids=["altitude", "position", "unknown", "time", "gap"])
def test_a_difference_is_found(programs, driver, change):
    saved = written(programs, lesson())
    assert compared(programs, driver, written(programs, changed(lesson(), change)), saved) != []
