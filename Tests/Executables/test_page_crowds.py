"""The lesson page's files amid crowds: browsers that are slow, that read nothing, or only stay."""

import statistics
import time

import pytest
from attackers import Crowd
from client import arrivals
from harness import memory
from lesson import LATITUDE
from lesson_page import served_files

MEGABYTE = 1 << 20
BEAT = 0.5
#: How late a push may be on a busy machine; one that was left out would be later.
LATE = 0.3
#: What all of a crowd together may take, in bytes, what is unpacked for them included.
CROWD_TAKES = 12 * MEGABYTE


@pytest.fixture
def companion(programs):
    _, sim_port = programs.simulator("--start", "cruise")
    return programs.companion(sim_port=sim_port)


def crowds(port, files):
    """Each fills the room that there is for strangers."""
    largest = max(files, key=files.get)
    return {
        "slow": lambda crowd: crowd.slow_browsers(250),
        "hoarders": lambda crowd: crowd.hoarders(250, largest),
        "idle": lambda crowd: crowd.idle(250),
        "all": lambda crowd: (crowd.slow_browsers(80), crowd.hoarders(90, largest), crowd.idle(80)),
    }


@pytest.mark.parametrize("kind", ["slow", "hoarders", "idle", "all"])
def test_a_crowd_of_bad_browsers_holds_up_nobody(companion, kind):
    files = served_files(companion.port)
    lesson = companion.client()
    lesson.subscribe(LATITUDE)
    before = memory(companion)
    with Crowd(companion.port) as crowd:
        crowds(companion.port, files)[kind](crowd)
        lesson.pushes.clear()
        times = arrivals(lesson, 24)
        most = memory(companion)
        begin = time.monotonic()
        assert served_files(companion.port) == files, "an honest browser has all of the page"
        opened = time.monotonic() - begin
        assert companion.client().data("sim_info")["sim"] == "xplane"
        assert sum(crowd.counts[key] for key in crowd.counts if key.endswith(" opened")) >= 250, crowd.counts
    late = [later - earlier - BEAT for earlier, later in zip(times, times[1:])]
    print(f"{kind}: pushes late by {1000 * statistics.median(map(abs, late)):.1f} ms, {1000 * max(late):.0f} at most; "
          f"the page opened in {opened:.2f} s; {(most - before) / MEGABYTE:.1f} MiB; {dict(crowd.counts)}")
    assert max(late) < LATE, late
    assert most - before < CROWD_TAKES
    assert opened < 10
