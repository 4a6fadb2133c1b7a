// The strip at the top: when each flight was recorded and the simulator paused, what fired, what a script would have done.
import { Mark, marksOf, shape } from "./marks";
import { Drawn, letterOf, Window, xOf } from "./strips";
import { html, picture, px, svg, text } from "./svg";
import { say } from "./words";

const TOP = 20;
const ROW = 16;

export class RecordedStrip {
    readonly element: HTMLElement;
    private readonly holder = html("div", { class: "holder" });

    constructor() {
        this.element = html("section", { class: "strip", "data-key": "recorded" },
            html("div", { class: "head" }, html("h3", {}, say("Recorded"))), this.holder);
    }

    /** A row a flight, and one for its script; above them `axis`. Returns the cursor's line. */
    draw(drawn: Drawn[], window: Window, width: number, axis: Node, isSingle: boolean): SVGElement {
        const inside: Node[] = [];
        const labels: Node[] = [];
        let y = TOP;
        const label = (said: string) => labels.push(
            text(window.left - 5, y + 10, said, { class: "tick", "text-anchor": "end" }));
        for (const one of drawn) {
            label(isSingle ? "" : letterOf(one.place));
            inside.push(...flightRow(one, window, y));
            y += ROW;
            if (!one.flight.trial) continue;
            label("script");
            inside.push(...scriptRow(one, window, y));
            y += ROW;
        }
        const height = y + 4;
        const clip = svg("clipPath", { id: "clip-recorded" },
            svg("rect", { x: window.left, y: 0, width: window.right - window.left, height }));
        const plot = svg("g", { "clip-path": "url(#clip-recorded)" }, ...inside);
        const cursor = cursorLine(18, height);
        this.holder.replaceChildren(picture(width, height, svg("defs", {}, clip, ...patterns()), axis, ...labels, plot, cursor));
        return cursor;
    }
}

export function cursorLine(top: number, bottom: number): SVGElement {
    return svg("line", { class: "cursor", x1: -9, x2: -9, y1: top, y2: bottom });
}

function flightRow({ flight, place, zero }: Drawn, window: Window, y: number): Node[] {
    const bar = (className: string, from: number, to: number) => {
        const x = px(xOf(window, from - zero));
        return svg("rect", { class: className, x, y, width: Math.max(1, px(xOf(window, to - zero) - x)), height: ROW - 4 });
    };
    const marks = marksOf(flight).filter(({ kind }) => kind === "fired");
    return [bar(`bar fill${place % 4}`, 0, flight.seconds),
        ...flight.gaps.map(([from, to]) => bar("gap over", from, to)),
        ...flight.frozen.map(([from, to]) => bar("frozen over", from, to)),
        ...labelled(marks, window, zero, y, (x) => svg("line", { class: "moment", x1: x, x2: x, y1: y - 1, y2: y + ROW - 3 }), 2)];
}

function scriptRow({ flight, place, zero }: Drawn, window: Window, y: number): Node[] {
    const marks = marksOf(flight).filter(({ kind }) => kind !== "fired").sort((a, b) => a.at - b.at);
    return labelled(marks, window, zero, y, (x, { kind }) => shape(kind, place, x, y + 6), 8);
}

/** What is seen of `marks`, as `draw` draws them; the labels for which there is room stand `beside`. */
function labelled(marks: Mark[], window: Window, zero: number, y: number, draw: (x: number, mark: Mark) => Node,
    beside: number): Node[] {
    const result: Node[] = [];
    let free = -Infinity;
    for (const mark of marks) {
        const x = px(xOf(window, mark.at - zero));
        if (x < window.left || x > window.right) continue;
        result.push(draw(x, mark));
        if (x < free) continue;
        result.push(text(x + beside, y + ROW - 6, mark.label, { class: "number" }));
        free = x + beside + 16;
    }
    return result;
}

/** Hatched one way: nothing recorded; the other way: recorded while the simulator was paused. */
function patterns(): Node[] {
    const hatch = (id: string, d: string) => svg("pattern", { id, width: 6, height: 6, patternUnits: "userSpaceOnUse" },
        svg("rect", { class: "ground", width: 6, height: 6 }), svg("path", { class: "hatch", d }));
    return [hatch("hatch-gap", "M-1 5l2 2M0 0l6 6M5 -1l2 2"), hatch("hatch-frozen", "M3 0v6")];
}
