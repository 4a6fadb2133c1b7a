import sys
import tempfile
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))
sys.path.insert(0, str(Path(__file__).parent.parent / "Executables"))
sys.dont_write_bytecode = True

from harness import Programs  # noqa: E402


@pytest.fixture
def folder():
    """A temporary folder; pytest's own stay behind."""
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as path:
        yield Path(path)


@pytest.fixture
def programs(folder):
    started = Programs(folder)
    yield started
    started.end_all()
