"""The programs are built so that a mistake in memory ends them: the binaries show it, and the commands that made them.

Debug builds, and those with a sanitizer, are not.
"""

import json
import platform
import re

import pytest
from package_files import BUILD, PROGRAMS, run

CACHE = dict(re.findall(r"^(\w+):\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE))
COMMANDS = json.loads((BUILD / "compile_commands.json").read_text())
# What the optimiser can prove leaves no call in some of them.
CHECKED_CALL = re.compile(r"UND __\w+_chk(@|$)", re.MULTILINE)

pytestmark = pytest.mark.skipif(CACHE["CMAKE_BUILD_TYPE"] == "Debug" or bool(CACHE.get("TARNLY_SANITIZE")),
                                reason="these builds are for developers")


@pytest.fixture(params=PROGRAMS)
def read(request, folder):
    """A function that has readelf tell about a program."""
    return lambda option: run("readelf", "--wide", option, BUILD / "bin" / request.param, home=folder)


def test_a_program_is_loaded_at_another_place_each_time(read):
    assert re.search(r"Type:\s+DYN", read("--file-header"))
    assert re.search(r"\(FLAGS_1\).*\bPIE\b", read("--dynamic"))


def test_tables_of_a_program_are_closed_once_it_runs_and_its_stack_is_no_code(read):
    segments = read("--program-headers")
    assert "GNU_RELRO" in segments
    assert re.search(r"\(FLAGS_1\).*\bNOW\b", read("--dynamic"))
    assert re.search(r"GNU_STACK.* RW ", segments)
    assert not re.search(r"LOAD.* RWE ", segments)


def test_a_program_notices_what_writes_beyond_its_place(read):
    symbols = read("--dyn-syms")
    assert "__stack_chk_fail" in symbols
    if CACHE["CMAKE_CXX_COMPILER"].endswith(("g++", "c++")):
        assert "__glibcxx_assert_fail" in symbols


@pytest.mark.skipif(platform.machine() != "x86_64", reason="the processor marks no targets of jumps, or another way")
def test_our_code_marks_where_jumps_may_go(folder):
    """Of a whole program the linker says so only where the system's own start-up code has the marks."""
    compiled = [BUILD / re.search(r" -o (\S+)", entry["command"]).group(1) for entry in COMMANDS]
    ours = [path for path in compiled if path.exists() and path.is_relative_to(BUILD / "Sources")]
    assert ours
    notes = run("readelf", "--wide", "--notes", *ours, home=folder)
    assert notes.count("x86 feature: IBT, SHSTK") == len(ours)


def test_the_library_checks_lengths_where_a_program_calls_it(folder):
    symbols = [run("readelf", "--wide", "--dyn-syms", BUILD / "bin" / program, home=folder) for program in PROGRAMS]
    assert any(CHECKED_CALL.search(text) for text in symbols)


def test_every_file_is_compiled_so():
    wanted = ["-D_FORTIFY_SOURCE=2", "-D_GLIBCXX_ASSERTIONS", "-fstack-protector-strong"]
    wanted += [flag for flag in ("-fstack-clash-protection", "-fcf-protection")
               if CACHE.get("tarnly_has" + flag.replace("-", "_"))]
    if platform.machine() == "x86_64":
        assert wanted[3:], "this processor has both"
    assert COMMANDS
    for entry in COMMANDS:
        assert set(wanted) <= set(entry["command"].split()), entry["file"]
