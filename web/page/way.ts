// The way that was flown since the aircraft was put somewhere, as a line of few points.
import { Plane } from "../plot/ground";

/** Nearer to each other than that, two places are the same one. */
const LEAST_STEP = 1;
/** Between two places farther apart in time nobody knows where the aircraft was. */
const LONGEST_STEP_MS = 3_000;
/** What goes farther than that was put elsewhere, the more so what goes faster. */
const LEAP_METRES = 500;
const LEAP_METRES_A_MS = 0.5;
/** How many places may wait for the line to bend: what a place costs is bounded by that. */
const MOST_WAITING = 60;
/** Of the line; the oldest go. */
const MOST_POINTS = 5_000;
/** A plane is true around its origin only. */
const PLANE_METRES = 50_000;

interface Point {
    lat: number;
    lon: number;
    isBreak: boolean;
}

/**
 * Places between which the line is straight but for `tolerance` metres are left out of it. What is drawn of it is in
 * metres on a plane: x east, y south.
 */
export class Way {
    private points: Point[] = [];
    /** Behind the last point, all near the line to the last of them. */
    private waiting: Point[] = [];
    private plane = new Plane(0, 0);
    private settled = "";
    private lastAt = 0;
    private box = { west: 0, east: 0, south: 0, north: 0 };

    /** `at` in milliseconds. Whether anything has changed. */
    add(lat: number, lon: number, at: number, tolerance: number): boolean {
        const elapsed = at - this.lastAt;
        this.lastAt = at;
        const last = this.last;
        if (last === undefined) return this.begin(lat, lon);
        const here = new Plane(last.lat, last.lon);
        const metres = Math.hypot(here.east(lon), here.north(lat));
        if (metres < LEAST_STEP) return false;
        if (metres > Math.max(LEAP_METRES, LEAP_METRES_A_MS * elapsed)) return this.begin(lat, lon);
        const point = { lat, lon, isBreak: elapsed > LONGEST_STEP_MS };
        if (point.isBreak || this.waiting.length >= MOST_WAITING || !this.isNearLine(point, tolerance)) this.settle();
        if (point.isBreak) this.put(point);
        else this.waiting.push(point);
        this.include(point);
        return true;
    }

    get pointCount(): number {
        return this.points.length + this.waiting.length;
    }

    /** Where the aircraft is now, on the plane. */
    get here(): { x: number; y: number } {
        const { last } = this;
        return last === undefined ? { x: 0, y: 0 } : this.onPlane(last);
    }

    /** How far away, east or west, north or south, anything of the way lies from here. */
    get reach(): number {
        const { x, y } = this.here;
        const { west, east, south, north } = this.box;
        return Math.max(x - west, east - x, y - north, south - y);
    }

    /** As the `d` of two paths: what stays as it is for some seconds, and from there to the aircraft. */
    get paths(): { settled: string; end: string } {
        const { last } = this;
        if (last === undefined || this.waiting.length === 0) return { settled: this.settled, end: "" };
        const from = this.points[this.points.length - 1];
        return { settled: this.settled, end: this.command({ ...from, isBreak: true }) + this.command(last) };
    }

    private get last(): Point | undefined {
        return this.waiting[this.waiting.length - 1] ?? this.points[this.points.length - 1];
    }

    private begin(lat: number, lon: number): true {
        this.points = [];
        this.waiting = [];
        this.rebase(lat, lon);
        this.put({ lat, lon, isBreak: true });
        return true;
    }

    /** The last place that waited becomes a point of the line. */
    private settle(): void {
        const end = this.waiting.pop();
        if (end === undefined) return;
        this.waiting = [];
        this.put(end);
    }

    private put(point: Point): void {
        this.points.push(point);
        const { x, y } = this.onPlane(point);
        if (this.points.length > MOST_POINTS) {
            this.points.splice(0, MOST_POINTS / 10);
            this.points[0].isBreak = true;
            this.rebase(point.lat, point.lon);
        } else if (Math.max(Math.abs(x), Math.abs(y)) > PLANE_METRES) {
            this.rebase(point.lat, point.lon);
        } else {
            this.settled += this.command(point);
        }
    }

    /** On a plane around that place, all is drawn anew. */
    private rebase(lat: number, lon: number): void {
        this.plane = new Plane(lat, lon);
        this.box = { west: 0, east: 0, south: 0, north: 0 };
        for (const point of this.points) this.include(point);
        this.settled = this.points.map(point => this.command(point)).join("");
    }

    private isNearLine(end: Point, tolerance: number): boolean {
        const from = this.onPlane(this.points[this.points.length - 1]);
        const to = this.onPlane(end);
        const [dx, dy] = [to.x - from.x, to.y - from.y];
        const length = Math.hypot(dx, dy);
        return this.waiting.every(point => {
            const { x, y } = this.onPlane(point);
            const along = length === 0 ? 0 : ((x - from.x) * dx + (y - from.y) * dy) / length;
            const beside = along < 0 || along > length || length === 0 ? Infinity
                : Math.abs((x - from.x) * dy - (y - from.y) * dx) / length;
            return beside <= tolerance;
        });
    }

    private include(point: Point): void {
        const { x, y } = this.onPlane(point);
        const { west, east, south, north } = this.box;
        this.box = { west: Math.min(west, x), east: Math.max(east, x), north: Math.min(north, y), south: Math.max(south, y) };
    }

    private onPlane({ lat, lon }: Point): { x: number; y: number } {
        return { x: this.plane.east(lon), y: -this.plane.north(lat) };
    }

    private command(point: Point): string {
        const { x, y } = this.onPlane(point);
        return `${point.isBreak ? "M" : "L"}${Math.round(x)} ${Math.round(y)}`;
    }
}
