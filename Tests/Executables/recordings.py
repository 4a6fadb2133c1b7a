"""Recordings made by rule, for what reads them: a circuit flown from a field, again and again."""

import json
import math

ENGINES = 2


def sample(elapsed, lap=600.0, shift=0.0, engines=ENGINES):
    """What the log says at a moment: one circuit takes `lap` seconds; `shift` moves the track a little."""
    part = (elapsed % lap) / lap
    turn = 2 * math.pi * part
    height = max(0.0, 1000 * math.sin(math.pi * min(1, max(0, (part - 0.05) / 0.9))) + 15 * math.sin(elapsed / 7))
    if part < 0.05 or part > 0.95:
        height = 0.0
    return {
        "elapsed_s": round(elapsed, 3), "alt_ft": round(1416.5 + height, 2),
        "lat": round(47.4581 + 0.03 * math.sin(turn) + shift / 60, 7),
        "lon": round(8.5481 + 0.08 * (1 - math.cos(turn)) + shift / 40, 7),
        "agl_ft": round(height, 2), "gear_down": not 0.12 < part < 0.8,
        "throttle_ratio": [round(0.6 + 0.35 * math.cos(turn), 3)] * engines,
        "mixture_ratio": [1] * engines, "prop_ratio": [round(0.9 + 0.1 * math.cos(turn), 3)] * engines,
        "flap_ratio": 0.5 if part > 0.8 or part < 0.1 else 0, "gear_ratio": round(min(1, abs(part - 0.46) * 3), 3),
        "bank_deg": round(20 * math.sin(4 * turn) + math.sin(elapsed), 2),
        "pitch_deg": round(6 * math.cos(turn) + 0.5 * math.sin(elapsed / 3), 2),
        "autopilot_on": 0.3 < part < 0.6,
    }


def lines(seconds, gaps=(), frozen=(), fired=(), **shape):
    """Two samples a second; `gaps` and `frozen` are (from, to) in seconds, `fired` (moment, id, action)."""
    waiting = sorted(fired)
    for number in range(int(seconds * 2) + 1):
        elapsed = number / 2
        if any(begin < elapsed < end for begin, end in gaps):
            continue
        stopped = next((begin for begin, end in frozen if begin <= elapsed < end), None)
        values = sample(elapsed if stopped is None else stopped, **shape) | {"elapsed_s": elapsed}
        yield {"kind": "sample", "sample": values}
        while waiting and waiting[0][0] <= elapsed:
            _, name, action = waiting.pop(0)
            yield {"kind": "fired", "fired": {"trigger_id": name, "elapsed_s": elapsed, "action_kind": action}}


def write(path, *args, **kwargs):
    """A recording like the companion's own; returns the path."""
    with open(path, "w", encoding="utf-8") as file:
        for line in lines(*args, **kwargs):
            file.write(json.dumps(line, separators=(",", ":"), ensure_ascii=False).replace("/", "\\/") + "\n")
    return path
