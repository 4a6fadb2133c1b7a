// The ground track: north is up, and the scale holds at the middle of the picture.
import type { Flight } from "./flights";
import { Box, boxOf, placeAt, Plane, scaleLength } from "./ground";
import { Gestures } from "./gestures";
import { marksOf, shape } from "./marks";
import { Drawn, letterOf } from "./strips";
import { html, picture, px, svg, text } from "./svg";

const MARGIN = 28;
const NEAR = 24; // pixels from the track at which a pointer still means it

interface Placed {
    x: Float64Array;
    y: Float64Array;
}

export class TrackView {
    readonly element = html("div", { class: "track", "data-key": "track" });
    private readonly gestures: Gestures;
    private readonly plane: Plane;
    private readonly box: Box | undefined;
    private width = 0;
    private height = 0;
    private base = 1;
    private drawn: Drawn[] = [];
    private range: [number, number] = [-Infinity, Infinity];
    private dots: SVGElement = svg("g");
    /** The tracks in pixels, before zooming. */
    private placed = new Map<Flight, Placed>();

    constructor(flights: Flight[], changed: () => void) {
        const first = flights.find((flight) => flight.track.at.length > 0)?.track;
        this.plane = new Plane(first ? first.lat[0] : 0, first ? first.lon[0] : 0);
        this.box = boxOf(flights.map((flight) => flight.track), this.plane);
        this.gestures = new Gestures(this.element, "xy", changed);
    }

    get isEmpty(): boolean {
        return this.box === undefined;
    }

    resize(width: number, height: number, flights: Flight[]): void {
        if (!this.box) return;
        [this.width, this.height] = [width, height];
        const { west, east, south, north } = this.box;
        this.base = Math.min((width - 2 * MARGIN) / Math.max(east - west, 1),
            (height - 2 * MARGIN) / Math.max(north - south, 1), 1);
        const middleEast = (west + east) / 2;
        const middleNorth = (south + north) / 2;
        for (const flight of flights) {
            const { lat, lon } = flight.track;
            this.placed.set(flight, {
                x: lon.map((one) => width / 2 + (this.plane.east(one) - middleEast) * this.base),
                y: lat.map((one) => height / 2 - (this.plane.north(one) - middleNorth) * this.base),
            });
        }
        this.gestures.setExtent(0, 0, width, height);
    }

    zoomBy(factor: number): void {
        const { transform } = this.gestures;
        const [x, y] = [this.width / 2, this.height / 2];
        this.gestures.show(transform.k * factor, transform.invertX(x), x, (y - transform.y) / transform.k, y);
    }

    reset(): void {
        this.gestures.show(1, 0, 0);
    }

    /** `range` is what the strips show: that part of each track is drawn in full. */
    draw(drawn: Drawn[], range: [number, number], isSingle: boolean): void {
        if (!this.box) return;
        this.drawn = drawn;
        this.range = range;
        const inside: Node[] = [];
        for (const one of drawn) {
            const isWhole = range[0] <= -one.zero && range[1] >= one.flight.seconds - one.zero;
            if (!isWhole) inside.push(svg("path", { class: "whole", d: this.path(one, [-Infinity, Infinity]) }));
            inside.push(svg("path", { class: `line flight${one.place}`, d: this.path(one, range) }));
        }
        for (const one of drawn) inside.push(...this.marks(one, isSingle));
        this.dots = svg("g");
        this.element.replaceChildren(picture(this.width, this.height, ...inside, this.dots, this.compass(), this.scale()));
    }

    /** A dot on each track at the moment, with the flight's letter. */
    point(moment: number | undefined, isSingle: boolean): void {
        this.dots.replaceChildren();
        if (moment === undefined || !this.box) return;
        for (const { flight, place, zero } of this.drawn) {
            const where = placeAt(flight.track, moment + zero);
            if (!where) continue;
            const [x, y] = this.pixel(where.lat, where.lon);
            this.dots.append(svg("circle", { class: `dot fill${place % 4}`, cx: px(x), cy: px(y), r: 6 }));
            if (!isSingle) this.dots.append(text(x + 9, y + 4, letterOf(place), { class: "letter" }));
        }
    }

