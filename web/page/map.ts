// Where the aircraft is and has been: a track without a map below it.
import { Plane, scaleLength } from "../plot/ground";
import { html, picture, px, svg, text } from "../plot/svg";
import type { Values } from "../client/connection";
import { part, setText } from "./parts";
import { HEADING, LATITUDE, LONGITUDE } from "./readings";
import type { Say } from "./texts";

const WIDTH = 320;
const HEIGHT = 240;
const MARGIN = 24;
/** Of the way shown: as many as a lesson of an hour has at two a second. */
const MOST_PLACES = 7_200;
const LEAST_METRES = 500;
/** Farther than anything flies in half a second: the aircraft was put elsewhere. */
const LEAP_METRES = 500;

interface Place {
    lat: number;
    lon: number;
    isLeap: boolean;
}

export class TrackMap {
    private readonly places: Place[] = [];
    private readonly way = svg("path", { class: "way" });
    private readonly aircraft = svg("path", { class: "aircraft", d: "M0-9L6 7 0 3-6 7Z", visibility: "hidden" });
    private readonly scale = svg("line", { class: "scale", x1: 12, y1: HEIGHT - 12, y2: HEIGHT - 12, x2: 12 });
    private readonly scaleText = text(12, HEIGHT - 18, "");
    private readonly summary: HTMLElement;
    readonly element: HTMLElement;

    constructor(private readonly say: Say) {
        this.summary = html("p", { id: "position" }, say("noPosition"));
        const drawing = picture(WIDTH, HEIGHT, this.way, this.aircraft, this.scale, this.scaleText,
            svg("path", { class: "north", d: `M${WIDTH - 18} 26l6-16 6 16-6-4Z` }),
            text(WIDTH - 12, 40, "N", { "text-anchor": "middle" }));
        this.element = part("track", say("track"), drawing, this.summary);
    }

    show(values: Values): void {
        const [lat, lon] = [values[LATITUDE], values[LONGITUDE]];
        if (lat === undefined || lon === undefined) return;
        this.add(lat, lon);
        this.draw(values[HEADING] ?? 0);
        setText(this.summary, this.say("trackSummary", `${lat.toFixed(4)}°`, `${lon.toFixed(4)}°`));
    }

    private add(lat: number, lon: number): void {
        const last = this.places[this.places.length - 1];
        if (last !== undefined) {
            const plane = new Plane(last.lat, last.lon);
            const metres = Math.hypot(plane.east(lon), plane.north(lat));
            if (metres < 1) return;
            this.places.push({ lat, lon, isLeap: metres > LEAP_METRES });
        } else {
            this.places.push({ lat, lon, isLeap: true });
        }
        if (this.places.length > MOST_PLACES) this.places.shift();
    }

    /** Around the way since the last leap, which is what the person flies now. */
    private draw(heading: number): void {
        let from = this.places.length - 1;
        while (from > 0 && !this.places[from].isLeap) --from;
        const flown = this.places.slice(from);
        const here = flown[flown.length - 1];
        const plane = new Plane(here.lat, here.lon);
        const points = flown.map(place => [plane.east(place.lon), plane.north(place.lat)] as const);
        const half = Math.max(LEAST_METRES, ...points.map(([east, north]) => Math.max(Math.abs(east), Math.abs(north))));
        const perMetre = (HEIGHT / 2 - MARGIN) / half;
        const x = (east: number) => px(WIDTH / 2 + east * perMetre);
        const y = (north: number) => px(HEIGHT / 2 - north * perMetre);
        this.way.setAttribute("d", points.map(([east, north], at) => `${at === 0 ? "M" : "L"}${x(east)} ${y(north)}`).join(""));
        this.aircraft.setAttribute("visibility", "visible");
        this.aircraft.setAttribute("transform", `translate(${WIDTH / 2} ${HEIGHT / 2}) rotate(${heading.toFixed(0)})`);
        const length = scaleLength(100 / perMetre);
        this.scale.setAttribute("x2", String(px(12 + length.metres * perMetre)));
        setText(this.scaleText, length.text);
    }
}
