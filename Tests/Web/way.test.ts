import test from "node:test";
import { equal, ok } from "node:assert/strict";
import { Plane } from "../../web/plot/ground";
import { Way } from "../../web/page/way";

const HOME = { lat: 47.4, lon: 8.5 };
const METRES_PER_DEGREE = 111_195;

/** Places in metres east and north of home, one each half second. */
function flown(places: readonly (readonly [east: number, north: number])[], way = new Way(), tolerance = 1): Way {
    places.forEach(([east, north], number) => {
        const lon = HOME.lon + east / METRES_PER_DEGREE / Math.cos(HOME.lat * Math.PI / 180);
        way.add(HOME.lat + north / METRES_PER_DEGREE, lon, 500 * number, tolerance);
    });
    return way;
}

/** Of the whole line: the end begins where what is settled ends. */
function commands({ paths: { settled, end } }: Way): string[] {
    const all = settled.match(/[ML][^ML]+/g) ?? [];
    const [from, to] = end.match(/[ML][^ML]+/g) ?? [];
    if (from === undefined) return all;
    equal(from.slice(1), all[all.length - 1].slice(1));
    return [...all, to];
}
const straight = (count: number, step = 25) => Array.from({ length: count }, (_, number) => [number * step, 0] as const);
const circle = (count: number, round: number, radius: number) => Array.from({ length: count }, (_, number) => {
    const turn = number / round * 2 * Math.PI;
    return [radius * Math.cos(turn), radius * Math.sin(turn)] as const;
});

test("a straight way has few points, and leads to where the aircraft is", () => {
    const way = flown(straight(601));
    ok(commands(way).length < 15);
    equal(commands(way)[0], "M0 0");
    equal(commands(way).slice(-1)[0], "L15000 0");
    equal(Math.round(way.reach), 15_000);
});

test("a turn keeps its form", () => {
    const places = circle(360, 240, 2_000);
    const way = flown(places, new Way(), 10);
    const points = commands(way).map(command => command.slice(1).split(" ").map(Number));
    ok(points.length < 60);
    // From the path's own origin, which is the first place.
    for (const [east, north] of places) {
        const [x, y] = [east - 2_000, -north];
        const nearest = Math.min(...points.slice(1).map(([toX, toY], place) => {
            const [fromX, fromY] = points[place];
            const [dx, dy] = [toX - fromX, toY - fromY];
            const along = Math.min(1, Math.max(0, ((x - fromX) * dx + (y - fromY) * dy) / (dx * dx + dy * dy)));
            return Math.hypot(x - fromX - along * dx, y - fromY - along * dy);
        }));
        ok(nearest < 12);
    }
});

test("an aircraft that stands still changes nothing", () => {
    const way = flown([[0, 0], [50, 0]]);
    equal(way.add(HOME.lat, HOME.lon + 50 / METRES_PER_DEGREE / Math.cos(HOME.lat * Math.PI / 180), 1_000, 1), false);
});

test("an aircraft that is put elsewhere begins anew there", () => {
    const way = flown([...straight(50), [9_000, 9_000], [9_025, 9_000]]);
    equal(commands(way).length, 2);
    equal(Math.round(way.reach), 25);
});

test("of what nobody saw there is no line, and the way before stays", () => {
    const way = flown(straight(20));
    const { lat, lon } = HOME;
    way.add(lat + 3_000 / METRES_PER_DEGREE, lon, 20 * 500 + 60_000, 1);
    way.add(lat + 3_025 / METRES_PER_DEGREE, lon, 21 * 500 + 60_000, 1);
    equal(commands(way).filter(command => command.startsWith("M")).length, 2);
    ok(commands(way).length > 2);
});

test("ten hours of circuits take no more than a bounded line", () => {
    const way = flown(circle(72_000, 500, 3_000).map(([east, north], number) => [east, north + number % 1_000] as const));
    ok(way.pointCount <= 5_061);
    ok(commands(way)[0].startsWith("M"));
    ok(way.paths.settled.length < 100_000);
});

test("far from its begin the way is drawn on a plane of there", () => {
    const way = flown(Array.from({ length: 6_000 }, (_, number) => [0, number * 100] as const));
    const here = new Plane(HOME.lat + 599_900 / METRES_PER_DEGREE, HOME.lon);
    const [first] = commands(way);
    ok(Math.abs(way.reach - 599_900) < 100);
    ok(Math.abs(here.north(HOME.lat) + 599_900) < 1);
    ok(Math.abs(Number(first.slice(1).split(" ")[1]) - way.here.y - 599_900) < 100);
});
