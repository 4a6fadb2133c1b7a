// What is drawn over time: which strips there are, and how each is drawn.
import { scaleLinear, Linear } from "d3-scale";
import type { Flight, Line, Stretch } from "./flights";
import { range, valueAt, visiblePoints } from "./lines";
import { marksOf, shape } from "./marks";
import { html, picture, px, svg, text } from "./svg";
import { numberText, PlotText, say } from "./words";

export interface StripKind {
    title: PlotText;
    unit: string;
    height: number;
    /** The recording's keys; a second one is drawn thinner, and named in the values. */
    keys: string[];
    names?: PlotText[];
    /** Fixed limits, in the unit; else they come from the values. */
    limits?: [number, number];
    /** From the recording's unit to that of the strip. */
    factor?: number;
    decimals: number;
    isSwitch?: boolean;
}

const RATIO = { unit: "%", height: 56, limits: [0, 100] as [number, number], factor: 100, decimals: 0 };

export const STRIPS: StripKind[] = [
    { title: "Altitude, indicated", unit: "ft", height: 150, keys: ["alt_ft"], decimals: 0 },
    { title: "Height above ground", unit: "ft", height: 130, keys: ["agl_ft"], decimals: 0 },
    { title: "Bank, right positive", unit: "\u00b0", height: 80, keys: ["bank_deg"], decimals: 1 },
    { title: "Pitch, up positive", unit: "\u00b0", height: 80, keys: ["pitch_deg"], decimals: 1 },
    { title: "Gear out", ...RATIO, keys: ["gear_ratio"] },
    { title: "Gear handle", unit: "", height: 34, keys: ["gear_down"], names: ["up", "down"], limits: [0, 1], decimals: 0,
      isSwitch: true },
    { title: "Flaps", ...RATIO, keys: ["flap_ratio"] },
    { title: "Throttle", ...RATIO, keys: ["throttle_ratio"] },
    { title: "Mixture", ...RATIO, keys: ["mixture_ratio"] },
    { title: "Propeller", ...RATIO, keys: ["prop_ratio"] },
    { title: "Autopilot", unit: "", height: 34, keys: ["autopilot_on"], names: ["off", "on"], limits: [0, 1],
      decimals: 0, isSwitch: true },
];

/** A flight as it is drawn: its place in the list gives colour, dash and letter; `zero` is its moment at 0. */
export interface Drawn {
    flight: Flight;
    place: number;
    zero: number;
}

/** The part of time that is shown, in seconds, and where it stands on the page, in pixels. */
export interface Window {
    from: number;
    to: number;
    left: number;
    right: number;
}

export function xOf(window: Window, moment: number): number {
    return window.left + ((moment - window.from) / (window.to - window.from)) * (window.right - window.left);
}

export function letterOf(place: number): string {
    return String.fromCharCode(65 + place);
}

export function linesOf(flight: Flight, kind: StripKind): Line[] {
    return kind.keys.flatMap((key) => flight.lines.get(key) ?? []);
}

/** What the flight's lines of this strip say at a moment of its own time. */
export function valueText(flight: Flight, kind: StripKind, moment: number): string {
    const said = linesOf(flight, kind).map((line) => {
        const value = valueAt(line, moment, kind.isSwitch);
        if (value === undefined) return "\u2013";
        if (kind.names) return say(kind.names[value >= 0.5 ? 1 : 0]);
        return numberText(value * (kind.factor ?? 1), kind.decimals);
    });
    const known = said.some((one) => one !== "\u2013");
    return said.join(" / ") + (known && kind.unit !== "" ? (kind.unit === "\u00b0" ? "\u00b0" : `\u00a0${kind.unit}`) : "");
}

/** One strip of the page: a heading with the values at the cursor, and the picture. */
export class Strip {
    readonly element: HTMLElement;
    private readonly values = html("span", { class: "values" });
    private readonly holder = html("div", { class: "holder" });
    private cursor = svg("line", { class: "cursor" });
    private readonly found: [number, number];

    constructor(readonly kind: StripKind, private readonly flights: Flight[]) {
        this.found = range(flights.flatMap((flight) => linesOf(flight, kind))) ?? [0, 1];
        const heading = html("h3", {}, say(kind.title));
        if (kind.unit !== "") heading.append(html("span", { class: "unit" }, `, ${kind.unit}`));
        this.element = html("section", { class: "strip", "data-key": kind.keys[0] },
            html("div", { class: "head" }, heading, this.values), this.holder);
    }

    /** Takes the room that it will have. */
    keepPlace(width: number): void {
        this.holder.replaceChildren(picture(width, this.kind.height));
    }

