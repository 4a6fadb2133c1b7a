"""What a program's --help lists stands in its manual page and in its completions, and nothing else does."""

import re

import pytest
from package_files import COMPLETIONS, FILES, PROGRAMS, choices_in, help_of, options_in, subcommands_in


def manual(program):
    return (FILES / "man" / f"{program}.1").read_text()


def in_manual(program):
    # An example's dashes are written \-.
    return re.findall(r"\bFl -([a-z][a-z-]*)", manual(program))


def in_bash(program):
    return _dashed((COMPLETIONS / "bash" / program).read_text())


def in_zsh(program):
    return _dashed((COMPLETIONS / "zsh" / f"_{program}").read_text())


def in_fish(program):
    text = (COMPLETIONS / "fish" / f"{program}.fish").read_text()
    return re.findall(r"^complete .*? -l ([a-z-]+)", text, re.MULTILINE)


def _dashed(text):
    without_comments = re.sub(r"^ *#.*$", "", text, flags=re.MULTILINE)
    return re.findall(r"--([a-z][a-z-]*)", without_comments)


def all_options(programs, program):
    top = help_of(programs, program)
    options = options_in(top)
    for subcommand in subcommands_in(top):
        options |= options_in(help_of(programs, program, subcommand))
    return options


@pytest.mark.parametrize("program", PROGRAMS)
def test_the_help_the_manual_and_the_completions_list_the_same_options(programs, program):
    options = all_options(programs, program)
    for listed in (in_manual, in_bash, in_zsh, in_fish):
        assert {f"--{option}" for option in listed(program)} == options, listed.__name__


@pytest.mark.parametrize("program, one", [("tarnly-client", "discover"), ("tarnly-track", "export")])
def test_the_manual_and_the_completion_of_zsh_list_the_same_subcommands(programs, program, one):
    subcommands = set(subcommands_in(help_of(programs, program)))
    assert one in subcommands
    assert set(re.findall(r"^\.It Cm ([\w-]+)", manual(program), re.MULTILINE)) == subcommands
    zsh = (COMPLETIONS / "zsh" / f"_{program}").read_text()
    assert set(re.findall(r"^    '([a-z][\w-]*):", zsh, re.MULTILINE)) == subcommands


def test_the_manual_and_the_completion_of_zsh_list_the_same_phases(programs):
    phases = choices_in(help_of(programs, "tarnly-sim"), "Where the flight begins: ")
    assert "cruise" in phases
    assert f":phase:({' '.join(phases)})" in (COMPLETIONS / "zsh" / "_tarnly-sim").read_text()
    assert re.findall(r"^\.Cm (\w+)", manual("tarnly-sim"), re.MULTILINE) == phases
