"""scripts/benchmark: that it measures, and what it makes of figures. Not what the figures are."""

import json
import subprocess
import sys
from pathlib import Path
from xml.etree import ElementTree

import pytest
from harness import executable

TREE = Path(__file__).resolve().parents[2]
sys.path.append(str(TREE / "Benchmarks/Script"))

import charts  # noqa: E402
import report  # noqa: E402
from curves import Curve, bend  # noqa: E402
from figures import Figure, days  # noqa: E402


def test_a_tiny_run_has_each_figure_and_its_curves(tmp_path):
    command = [TREE / "scripts/benchmark", "--smoke", "--only", "round_trips", "start", "by_message", "benchmarks",
               "--bin", Path(executable("tarnlyd")).parent, "--out", tmp_path, "--charts", tmp_path]
    subprocess.run(command, check=True, timeout=600)
    run = json.loads((tmp_path / "report.json").read_text())
    values = {figure["key"]: figure["value"] for figure in run["figures"]}
    assert {"rate_raw_1", "rate_tarnlyd_1", "rate_ratio_tarnlyd_1", "cpu_ratio_tarnlyd_1", "start"} <= set(values)
    assert all(value > 0 for value in values.values()), values
    series = {curve["key"]: curve["series"] for curve in run["curves"]}
    assert [x for x, _ in series["messages"]["tarnlyd"]] == [100, 1000]
    assert [x for x, _ in series["recording"]["at the client"]] == [120]
    assert "| Rate at 1 connection: tarnlyd / raw echo |" in (tmp_path / "report.md").read_text()
    ElementTree.parse(tmp_path / "messages.svg")


def test_a_day_is_told_beside_parsing_it():
    found = {name: {"cpu_time": time} for name, time in
             (("dayIsParsedAsJson", 1000), ("dayIsRead", 250), ("dayIsPlotted", 100), ("dayIsCutIntoLines", 7))}
    assert {figure.key: figure.value for figure in days(found)} == {"day_read": 0.25, "day_plot": 0.1}
    assert list(days({"dayIsRead": {"cpu_time": 250}})) == []


def test_a_load_that_is_answered_wrongly_fails(programs):
    _, port = programs.simulator()
    command = [executable("tarnly-load"), "round-trips", "--port", str(port), "--seconds", "0.1"]
    ended = subprocess.run(command, capture_output=True, text=True, timeout=60)
    assert ended.returncode == 1
    assert ended.stdout == ""
    assert ended.stderr.startswith("tarnly-load: no upgrade: HTTP/1.1 4")


@pytest.mark.parametrize(("value", "higher", "comparable", "marked"), [
    (1.1, False, True, False),
    (1.2, False, True, True),
    (1.2, False, False, False),
    (1.2, True, True, False),
    (0.9, True, True, False),
    (0.8, True, True, True),
])
def test_only_what_is_comparable_and_clearly_worse_is_marked(value, higher, comparable, marked):
    figure = Figure("key", "Title", value, higher_is_better=higher, is_comparable=comparable)
    assert report.worse([figure], {"key": 1}) == (["Title"] if marked else [])
    assert report.worse([figure], {}) == []


def test_a_baseline_is_read_as_it_was_written(tmp_path):
    report.write_baseline(tmp_path / "baseline.json", {"words": "A run."}, [Figure("key", "Title", 0.25)])
    assert report.read_baseline(tmp_path / "baseline.json") == {"key": 0.25}
    report.write_baseline(tmp_path / "baseline.json", {"words": "A run."}, [Figure("other", "Title", 2)])
    assert report.read_baseline(tmp_path / "baseline.json") == {"key": 0.25, "other": 2}
    assert report.read_baseline(tmp_path / "none.json") == {}


@pytest.mark.parametrize(("value", "text"), [
    (0, "0"), (0.00123, "0.00123"), (0.25, "0.250"), (7.125, "7.12"), (72.5, "72.5"), (123_456, "123,456"),
])
def test_numbers_have_three_digits_that_say_something(value, text):
    assert report.number(value) == text


def test_the_bend_is_where_a_unit_becomes_dearer():
    assert bend([[1, 5], [10, 10], [100, 100], [1000, 1400]]) is None
    assert bend([[1, 5], [10, 10], [100, 100], [1000, 1600], [10_000, 20_000]]) == 1000
    assert bend([[1, 0], [10, 10], [100, 100]]) is None


def test_a_chart_has_a_line_for_each_series():
    curve = Curve("key", "A <title>", "clients", "ms", {"one": [[1, 1], [10, 2]], "two": [[1, 0.01], [10, 3]]})
    picture = ElementTree.fromstring(charts.picture(curve))
    space = "{http://www.w3.org/2000/svg}"
    assert [len(line.get("points").split()) for line in picture.iter(f"{space}polyline")] == [2, 2]
    assert picture.find(f"{space}title").text == "A <title>"
