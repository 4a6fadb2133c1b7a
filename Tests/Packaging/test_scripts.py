"""`scripts/setup` and `scripts/package` know what they can do where, and say why they do nothing; `scripts/apart` leaves
nothing behind.

The package managers that `scripts/setup` calls are stand-ins here, which write down what they are asked for.
"""

import os
import re
import signal
import subprocess
from pathlib import Path

import pytest
from package_files import REPOSITORY
from package_files import run_script as run

SETUP = REPOSITORY / "scripts" / "setup"
APART = REPOSITORY / "scripts" / "apart"
PACKAGE = REPOSITORY / "scripts" / "package"

DEBIAN_12 = 'PRETTY_NAME="Debian GNU/Linux 12 (bookworm)"\nID=debian\nVERSION_ID="12"\n'
DEBIAN_13 = 'PRETTY_NAME="Debian GNU/Linux 13 (trixie)"\nID=debian\nVERSION_ID="13"\n'
DEBIAN_TESTING = 'PRETTY_NAME="Debian GNU/Linux forky/sid"\nID=debian\n'
ANOTHER = 'PRETTY_NAME="Roundhat 7"\nID=roundhat\nVERSION_ID=7\n'


class System:
    """A computer that says which one it is, where no package is installed."""

    def __init__(self, folder, description):
        self._folder = folder
        self._asked = folder / "asked"
        self._asked.write_text("")
        (folder / "os-release").write_text(description)
        self._tools = folder / "tools"
        self._tools.mkdir()
        self._tool("dpkg-query", "exit 1")
        self._tool("apt-get", f'echo "apt-get $*" >>"{self._asked}"')
        self._tool("npm", f'[ "$1" != ls ] || exit 1; echo "npm $*" >>"{self._asked}"')
        self._tool("sudo", 'exec "$@"')

    def lack_registry(self):
        self._tool("npm", "exit 1")

    def _tool(self, name, text):
        path = self._tools / name
        path.write_text(f"#!/bin/sh\n{text}\n")
        path.chmod(0o755)

    def set_up(self, *options):
        return run(SETUP, *options, PATH=f"{self._tools}:{os.environ['PATH']}",
                   TARNLY_OS_RELEASE=str(self._folder / "os-release"))

    def asked(self):
        return self._asked.read_text().splitlines()

    def installed(self):
        """What apt has been asked to install, after it had been told to look at the archives."""
        update, install = [line for line in self.asked() if line.startswith("apt-get")]
        assert update == "apt-get update -q"
        return {word for word in install.split()[2:] if not word.startswith("-")}


@pytest.mark.parametrize("description, boost", [(DEBIAN_12, "libboost1.81-dev"), (DEBIAN_13, "libboost-dev")])
def test_setup_installs_what_is_missing_under_the_names_of_the_release(folder, description, boost):
    system = System(folder, description)
    ended = system.set_up()
    assert ended.returncode == 0, ended
    packages = system.installed()
    assert {"g++", "cmake", "qt6-base-dev", "libgtest-dev"} <= packages
    assert len(system.asked()) == 2
    assert {name for name in packages if "boost" in name} == {boost}


def test_setup_installs_for_developers_on_debian_12(folder):
    system = System(folder, DEBIAN_12)
    assert system.set_up("--developer").returncode == 0
    assert {"g++", "clang-16", "mmdebstrap", "chromium", "firefox-esr"} <= system.installed()
    assert re.fullmatch(r"npm install --global --prefix /usr/local .* axe-core@[\d.]+", system.asked()[-1])


def test_without_a_registry_developers_are_told_what_they_lack(folder):
    system = System(folder, DEBIAN_12)
    system.lack_registry()
    ended = system.set_up("--developer")
    assert ended.returncode == 0
    assert re.search(r"Without axe-core@[\d.]+ the tests of the pages' accessibility are skipped; run this again\.", ended.stderr)


