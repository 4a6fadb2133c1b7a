import sys
import tempfile
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))
sys.path.insert(0, str(Path(__file__).parent.parent / "Support"))
sys.dont_write_bytecode = True

from browser import Browser  # noqa: E402
from command_port import CommandPort  # noqa: E402
from fake_simulator import FakeSimulator  # noqa: E402
from harness import Programs  # noqa: E402


def started_programs():
    # pytest's own temporary folders stay behind.
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as folder:
        started = Programs(Path(folder))
        yield started
        started.end_all()


@pytest.fixture(scope="module")
def browser():
    """Chromium. Starting it takes seconds; who wants another one, or a new one for each test, brings that along."""
    started = Browser()
    yield started
    started.close()


@pytest.fixture
def programs():
    """What a test starts; all of it is ended and looked over afterwards."""
    yield from started_programs()


@pytest.fixture(scope="module")
def shared_programs():
    """For programs that the tests of one file share because none of them leaves a trace there."""
    yield from started_programs()


@pytest.fixture
def fake():
    """A simulator that does what the test tells it to."""
    simulator = FakeSimulator()
    yield simulator
    simulator.close()


@pytest.fixture
def command_port(programs):
    """For companions that look for their simulator at its host."""
    return programs.close_at_end(CommandPort())


class _WhenUsed:
    """A companion that starts when the test first asks something of it: it looks for its simulator by itself, which
    the test has made ready by then."""

    def __init__(self, start):
        self._start = start
        self._started = None

    def __getattr__(self, name):
        if self._started is None:
            self._started = self._start()
        return getattr(self._started, name)


@pytest.fixture
def companion(programs, fake):
    """A companion of the fake simulator."""
    return _WhenUsed(lambda: programs.companion(sim_port=fake.port))
