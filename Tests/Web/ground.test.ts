import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import type { Track } from "../../web/plot/flights";
import { boxOf, placeAt, Plane, scaleLength } from "../../web/plot/ground";

function track(points: [number, number, number][], breaks: number[] = [0]): Track {
    const marks = new Uint8Array(points.length);
    for (const place of breaks) marks[place] = 1;
    return {
        at: Float64Array.from(points, ([at]) => at), lat: Float64Array.from(points, ([, lat]) => lat),
        lon: Float64Array.from(points, ([, , lon]) => lon), breaks: marks,
    };
}

test("a minute of latitude is a nautical mile, one of longitude less", () => {
    const plane = new Plane(60, 10);
    ok(Math.abs(plane.north(60 + 1 / 60) / 1852 - 1) < 0.002);
    ok(Math.abs(plane.east(10 + 1 / 60) / 926 - 1) < 0.002);
});

test("the date line is crossed the shorter way", () => {
    const plane = new Plane(0, 179.9);
    ok(plane.east(-179.9) > 0);
    ok(plane.east(-179.9) < 25_000);
    const box = boxOf([track([[0, 0, 179.9], [1, 0, -179.9]])], plane)!;
    ok(box.east - box.west < 25_000);
    const middle = placeAt(track([[0, 0, 179.9], [1, 0, -179.9]]), 0.5)!;
    ok(Math.abs(middle.lon - 180) < 1e-9);
});

test("nothing has no box", () => {
    equal(boxOf([track([])], new Plane(0, 0)), undefined);
});

test("the scale has a round length in miles, or in metres when it is short", () => {
    deepEqual(scaleLength(4000), { metres: 3704, text: "2 nm" });
    equal(scaleLength(1852).text, "1 nm");
    equal(scaleLength(1000).text, "0.5 nm");
    equal(scaleLength(99).text, "50 m");
    for (const metres of [3, 180, 190, 7e5]) ok(scaleLength(metres).metres <= metres * 1.00001);
});

test("a place lies between two points, and nowhere across a break", () => {
    const some = track([[0, 10, 20], [2, 11, 21], [60, 12, 22]], [0, 2]);
    deepEqual(placeAt(some, 1), { lat: 10.5, lon: 20.5 });
    deepEqual(placeAt(some, 60), { lat: 12, lon: 22 });
    equal(placeAt(some, 30), undefined);
    equal(placeAt(some, 61), undefined);
});
