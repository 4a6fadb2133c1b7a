"""What the tests of this folder share: the files, what the programs say about themselves, and other tools."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

REPOSITORY = Path(__file__).resolve().parent.parent.parent
FILES = REPOSITORY / "packaging"
COMPLETIONS = FILES / "completions"
PROGRAMS = ["tarnly", "tarnlyd", "tarnly-client", "tarnly-navdb", "tarnly-sim", "tarnly-track"]

BUILD = Path(os.environ["TARNLY_BUILD"])


def version():
    """The project's."""
    project = (REPOSITORY / "CMakeLists.txt").read_text()
    return re.search(r"project\(Tarnly VERSION ([\d.]+)", project).group(1)


def help_of(programs, *command):
    ended = programs.run(*command, "--help")
    assert ended.status == 0, ended
    return ended.output


def options_in(help_text):
    found = re.findall(r"^ +(?:-\w,)?--([\w-]+)", help_text, re.MULTILINE)
    assert "help" in found
    return {f"--{option}" for option in found}


def subcommands_in(help_text):
    _, _, listed = help_text.partition("\nSubcommands:\n")
    return re.findall(r"^  ([\w-]+)", listed, re.MULTILINE)


def choices_in(help_text, lead):
    """The words that the help lists after `lead`."""
    return re.search(re.escape(lead) + r"([\w, ]+)", help_text).group(1).strip().split(", ")


def tool(name):
    """The tool's path; skips the test where the computer does not have it."""
    path = shutil.which(name)
    if path is None:
        pytest.skip(f"{name} is not installed (scripts/setup --developer)")
    return path


def run(*command, home, cwd=None, **environment):
    """What the command prints; it has to succeed."""
    variables = {"PATH": os.environ["PATH"], "HOME": str(home), "XDG_RUNTIME_DIR": str(home),
                 "LC_ALL": "C.UTF-8"}
    ended = subprocess.run([str(part) for part in command], env=variables | environment, cwd=cwd, text=True,
                           stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                           timeout=120, check=False)
    assert ended.returncode == 0, f"{command} ended with {ended.returncode}:\n{ended.stdout}"
    return ended.stdout


def run_script(*command, **environment):
    """How the command ends, in this environment."""
    return subprocess.run([str(part) for part in command], env=os.environ | environment, text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60,
                          check=False)
