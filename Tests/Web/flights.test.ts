import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { flight, packed } from "./flight";
import { unpack } from "../../web/plot/flights";

test("numbers are steps from the one before, in units", () => {
    const [line] = flight().lines.get("alt_ft")!;
    deepEqual([...line.at], [0.5, 1, 11]);
    deepEqual([...line.value].map((value) => value.toFixed(1)), ["1416.5", "1416.0", "1417.0"]);
    deepEqual([...line.breaks], [1, 0, 1]);
});

test("the track comes in degrees", () => {
    const { lat, lon } = flight().track;
    deepEqual([...lat].map((value) => value.toFixed(4)), ["47.4581", "47.4582"]);
    deepEqual([...lon].map((value) => value.toFixed(4)), ["-8.5481", "-8.5482"]);
});

test("the start is seconds since 1970, or absent", () => {
    equal(flight().start, 1794791378);
    equal(unpack({ ...packed, start: undefined }).start, undefined);
});
