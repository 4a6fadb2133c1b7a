import sys
import tempfile
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))
sys.path.insert(0, str(Path(__file__).parent.parent / "Support"))
sys.dont_write_bytecode = True

from fake_simulator import FakeSimulator  # noqa: E402
from harness import Programs  # noqa: E402


def started_programs():
    # pytest's own temporary folders stay behind.
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as folder:
        started = Programs(Path(folder))
        yield started
        started.end_all()


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
def companion(programs, fake):
    """A companion of the fake simulator."""
    return programs.companion(sim_port=fake.port)
