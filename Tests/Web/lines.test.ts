import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import type { Line } from "../../web/plot/flights";
import { range, valueAt, visiblePoints } from "../../web/plot/lines";

function line(points: [number, number][], breaks: number[] = [0]): Line {
    const marks = new Uint8Array(points.length);
    for (const place of breaks) marks[place] = 1;
    return {
        at: Float64Array.from(points, ([at]) => at), value: Float64Array.from(points, ([, value]) => value), breaks: marks,
    };
}

function wave(count: number): Line {
    return line(Array.from({ length: count }, (_, i) => [i, Math.sin(i * 0.7) * 100 + (i === 777 ? 5000 : 0)]));
}

test("where there is room all points are drawn", () => {
    deepEqual(visiblePoints(wave(10), 0, 9, 1000), [0, 1, 2, 3, 4, 5, 6, 7, 8, 9]);
});

test("each column keeps its least and greatest point, and a single peak survives", () => {
    const all = wave(10000);
    const kept = visiblePoints(all, 0, 10000, 50);
    ok(kept.length <= 50 * 4 + 2);
    ok(kept.includes(777));
    for (let column = 0; column < 50; ++column) {
        const inside = [...all.value.slice(column * 200, (column + 1) * 200)];
        const drawn = kept.filter((i) => i >= column * 200 && i < (column + 1) * 200).map((i) => all.value[i]);
        equal(Math.max(...drawn), Math.max(...inside));
        equal(Math.min(...drawn), Math.min(...inside));
    }
});

test("points come in the order of time, each once", () => {
    const kept = visiblePoints(wave(5000), 0, 5000, 70);
    for (let i = 1; i < kept.length; ++i) ok(kept[i] > kept[i - 1]);
});

test("within one column a break stays a break", () => {
    const broken = line([[0, 1], [1, 2], [2, 3], [3, 4], [4, 5], [5, 6]], [0, 3]);
    const kept = visiblePoints(broken, 0, 6, 1);
    deepEqual(kept, [0, 2, 3, 5]);
});

test("of what lies outside the nearest points are kept, which a line leads to", () => {
    deepEqual(visiblePoints(line([[0, 1], [10, 2], [20, 3], [30, 4]]), 11, 19, 100), [1, 2]);
    deepEqual(visiblePoints(line([]), 0, 1, 100), []);
});

test("between points a value is in proportion, and a switch stays as it was", () => {
    const two = line([[0, 0], [10, 1]]);
    equal(valueAt(two, 5), 0.5);
    equal(valueAt(two, 9.9, true), 0);
    equal(valueAt(two, 10, true), 1);
});

test("nobody knows a value before, after, or where the line is broken", () => {
    const broken = line([[0, 1], [1, 2], [100, 3], [101, 4]], [0, 2]);
    for (const moment of [-1, 50, 102]) equal(valueAt(broken, moment), undefined);
    equal(valueAt(broken, 1), 2);
    equal(valueAt(broken, 100), 3);
});

test("the range is that of all lines", () => {
    deepEqual(range([line([[0, 5], [1, -2]]), line([[0, 9]])]), [-2, 9]);
    equal(range([line([])]), undefined);
});
