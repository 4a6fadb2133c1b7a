// The dials: numbers to be read at arm's length, and the attitude.
import { html, picture, svg } from "../plot/svg";
import type { Values } from "../client/connection";
import { part, setText } from "./parts";
import { BANK, GEAR_HANDLE, PITCH, readings, readingText } from "./readings";
import type { Say } from "./texts";

const SIZE = 160;
const PIXELS_PER_DEGREE = 2;

/** The horizon as it is seen: it turns against the bank and sinks with the nose up. */
class AttitudeDial {
    private readonly world: SVGGElement;
    readonly element: SVGSVGElement;

    constructor(label: string) {
        const middle = SIZE / 2;
        const rungs = [-30, -20, -10, 10, 20, 30].map(degrees => svg("line", {
            class: "rung", x1: middle - 16, x2: middle + 16,
            y1: middle - degrees * PIXELS_PER_DEGREE, y2: middle - degrees * PIXELS_PER_DEGREE,
        }));
        this.world = svg("g", {},
            svg("rect", { class: "sky", x: -SIZE, y: -2 * SIZE, width: 3 * SIZE, height: 2 * SIZE + middle }),
            svg("rect", { class: "earth", x: -SIZE, y: middle, width: 3 * SIZE, height: 2 * SIZE }),
            svg("line", { class: "horizon", x1: -SIZE, x2: 2 * SIZE, y1: middle, y2: middle }), ...rungs);
        const clip = svg("clipPath", { id: "attitude-clip" }, svg("circle", { cx: middle, cy: middle, r: middle - 2 }));
        this.element = picture(SIZE, SIZE, svg("defs", {}, clip),
            svg("g", { "clip-path": "url(#attitude-clip)" }, this.world),
            svg("path", { class: "aircraft", d: `M${middle - 45} ${middle}h30l15 10 15-10h30` }),
            svg("circle", { class: "rim", cx: middle, cy: middle, r: middle - 2 }));
        this.element.setAttribute("class", "attitude");
        this.element.setAttribute("aria-label", label);
    }

    show(pitch: number, bank: number): void {
        const middle = SIZE / 2;
        this.world.setAttribute("transform",
            `rotate(${(-bank).toFixed(1)} ${middle} ${middle}) translate(0 ${(pitch * PIXELS_PER_DEGREE).toFixed(1)})`);
    }
}

export class Instruments {
    private readonly numbers = new Map<string, HTMLElement>();
    private readonly gear = html("dd", {});
    private readonly dial: AttitudeDial;
    readonly element: HTMLElement;

    constructor(private readonly say: Say) {
        this.dial = new AttitudeDial(say("attitude"));
        const list = html("dl", { class: "dials" });
        for (const reading of readings) {
            const number = html("span", {});
            this.numbers.set(reading.key, number);
            list.append(html("div", { "data-reading": reading.key }, html("dt", {}, say(reading.key)),
                html("dd", {}, number, " ", html("small", {}, reading.unit))));
        }
        list.append(html("div", { "data-reading": "gear" }, html("dt", {}, say("gear")), this.gear));
        this.element = part("instruments", say("instruments"), this.dial.element, list);
    }

    show(values: Values): void {
        for (const reading of readings) setText(this.numbers.get(reading.key)!, readingText(reading, values));
        const handle = values[GEAR_HANDLE];
        setText(this.gear, handle === undefined ? "–" : this.say(handle > 0.5 ? "gearDown" : "gearUp"));
        if (values[PITCH] !== undefined && values[BANK] !== undefined) this.dial.show(values[PITCH], values[BANK]);
    }
}
