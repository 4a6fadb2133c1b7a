"""Curves as SVG, on axes that go by powers of ten; readable on a light and on a dark page."""

import math
from html import escape

WIDTH, HEIGHT = 640, 340
LEFT, RIGHT, TOP, BOTTOM = 70, 30, 62, 46
COLOURS = ["#0969da", "#bc4c00", "#1a7f37", "#8250df"]
DARK_COLOURS = ["#58a6ff", "#f0883e", "#3fb950", "#bc8cff"]


class Axis:
    """Maps the logarithms of values to a stretch of the picture."""

    def __init__(self, values, begin, end):
        values = [value for value in values if value > 0]
        self.low = math.floor(math.log10(min(values)))
        self.high = max(math.ceil(math.log10(max(values))), self.low + 1)
        self.begin, self.end = begin, end

    def __call__(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return self.begin + share * (self.end - self.begin)

    def ticks(self):
        return [10.0**power for power in range(self.low, self.high + 1)]


def label(value):
    if value >= 1_000_000:
        return f"{value / 1_000_000:g} M"
    return f"{value:,.0f}" if value >= 1 else f"{value:g}"


def style():
    rules = ["text{font:12px system-ui,sans-serif;fill:#1f2328}", ".title{font-weight:600;font-size:14px}",
             ".grid{stroke:#d1d9e0}", "polyline{fill:none;stroke-width:2}"]
    rules += [f".l{i}{{stroke:{colour}}}.d{i}{{fill:{colour}}}" for i, colour in enumerate(COLOURS)]
    dark = ["text{fill:#f0f6fc}", ".grid{stroke:#3d444d}"]
    dark += [f".l{i}{{stroke:{colour}}}.d{i}{{fill:{colour}}}" for i, colour in enumerate(DARK_COLOURS)]
    return f"<style>{''.join(rules)}@media (prefers-color-scheme:dark){{{''.join(dark)}}}</style>"


def grid(x_axis, y_axis):
    for tick in y_axis.ticks():
        y = y_axis(tick)
        yield f'<line class="grid" x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}"/>'
        yield f'<text x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">{label(tick)}</text>'
    for tick in x_axis.ticks():
        x = x_axis(tick)
        yield f'<line class="grid" x1="{x:.1f}" x2="{x:.1f}" y1="{TOP}" y2="{HEIGHT - BOTTOM}"/>'
        yield f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 18}" text-anchor="middle">{label(tick)}</text>'


def lines(curve, x_axis, y_axis):
    for number, points in enumerate(curve.series.values()):
        spots = [(x_axis(x), y_axis(y)) for x, y in sorted(points) if y > 0]  # nothing has no place on such an axis
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in spots)
        yield f'<polyline class="l{number}" points="{path}"/>'
        yield from (f'<circle class="d{number}" cx="{x:.1f}" cy="{y:.1f}" r="3"/>' for x, y in spots)


def legend(curve):
    x = LEFT
    for number, name in enumerate(curve.series):
        yield f'<circle class="d{number}" cx="{x + 5}" cy="42" r="5"/>'
        yield f'<text x="{x + 15}" y="46">{escape(name)}</text>'
        x += 30 + 7 * len(name)


def picture(curve):
    points = [point for line in curve.series.values() for point in line]
    x_axis = Axis([x for x, _ in points], LEFT, WIDTH - RIGHT)
    y_axis = Axis([y for _, y in points], HEIGHT - BOTTOM, TOP)
    middle = (LEFT + WIDTH - RIGHT) / 2
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" role="img">',
             f"<title>{escape(curve.title)}</title>", style(),
             f'<text class="title" x="{LEFT}" y="22">{escape(curve.title)}, {escape(curve.y_label)}</text>',
             *legend(curve), *grid(x_axis, y_axis), *lines(curve, x_axis, y_axis),
             f'<text x="{middle}" y="{HEIGHT - 8}" text-anchor="middle">{escape(curve.x_label)}</text>',
             "</svg>"]
    return "\n".join(parts) + "\n"


def write(folder, curves):
    folder.mkdir(parents=True, exist_ok=True)
    for curve in curves:
        (folder / f"{curve.key}.svg").write_text(picture(curve))