    /** The moment at which a track passes nearest to a place of the picture; absent far from all. */
    momentAt(left: number, top: number): number | undefined {
        const { transform } = this.gestures;
        let nearest = NEAR * NEAR;
        let result: number | undefined;
        for (const { flight, zero } of this.drawn) {
            const placed = this.placed.get(flight);
            for (let i = 0; placed && i < placed.x.length; ++i) {
                const moment = flight.track.at[i] - zero;
                if (moment < this.range[0] || moment > this.range[1]) continue;
                const distance = (transform.applyX(placed.x[i]) - left) ** 2 + (transform.applyY(placed.y[i]) - top) ** 2;
                if (distance < nearest) [nearest, result] = [distance, moment];
            }
        }
        return result;
    }

    private pixel(lat: number, lon: number): [number, number] {
        const { west, east, south, north } = this.box!;
        const { transform } = this.gestures;
        return [
            transform.applyX(this.width / 2 + (this.plane.east(lon) - (west + east) / 2) * this.base),
            transform.applyY(this.height / 2 - (this.plane.north(lat) - (south + north) / 2) * this.base),
        ];
    }

    /** What moves by less than a pixel is left out. */
    private path({ flight, zero }: Drawn, [from, to]: [number, number]): string {
        const { transform } = this.gestures;
        const placed = this.placed.get(flight)!;
        const { at, breaks } = flight.track;
        let d = "";
        let isBroken = true;
        let [lastX, lastY] = [NaN, NaN];
        for (let i = 0; i < at.length; ++i) {
            if (breaks[i]) isBroken = true;
            const moment = at[i] - zero;
            if (moment < from || moment > to) {
                isBroken = true;
                continue;
            }
            const x = transform.applyX(placed.x[i]);
            const y = transform.applyY(placed.y[i]);
            const isEnd = i + 1 === at.length || breaks[i + 1] === 1;
            if (!isBroken && !isEnd && Math.abs(x - lastX) + Math.abs(y - lastY) < 1) continue;
            d += isBroken ? `M${px(x)} ${px(y)}h.1` : `L${px(x)} ${px(y)}`;
            isBroken = false;
            [lastX, lastY] = [x, y];
        }
        return d;
    }

    private marks({ flight, place, zero }: Drawn, isSingle: boolean): Node[] {
        const result: Node[] = [];
        for (const { kind, label, at } of marksOf(flight)) {
            const where = placeAt(flight.track, at);
            const moment = at - zero;
            if (!where || moment < this.range[0] || moment > this.range[1]) continue;
            const [x, y] = this.pixel(where.lat, where.lon);
            if (x < 0 || y < 0 || x > this.width || y > this.height) continue;
            // What fired has its label above, so that both can be read where the script would have done the same.
            result.push(svg("g", { class: "mark" }, shape(kind, place, x, y),
                text(px(x), px(kind === "fired" ? y - 12 : y + 18), (isSingle ? "" : letterOf(place)) + label,
                    { class: "label", "text-anchor": "middle" })));
        }
        return result;
    }

    private compass(): Node {
        const x = this.width - 20;
        return svg("g", { class: "compass" }, svg("path", { d: `M${x} 8l6 16l-6 -4l-6 4z` }),
            text(x, 37, "N", { "text-anchor": "middle" }));
    }

    private scale(): Node {
        const perPixel = 1 / (this.base * this.gestures.transform.k);
        const { metres, text: label } = scaleLength(Math.min(160, this.width / 3) * perPixel);
        const y = this.height - 12;
        return svg("g", { class: "scale" }, svg("path", { d: `M12 ${y - 5}v5h${px(metres / perPixel)}v-5` }),
            text(12 + px(metres / perPixel) / 2, y - 6, label, { "text-anchor": "middle" }));
    }
}
