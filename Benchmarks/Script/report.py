"""Figures and curves as JSON and as Markdown, beside those of an earlier run."""

import json
import math
from pathlib import Path

from curves import bend

# A comparable figure that has become worse by more than this share is marked.
TOLERANCE = 0.15


def number(value):
    """With three digits that say something."""
    if value == 0:
        return "0"
    digits = max(0, 2 - math.floor(math.log10(abs(value))))
    return f"{value:,.{digits}f}"


def change(figure, before):
    """The change since a baseline in words, and whether it is to be marked."""
    if before is None:
        return "new", False
    if not before:
        return ("same", False) if figure.value == before else (f"was {number(before)}", False)
    share = figure.value / before - 1
    is_worse = (-share if figure.higher_is_better else share) > TOLERANCE
    return f"{share:+.0%}", is_worse and figure.is_comparable


def verdict(figure):
    if figure.aim is None:
        return ""
    sign = "≥" if figure.higher_is_better else "≤"
    return f"{sign} {number(figure.aim)} {'reached' if figure.reached() else '**missed**'}"


def figure_rows(figures, baseline):
    yield "| Figure | Value | Aim | Since the baseline |"
    yield "|---|--:|---|---|"
    for figure in figures:
        words, is_marked = change(figure, baseline.get(figure.key))
        yield (f"| {figure.title} | {number(figure.value)} {figure.unit} | {verdict(figure)} | "
               f"{words}{' **WORSE**' if is_marked else ''} |")


def curve_rows(curve):
    yield f"\n### {curve.title}\n"
    yield f"| {curve.x_label} | " + " | ".join(f"{line} ({curve.y_label})" for line in curve.series) + " |"
    yield "|--:|" + "--:|" * len(curve.series)
    lines = {line: dict(map(tuple, points)) for line, points in curve.series.items()}
    for x in sorted({x for points in lines.values() for x in points}):
        cells = [number(points[x]) if x in points else "" for points in lines.values()]
        yield f"| {x:,} | " + " | ".join(cells) + " |"
    for line, points in curve.series.items():
        if (x := bend(points)) is not None:
            yield f"\n{line}: dearer by the unit from {x:,} on."


def markdown(run, figures, curves, baseline):
    lines = ["# Benchmark", "", run["words"], ""]
    lines += figure_rows(figures, baseline)
    if curves:
        lines += ["", "## Cost as things grow"]
    for curve in curves:
        lines += curve_rows(curve)
    return "\n".join(lines) + "\n"


def write(folder, run, figures, curves, benchmarks, baseline):
    folder.mkdir(parents=True, exist_ok=True)
    text = markdown(run, figures, curves, baseline)
    (folder / "report.md").write_text(text)
    whole = run | {"figures": [figure.as_json() for figure in figures], "curves": [curve.as_json() for curve in curves],
                   "benchmarks": benchmarks}
    (folder / "report.json").write_text(json.dumps(whole, indent=1, ensure_ascii=False) + "\n")
    return text


def read_baseline(file):
    return json.loads(Path(file).read_text())["figures"] if Path(file).exists() else {}


def write_baseline(file, run, figures):
    """Figures that were not measured this time stay as they are."""
    values = read_baseline(file) | {figure.key: float(f"{figure.value:.5g}") for figure in figures}
    text = json.dumps({"run": run["words"], "figures": values}, indent=1, ensure_ascii=False)
    Path(file).write_text(text + "\n")


def worse(figures, baseline):
    """The titles of the figures that are to be marked."""
    return [figure.title for figure in figures if change(figure, baseline.get(figure.key))[1]]
