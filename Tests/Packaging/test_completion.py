"""The completions at work: bash and fish are asked what they would offer."""

import pytest
from package_files import (COMPLETIONS, PROGRAMS, choices_in, help_of, options_in, run, subcommands_in, tool)

# Calls the completion as bash does for the words given, the last of which is being typed.
ASK_BASH = """
source "$1"; shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
set -- $(complete -p "$1")
"$3"
(( ! ${#COMPREPLY[@]} )) || printf '%s\\n' "${COMPREPLY[@]}"
"""


class Bash:
    def __init__(self, home):
        self.home = home

    def offers(self, *words):
        printed = run("bash", "--norc", "-c", ASK_BASH, "bash", COMPLETIONS / "bash" / words[0], *words,
                      home=self.home)
        return printed.splitlines()


class Fish:
    def __init__(self, home):
        self.home = home
        self.path = tool("fish")

    def offers(self, *words):
        file = COMPLETIONS / "fish" / f"{words[0]}.fish"
        printed = run(self.path, "--no-config", "-c", "source $argv[1]; complete -C $argv[2]", file,
                      " ".join(words), home=self.home)
        return [line.split("\t")[0] for line in printed.splitlines()]


@pytest.fixture(params=[Bash, Fish], ids=["bash", "fish"])
def shell(request, folder):
    return request.param(folder)


@pytest.mark.parametrize("program", PROGRAMS)
def test_it_offers_the_options(programs, shell, program):
    assert set(shell.offers(program, "--")) == options_in(help_of(programs, program))
    assert shell.offers(program, "--vers") == ["--version"]


def test_it_offers_the_subcommands(programs, shell):
    subcommands = subcommands_in(help_of(programs, "tarnly-client"))
    offered = shell.offers("tarnly-client", "")
    assert {word for word in offered if not word.startswith("-")} == set(subcommands)
    assert shell.offers("tarnly-client", "--host", "rig", "--port", "41234", "rec") == ["record"]


def test_after_a_subcommand_it_offers_its_options_and_the_common_ones(programs, shell):
    top = help_of(programs, "tarnly-client")
    for subcommand in subcommands_in(top):
        wanted = options_in(top) | options_in(help_of(programs, "tarnly-client", subcommand))
        assert set(shell.offers("tarnly-client", subcommand, "--")) == wanted, subcommand


def test_it_offers_what_the_recordings_program_takes(programs, shell):
    subcommands = subcommands_in(help_of(programs, "tarnly-track"))
    assert {word for word in shell.offers("tarnly-track", "") if not word.startswith("-")} == set(subcommands)
    for subcommand in subcommands:
        wanted = options_in(help_of(programs, "tarnly-track", subcommand))
        assert set(shell.offers("tarnly-track", subcommand, "--")) == wanted, subcommand
    formats = choices_in(help_of(programs, "tarnly-track", "export"), "The format: ")
    assert set(shell.offers("tarnly-track", "export", "--format", "")) == set(formats)


def test_it_offers_choices(programs, shell):
    phases = choices_in(help_of(programs, "tarnly-sim"), "Where the flight begins: ")
    assert set(shell.offers("tarnly-sim", "--start", "")) == set(phases)
    assert shell.offers("tarnly-sim", "--start", "down") == ["downwind"]
    assert set(shell.offers("tarnly-client", "record", "st")) == {"start", "stop"}


def test_it_offers_folders_for_a_folder_and_files_for_a_file(shell, folder):
    (folder / "recorded").mkdir()
    (folder / "recipe.json").touch()
    beginning = f"{folder}/rec"
    folders, files = [f"{folder}/recorded"], {f"{folder}/recorded", f"{folder}/recipe.json"}

    def offered(*words):
        return [path.rstrip("/") for path in shell.offers(*words, beginning)]

    assert offered("tarnlyd", "--data-dir") == folders
    assert offered("tarnly", "--situations") == folders
    assert set(offered("tarnly", "--nav-db")) == files
    assert set(offered("tarnly-client", "--password-file")) == files
    assert set(offered("tarnly-client", "script")) == files
    assert set(offered("tarnly-client", "script", "--check")) == files
    assert set(offered("tarnly-client", "script", "--nav-db")) == files
    assert set(offered("tarnly-navdb", "find", "--nav-db")) == files
    assert set(offered("tarnly-navdb", "build", "--output")) == files
    assert offered("tarnly-navdb", "build") == folders


def test_bash_offers_the_value_behind_an_equals_sign(folder):
    bash = Bash(folder)
    assert bash.offers("tarnly-sim", "--start", "=", "cl") == ["climb"]
    assert set(bash.offers("tarnly-sim", "--start", "=")) >= {"runway", "climb"}
    assert bash.offers("tarnly-client", "--instance", "=", "record", "disc") == ["discover"]


def test_nothing_is_offered_for_a_number(shell):
    assert shell.offers("tarnlyd", "--port", "2") == []
    assert shell.offers("tarnly-client", "watch", "--count", "2") == []


@pytest.mark.parametrize("program", PROGRAMS)
def test_zsh_can_parse_it(folder, program):
    file = COMPLETIONS / "zsh" / f"_{program}"
    assert file.read_text().startswith(f"#compdef {program}\n")
    run(tool("zsh"), "-n", file, home=folder)