@pytest.mark.parametrize("description, name", [
    (DEBIAN_TESTING, "Debian GNU/Linux forky/sid"),
    (ANOTHER, "Roundhat 7"),
    ("", "a system that does not tell its name"),
])
def test_setup_says_elsewhere_why_it_stops_and_what_is_needed(folder, description, name):
    system = System(folder, description)
    ended = system.set_up()
    assert ended.returncode == 1
    assert system.asked() == []
    assert ended.stderr.startswith(f"This is {name}, and neither Debian 12 nor Debian 13,")
    needed = re.findall(r"^  (\S+)", ended.stderr, re.MULTILINE)
    assert {"g++", "cmake", "qt6-base-dev", "libboost-dev", "libgtest-dev"} <= set(needed)
    assert "clang-16" not in needed


def test_setup_leaves_developers_on_debian_13_to_themselves(folder):
    system = System(folder, DEBIAN_13)
    ended = system.set_up("--developer")
    assert ended.returncode == 1
    assert system.asked() == []
    assert "has neither clang-16 nor clang-format-14" in ended.stderr


def test_setup_names_what_building_needs_for_any_release(folder):
    system = System(folder, ANOTHER)
    ended = system.set_up("--build-depends")
    assert ended.returncode == 0
    needed = ended.stdout.strip().split(",")
    assert "libboost-dev (>= 1.81) | libboost1.81-dev" in needed
    # By these CPack finds out what the package depends on; small systems do not have the second one.
    assert {"dpkg-dev", "file"} <= set(needed)
    assert "libgtest-dev" in system.set_up("--test-depends").stdout.strip().split(",")
    assert system.asked() == []


@pytest.mark.parametrize("arguments, complaint", [
    ([], "which suite?"),
    (["--preset", "ci"], "which suite?"),
    (["trixie", "bookworm"], "one suite at a time"),
    (["../trixie"], "which suite?"),
    (["--mirror", "trixie"], "which suite?"),
    (["--mirror"], "--mirror wants a value"),
    (["--mirror", "somewhere", "trixie"], "no address of a mirror: somewhere"),
    (["--preset", "best", "trixie"], "no such preset: best"),
    (["--jobs", "0", "trixie"], "no number of compilers: 0"),
    (["--test", "all", "trixie"], "which unit tests?"),
    (["--fast", "trixie"], "no such option: --fast"),
])
def test_package_says_what_is_wrong_with_its_arguments(arguments, complaint):
    ended = run(PACKAGE, *arguments)
    assert ended.returncode == 2
    assert ended.stderr.startswith(f"package: {complaint}\nusage: scripts/package ")
    assert ended.stdout == ""


def test_package_tells_its_options():
    ended = run(PACKAGE, "--help")
    assert (ended.returncode, ended.stderr) == (0, "")
    for option in ("--mirror", "--components", "--preset", "--test", "--jobs"):
        assert f"  {option} " in ended.stdout


@pytest.fixture
def apart():
    """What starts a command by `scripts/apart`; where one may not have mounts of one's own the test is skipped."""
    if subprocess.run(["unshare", "--mount", "--pid", "--fork", "true"], stderr=subprocess.DEVNULL,
                      check=False).returncode != 0:
        pytest.skip("wants mounts and processes of its own")
    return lambda command: subprocess.Popen([str(APART), "sh", "-c", command, "sh"], text=True,
                                            stdout=subprocess.PIPE)


def test_apart_runs_a_command_with_a_folder_that_goes_with_it(apart):
    with apart('mount -t tmpfs none "$1" && touch "$1/file" && echo "$1" && exit 3') as running:
        place = Path(running.stdout.readline().strip())
        assert running.wait(timeout=60) == 3
    assert place.is_absolute() and not place.exists()
    assert str(place) not in Path("/proc/mounts").read_text()


def test_apart_ends_all_when_it_is_told_to(apart):
    # What outlives its parent holds the pipe open, which is read to its end below.
    with apart('(trap "" TERM; sleep 1000) & mount -t tmpfs none "$1" && echo "$1" && wait') as running:
        place = Path(running.stdout.readline().strip())
        assert place.is_dir()
        running.send_signal(signal.SIGTERM)
        assert running.stdout.read() == ""
        assert running.wait(timeout=60) == 128 + signal.SIGTERM
    assert not place.exists()