    draw(drawn: Drawn[], window: Window, width: number, ticks: number[]): void {
        const { kind } = this;
        const top = 6;
        const bottom = kind.height - 6;
        const scale = this.scale(top, bottom);
        const inside: Node[] = [];
        for (const tick of ticks) {
            const x = px(xOf(window, tick));
            inside.push(svg("line", { class: "grid", x1: x, x2: x, y1: top, y2: bottom }));
        }
        for (const tick of this.ticks(scale)) {
            const y = px(scale(tick));
            const label = kind.names ? say(kind.names[tick]) : numberText(tick, tick % 1 === 0 ? 0 : 1);
            inside.push(svg("line", { class: "grid", x1: window.left, x2: window.right, y1: y, y2: y }));
            inside.push(text(window.left - 5, y + 4, label, { class: "tick", "text-anchor": "end" }));
        }
        const clip = `clip-${kind.keys[0]}`;
        const plot = svg("g", { "clip-path": `url(#${clip})` });
        if (drawn.length === 1) plot.append(...this.bands(drawn[0], window, top, bottom));
        for (const one of drawn) plot.append(...this.paths(one, window, scale));
        if (kind.height > 100) for (const one of drawn) plot.append(...this.marks(one, window, scale));
        this.cursor = svg("line", { class: "cursor", y1: top, y2: bottom, x1: -9, x2: -9 });
        const area = svg("rect", { x: window.left, y: 0, width: window.right - window.left, height: kind.height });
        this.holder.replaceChildren(picture(width, kind.height,
            svg("defs", {}, svg("clipPath", { id: clip }, area)), ...inside, plot, this.cursor));
    }

    /** The cursor's place in pixels, if it is shown, and what each flight says there. */
    point(x: number | undefined, drawn: Drawn[], moment: number | undefined): void {
        for (const name of ["x1", "x2"]) this.cursor.setAttribute(name, String(x === undefined ? -9 : px(x)));
        this.values.replaceChildren();
        if (moment === undefined) return;
        for (const { flight, place, zero } of drawn) {
            const letter = this.flights.length > 1 ? `${letterOf(place)}\u00a0` : "";
            this.values.append(html("span", { class: `value ink${place % 4}` },
                letter + valueText(flight, this.kind, moment + zero)), " ");
        }
    }

    private scale(top: number, bottom: number): Linear {
        const factor = this.kind.factor ?? 1;
        let [low, high] = this.kind.limits ?? [this.found[0] * factor, this.found[1] * factor];
        if (high - low < 1) [low, high] = [low - 1, high + 1];
        const scale = scaleLinear().domain([low, high]).range([bottom, top]);
        return this.kind.limits ? scale : scale.nice(4);
    }

    private ticks(scale: Linear): number[] {
        if (this.kind.names) return [0, 1];
        return this.kind.limits ? [0, 50, 100] : scale.ticks(this.kind.height > 100 ? 5 : 3);
    }

    private bands({ flight, zero }: Drawn, window: Window, top: number, bottom: number): Node[] {
        const band = (className: string) => ([from, to]: Stretch) => {
            const x = px(xOf(window, from - zero));
            const width = Math.max(1, px(xOf(window, to - zero) - x));
            return svg("rect", { class: className, x, y: top, width, height: bottom - top });
        };
        return [...flight.gaps.map(band("gap")), ...flight.frozen.map(band("frozen"))];
    }

    /** On the line, what a script would have done. */
    private marks({ flight, place, zero }: Drawn, window: Window, scale: Linear): Node[] {
        const line = linesOf(flight, this.kind)[0];
        return marksOf(flight).flatMap(({ kind, at }) => {
            const value = line && kind !== "fired" ? valueAt(line, at) : undefined;
            const x = xOf(window, at - zero);
            const isSeen = value !== undefined && x >= window.left && x <= window.right;
            return isSeen ? [shape(kind, place, x, scale(value))] : [];
        });
    }

    private paths({ flight, place, zero }: Drawn, window: Window, scale: Linear): Node[] {
        const factor = this.kind.factor ?? 1;
        const columns = Math.round(window.right - window.left);
        return linesOf(flight, this.kind).map((line, number) => {
            let d = "";
            let y = 0;
            for (const i of visiblePoints(line, window.from + zero, window.to + zero, columns)) {
                const x = px(xOf(window, line.at[i] - zero));
                const before = y;
                y = px(scale(line.value[i] * factor));
                if (line.breaks[i] || d === "") d += `M${x} ${y}h.1`;
                else d += this.kind.isSwitch && y !== before ? `L${x} ${before}V${y}` : `L${x} ${y}`;
            }
            const weight = number === 0 ? "" : " further";
            return svg("path", { class: `line flight${place}${weight}`, d });
        });
    }
}
