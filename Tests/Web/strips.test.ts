import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { flight } from "./flight";
import type { Line } from "../../web/plot/flights";
import { outside } from "../../web/plot/grades";
import { marksOf } from "../../web/plot/marks";
import { STRIPS, valueText } from "../../web/plot/strips";
import { summaryOf } from "../../web/plot/summary";
import { numberText } from "../../web/plot/words";

function steady(value: number): Line {
    return { at: Float64Array.of(0, 10), value: Float64Array.of(value, value), breaks: Uint8Array.of(1, 0) };
}

function strip(key: string) {
    return STRIPS.find((one) => one.keys.includes(key))!;
}

test("numbers have their thousands apart, and zero has no sign", () => {
    equal(numberText(-1234567, 0), "\u22121,234,567");
    equal(numberText(1234.56, 1), "1,234.6");
    equal(numberText(-0.04, 1), "0.0");
});

test("values have their units, switches their words, and engines stand side by side", () => {
    const one = flight({ lines: new Map([
        ["alt_ft", [steady(1500)]], ["gear_down", [steady(1)]], ["throttle_ratio", [steady(0.25), steady(0.75)]],
    ]) });
    equal(valueText(one, strip("alt_ft"), 5), "1,500\u00a0ft");
    equal(valueText(one, strip("gear_down"), 5), "down");
    equal(valueText(one, strip("throttle_ratio"), 5), "25 / 75\u00a0%");
    equal(valueText(one, strip("alt_ft"), 11), "\u2013");
});

test("the summary says what was recorded, and what was not", () => {
    const said = summaryOf(flight({
        seconds: 3725, distance_nm: 23.44, highest_ft: 4500.2, gaps: [[300, 335]], frozen: [[400, 460], [500, 560]],
        fired: [{ id: "a", action: "speak", at: 1 }],
    }));
    equal(said, "2026-11-16 01:09:38 UTC. Lasted 1 hour 2 minutes 5 seconds; 23.4 nautical miles over ground; "
        + "highest 4,500 feet indicated; one trigger fired. Nothing was recorded during one gap (5:00 to 5:35). "
        + "The simulator was paused 2 times (6:40 to 7:40, 8:20 to 9:20).");
    equal(summaryOf(flight({ start: undefined })),
        "start unknown. Lasted 1 minute; no trigger fired.");
});

test("the summary says what a script would have done, and how near the rest came", () => {
    const miss = (id: string) => ({ id, words: "the gear was never down" });
    const said = (missed: string[], fired = [{ id: "a", action: "speak", at: 1 }]) =>
        summaryOf(flight({ trial: { script: "x.json", fired, missed: missed.map(miss) } })).split(". ").pop();
    equal(said(["b"]), "With the script x.json one trigger would have fired, 1 would not (b: the gear was never down).");
    equal(said([]), "With the script x.json one trigger would have fired, all that it has.");
    equal(said(["b", "c", "d", "e", "f", "g"], []), "With the script x.json no trigger would have fired, 6 would not ("
        + ["b", "c", "d", "e", "f"].map((id) => `${id}: the gear was never down; `).join("") + "\u2026).");
});

test("a script's marks have names of their own, and a miss without a moment has none", () => {
    const marks = marksOf(flight({
        fired: [{ id: "a", action: "speak", at: 1 }],
        trial: { script: "x.json", fired: [{ id: "a", action: "speak", at: 1.5 }],
            missed: [{ id: "b", words: "never" }, { id: "c", words: "at the end", at: 60 }] },
    }));
    equal(marks.map(({ kind, label, at, said }) => `${kind} ${label} ${at} ${said}`).join("\n"),
        "fired 1 1 a\nwould s1 1.5 script: a\nmiss m2 60 script missed c: at the end");
});

test("what is not permitted is beyond a limit, and a limit that is absent is none", () => {
    const line = { at: Float64Array.of(0, 1, 2), value: Float64Array.of(5, 10, 15), breaks: Uint8Array.of(1, 0, 0) };
    deepEqual(outside(line, { least: 6, most: 10 }), [true, false, true]);
    deepEqual(outside(line, { most: 10 }), [false, false, true]);
    deepEqual(outside(line, {}), [false, false, false]);
});

test("the summary counts what was met, and names the rest", () => {
    const grade = (title: string, verdict: string) => ({ title, verdict, words: "", values: [] });
    const said = (...grades: [string, string][]) =>
        summaryOf(flight({ grades: grades.map(([title, verdict]) => grade(title, verdict)) })).split(". ").pop();
    equal(said(["A", "met"], ["B", "not met"], ["C", "not judged"]), "Of 3 tolerances 1 met (B: not met; C: not judged).");
    equal(said(["A", "met"]), "Of one tolerance 1 met.");
});
