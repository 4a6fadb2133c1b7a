"""`scripts/first-minutes` says what is wrong with its arguments, and its judgement of words can fail.

What it judges is tried by the script itself, which wants root and a package; here the words are made up.
"""

import sys

import pytest
from package_files import REPOSITORY, run_script

sys.path.insert(0, str(REPOSITORY / "scripts" / "first_minutes"))
import words  # noqa: E402

SCRIPT = REPOSITORY / "scripts" / "first-minutes"

STATUS = """Listening on port 28086, advertising as "rig42", pairing open.
Simulator: not running. Start X-Plane 12.1.4 or later.
No client is paired.
"""
DOCTOR = """ok  companion: Listening on port 28086.
!!  simulator: Not running (127.0.0.1:8086).
      Start X-Plane 12.1.4 or later.
"""
ATTEMPT = ('tarnly-client: connectionFailed("127.0.0.1:8086: Connection refused: the simulator is not running: '
           'start X-Plane 12.1.4 or later")\n')
RIGHT = {"status": STATUS, "doctor": DOCTOR, "attempt": ATTEMPT, "journal": ""}


def row(paired=True, case="no simulator", **texts):
    return words.row_of(case, False, "discovery", paired, {**RIGHT, **texts})


def test_right_words_are_found_right():
    right = row()
    assert right.wrong == []
    assert right.cells()[5:] == ["yes", "yes"]
    assert dict(right.shown)["status"] == "Simulator: not running. Start X-Plane 12.1.4 or later."


@pytest.mark.parametrize("planted, wrong", [
    ({"attempt": 'tarnly-client: connectionFailed("127.0.0.1:8086: Connection refused")'},
     ["attempt does not name the cause", "attempt does not name the cure"]),
    ({"status": STATUS.replace(" Start X-Plane 12.1.4 or later.", "")}, ["status does not name the cure"]),
    ({"status": STATUS.replace("not running. Start", "at the main menu. Start")},
     ["status does not name the cause", "status does not name the cure"]),
    ({"doctor": DOCTOR.replace("Start X-Plane 12.1.4 or later", "Load a flight")}, ["doctor does not name the cure"]),
    ({"status": ""}, ["status does not name the cause", "status does not name the cure"]),
    ({"doctor": DOCTOR + "!!  disk: Only 3 MiB are free.\n"},
     ["the doctor complains of what is well: !!  disk: Only 3 MiB are free."]),
    ({"paired": False}, [f"does not pair: {ATTEMPT.strip()}"]),
])
def test_planted_wrong_words_are_found(planted, wrong):
    assert row(**planted).wrong == wrong


def test_a_cure_elsewhere_is_none():
    """Nobody puts a cause and a cure together from two lines."""
    parted = STATUS.replace(". Start X-Plane", ".\nStart X-Plane")
    assert row(status=parted).without_cure == ["status"]


def test_a_stranger_who_gets_in_is_found():
    assert row(case="flight, wrong password given").wrong[0] == "pairs, and should not"


def test_the_table_tells_which_source_lacks_what():
    table = words.table([row(), row(attempt="no | way")])
    head, rule, first, second = table.splitlines()
    assert head.count("|") == rule.count("|") == first.count("|") == len(words.HEAD) + 1
    assert first.endswith("| yes | yes |")
    assert "attempt: no \\| way" in second and second.endswith("| no: attempt | no: attempt |")


@pytest.mark.parametrize("case", words.EXPECTED)
def test_no_words_satisfy_no_case(case):
    """No expectation is so weak that silence meets it."""
    for way in ("discovery", "typed address"):
        silent = words.row_of(case, False, way, words.EXPECTED[case].pairs(way), dict.fromkeys(RIGHT, ""))
        assert silent.without_cause


@pytest.mark.parametrize("arguments, complaint", [
    (["--fast"], "no such option: --fast"),
    (["../trixie"], "no name of a suite: ../trixie"),
    (["--table"], "--table wants a value"),
    (["--package"], "--package wants a value"),
    (["--package", "x.deb"], "--package is for one suite, which has to be named"),
    (["--package", "x.deb", "bookworm", "trixie"], "--package is for one suite, which has to be named"),
    (["--package", "no-such.deb", "bookworm"], "no such file: no-such.deb"),
    (["nowhere"], "no package for nowhere in build/packages: scripts/package nowhere"),
])
def test_it_says_what_is_wrong_with_its_arguments(arguments, complaint):
    ended = run_script(SCRIPT, *arguments)
    assert ended.returncode == 2
    assert ended.stderr.startswith(f"first-minutes: {complaint}\nusage: scripts/first-minutes ")
    assert ended.stdout == ""


def test_it_tells_its_options():
    ended = run_script(SCRIPT, "--help")
    assert (ended.returncode, ended.stderr) == (0, "")
    for option in ("--package", "--without-manager", "--table"):
        assert f"  {option} " in ended.stdout
