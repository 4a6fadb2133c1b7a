"""The second try of tests that failed, in a small project of its own."""

import json
import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest

SCRIPT = Path(__file__).parents[2] / "scripts" / "ctest-twice"

PRESETS = {
    "version": 6,
    "configurePresets": [{"name": "small", "binaryDir": "${sourceDir}/build/small"}],
    "testPresets": [{
        "name": "small",
        "configurePreset": "small",
        "output": {"outputOnFailure": True},
        "execution": {"noTestsAction": "error", "jobs": 2},
        "filter": {"exclude": {"label": "^(elsewhere)$"}},
    }],
}


class Project:
    """Tests that are shell scripts; each notes that it has run."""

    def __init__(self, folder):
        self.folder = folder
        (folder / "scripts").mkdir()
        shutil.copy(SCRIPT, folder / "scripts")
        (folder / "CMakePresets.json").write_text(json.dumps(PRESETS))
        self._lines = ["cmake_minimum_required(VERSION 3.25)", "project(Small NONE)", "enable_testing()"]

    def add(self, name, script):
        file = self.folder / f"{name}.sh"
        file.write_text(f"echo run >>{self.folder}/{name}.runs\n{script}\n")
        self._lines.append(f"add_test(NAME {name} COMMAND sh {file})")

    def label(self, name, label):
        self._lines.append(f"set_tests_properties({name} PROPERTIES LABELS {label})")

    def add_failing_once(self, name, says="not yet"):
        mark = self.folder / f"{name}.mark"
        self.add(name, f"[ -e {mark} ] || {{ touch {mark}; echo '{says}'; exit 1; }}")

    def configure(self):
        (self.folder / "CMakeLists.txt").write_text("\n".join(self._lines) + "\n")
        subprocess.run(["cmake", "--preset", "small"], cwd=self.folder, check=True, capture_output=True)

    def run(self, preset="small"):
        self.configure()
        return subprocess.run([self.folder / "scripts" / "ctest-twice", preset], cwd="/", text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def runs(self, name):
        file = self.folder / f"{name}.runs"
        return len(file.read_text().splitlines()) if file.exists() else 0

    def second_tries(self):
        file = self.folder / "build" / "small" / "second-try"
        return file.read_text().splitlines() if file.exists() else None


@pytest.fixture
def project():
    """pytest's own temporary folders stay behind."""
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as path:
        yield Project(Path(path))


def closing_line(ended):
    return next(line for line in reversed(ended.stdout.splitlines()) if "tests passed" in line)


def test_what_passes_runs_once(project):
    project.add("good", "true")
    project.add("fine", "true")
    ended = project.run()
    assert ended.returncode == 0
    assert closing_line(ended) == "100% tests passed, 0 tests failed out of 2"
    assert (project.runs("good"), project.runs("fine")) == (1, 1)
    assert project.second_tries() is None and "second try" not in ended.stdout


def test_what_fails_once_passes_and_is_named(project):
    project.add("good", "true")
    project.add_failing_once("noisy")
    project.add_failing_once("with.dots:and:colons")
    ended = project.run()
    assert ended.returncode == 0, ended.stdout
    assert (project.runs("good"), project.runs("noisy")) == (1, 2)
    assert project.second_tries() == ["noisy", "with.dots:and:colons"]
    assert "# noisy\n" in ended.stdout
    assert closing_line(ended) == "100% tests passed, 0 tests failed out of 2"
    assert "not yet" in (project.folder / "build" / "small" / "first-try.log").read_text()


def test_what_the_preset_leaves_out_stays_out(project):
    project.add("left_out", "exit 1")
    project.label("left_out", "elsewhere")
    project.add("good", "true")
    project.add_failing_once("noisy")
    assert project.run().returncode == 0
    assert (project.runs("left_out"), project.runs("good"), project.runs("noisy")) == (0, 1, 2)


def test_the_last_words_are_those_of_ctest(project):
    project.add_failing_once("noisy")
    assert project.run().stdout.rstrip().splitlines()[-1].startswith("Total Test time")


def test_names_of_an_earlier_run_are_forgotten(project):
    project.add_failing_once("noisy")
    project.run()
    assert project.second_tries() == ["noisy"]
    assert project.run().returncode == 0
    assert project.second_tries() is None


def test_what_fails_twice_fails(project):
    project.add("good", "true")
    project.add_failing_once("noisy")
    project.add("broken", "exit 1")
    ended = project.run()
    assert ended.returncode != 0
    assert (project.runs("good"), project.runs("noisy"), project.runs("broken")) == (1, 2, 2)
    assert "broken (Failed)" in ended.stdout


@pytest.mark.parametrize("report", [
    "WARNING: ThreadSanitizer: data race (pid=1)",
    "==1==ERROR: AddressSanitizer: heap-use-after-free on address 0x1",
    "==1==ERROR: LeakSanitizer: detected memory leaks",
    "a.cpp:1:2: runtime error: signed integer overflow",
])
def test_what_a_sanitizer_reports_is_no_noise(project, report):
    project.add_failing_once("noisy", report)
    ended = project.run()
    assert ended.returncode != 0
    assert project.runs("noisy") == 1
    assert ended.stdout.count(report) > 1


@pytest.mark.parametrize("signal", ["SEGV", "ABRT", "ILL"])
def test_a_crash_is_no_noise(project, signal):
    project.add("crashing", f"ulimit -c 0; kill -{signal} $$")
    assert project.run().returncode != 0
    assert project.runs("crashing") == 1


def test_a_project_without_tests_fails(project):
    assert project.run().returncode != 0


def test_an_unknown_preset_fails(project):
    project.add("good", "true")
    ended = project.run("unknown")
    assert ended.returncode != 0
    assert project.runs("good") == 0
