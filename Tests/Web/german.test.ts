import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { flight } from "./flight";
import { german } from "../../web/plot/german";
import { scaleLength } from "../../web/plot/ground";
import { STRIPS, valueText } from "../../web/plot/strips";
import { summaryOf } from "../../web/plot/summary";
import { spokenTime } from "../../web/plot/times";
import { numberText, speak } from "../../web/plot/words";

/** Said in both languages. */
const SAME = ["Autopilot", "Propeller"];

speak(german);

test("each text of the plot has a German one, with the same places for what stands in them", () => {
    const places = (text: string) => [...new Set(text.match(/\{\d\}/g))].sort();
    for (const [text, translation] of Object.entries(german.texts)) {
        equal(translation === text, SAME.includes(text));
        deepEqual(places(translation), places(text));
    }
});

test("numbers and times are written in the German way", () => {
    equal(numberText(-1234567.891, 2), "\u22121.234.567,89");
    equal(scaleLength(1000).text, "0,5 NM");
    equal(spokenTime(3661), "1 Stunde 1 Minute 1 Sekunde");
    equal(spokenTime(7325), "2 Stunden 2 Minuten 5 Sekunden");
    const line = { at: Float64Array.of(0, 10), value: Float64Array.of(1500, 1500), breaks: Uint8Array.of(1, 0) };
    const lines = new Map([["alt_ft", [line]], ["gear_down", [line]]]);
    const said = (key: string) => valueText(flight({ lines }), STRIPS.find(({ keys }) => keys[0] === key)!, 5);
    equal(said("alt_ft"), "1.500\u00a0ft");
    equal(said("gear_down"), "aus");
});

test("the summary is German", () => {
    const fired = { id: "a", action: "speak", at: 1 };
    equal(summaryOf(flight({
        seconds: 3725, distance_nm: 23.44, highest_ft: 4500.2, gaps: [[300, 335]], frozen: [[400, 460], [500, 560]], fired: [fired],
    })), "16.11.2026, 01:09:38 UTC. Dauer 1 Stunde 2 Minuten 5 Sekunden; 23,4 Seemeilen über Grund; "
        + "größte Höhe 4.500 Fuß angezeigt; ein Auslöser hat ausgelöst. Während einer Lücke wurde nichts aufgezeichnet "
        + "(5:00 bis 5:35). Der Simulator war 2-mal in Pause (6:40 bis 7:40, 8:20 bis 9:20).");
    equal(summaryOf(flight({ start: undefined, gaps: [[1, 5], [9, 14]], frozen: [[20, 30]], fired: [fired, fired] })),
        "Beginn unbekannt. Dauer 1 Minute; 2 Auslöser haben ausgelöst. Während 2 Lücken wurde nichts aufgezeichnet "
        + "(0:01 bis 0:05, 0:09 bis 0:14). Der Simulator war einmal in Pause (0:20 bis 0:30).");
    equal(summaryOf(flight({ start: undefined })), "Beginn unbekannt. Dauer 1 Minute; kein Auslöser hat ausgelöst.");
});
