// Where the aircraft is and has been: a track without a map below it.
import { scaleLength } from "../plot/ground";
import { html, picture, px, svg, text } from "../plot/svg";
import type { Values } from "../client/connection";
import { part, setAttribute, setText } from "./parts";
import { LATITUDE, LONGITUDE, TRUE_HEADING } from "./readings";
import type { Say } from "./texts";
import { Way } from "./way";

const WIDTH = 320;
const HEIGHT = 240;
const MARGIN = 24;
const LEAST_METRES = 500;
/** Of the picture: how far the line may lie beside the places. */
const TOLERANCE = 0.3;
const LINE = 2.5;

export class TrackMap {
    private readonly way = new Way();
    private perMetre = (HEIGHT / 2 - MARGIN) / LEAST_METRES;
    private readonly settled = svg("path");
    private readonly end = svg("path");
    private readonly line = svg("g", { class: "way", "stroke-linejoin": "round", "stroke-linecap": "round" }, this.settled, this.end);
    private readonly aircraft = svg("path", { class: "aircraft", d: "M0-9L6 7 0 3-6 7Z", visibility: "hidden" });
    private readonly scale = svg("line", { class: "scale", x1: 12, y1: HEIGHT - 12, y2: HEIGHT - 12, x2: 12 });
    private readonly scaleText = text(12, HEIGHT - 18, "");
    private readonly summary: HTMLElement;
    readonly element: HTMLElement;

    constructor(private readonly say: Say) {
        this.summary = html("p", { id: "position" }, say("noPosition"));
        const drawing = picture(WIDTH, HEIGHT, this.line, this.aircraft, this.scale, this.scaleText,
            svg("path", { class: "north", d: `M${WIDTH - 18} 26l6-16 6 16-6-4Z` }),
            text(WIDTH - 12, 40, "N", { "text-anchor": "middle" }));
        this.element = part("track", say("track"), drawing, this.summary);
    }

    show(values: Values): void {
        const [lat, lon] = [values[LATITUDE], values[LONGITUDE]];
        if (lat === undefined || lon === undefined) {
            setAttribute(this.aircraft, "visibility", "hidden");
            setText(this.summary, this.say("noPosition"));
            return;
        }
        if (this.way.add(lat, lon, performance.now(), TOLERANCE / this.perMetre)) this.draw();
        setAttribute(this.aircraft, "visibility", "visible");
        setAttribute(this.aircraft, "transform",
            `translate(${WIDTH / 2} ${HEIGHT / 2}) rotate(${(values[TRUE_HEADING] ?? 0).toFixed(0)})`);
        setText(this.summary, this.say("trackSummary", `${lat.toFixed(4)}°`, `${lon.toFixed(4)}°`));
    }

    /** The aircraft stays in the middle: the line is moved below it, and only its end is new. */
    private draw(): void {
        const { here, reach, paths } = this.way;
        const perMetre = this.perMetre = (HEIGHT / 2 - MARGIN) / Math.max(LEAST_METRES, reach);
        setAttribute(this.settled, "d", paths.settled);
        setAttribute(this.end, "d", paths.end);
        this.line.style.strokeWidth = String(LINE / perMetre);
        this.line.setAttribute("transform",
            `translate(${WIDTH / 2} ${HEIGHT / 2}) scale(${perMetre.toPrecision(6)}) translate(${-here.x} ${-here.y})`);
        const length = scaleLength(100 / perMetre);
        this.scale.setAttribute("x2", String(px(12 + length.metres * perMetre)));
        setText(this.scaleText, length.text);
    }
}
