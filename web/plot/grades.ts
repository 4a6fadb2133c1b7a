// How well each flight kept to the tolerances: a row each, with small pictures of what was judged.
import { scaleLinear } from "d3-scale";
import type { Band, Flight, Grade, GradedValue, Line } from "./flights";
import { range } from "./lines";
import { html, picture, px, svg, text } from "./svg";
import { elapsedText } from "./times";
import { numberText } from "./words";

const WIDTH = 260;
const HEIGHT = 84;
const LEFT = 46;
const TOP = 6;
const BOTTOM = HEIGHT - 18;
/** Verdicts are words first; the signs beside them are for those who look a table through. */
const SIGNS: { [verdict: string]: string } = { "met": "\u2713", "not met": "\u2717", "not judged": "?" };

/** `of` says which flight's they are, where there are several; `show` leads to a moment. */
export function gradeTable(flight: Flight, place: number, of: string, show: (at: number) => void): HTMLElement {
    const rows = flight.grades.map((grade) => {
        const pictures = grade.values.map((value) => pictureButton(grade, value, place, show));
        if (grade.took) pictures.push(html("span", { class: "graded" }, timePicture(grade.took)));
        return html("tr", {},
            html("td", { class: `verdict ${grade.verdict.replace(" ", "-")}` }, `${SIGNS[grade.verdict] ?? ""} ${grade.verdict}`),
            html("td", { class: "id" }, grade.title), html("td", { class: "words" }, grade.words),
            html("td", {}, html("div", { class: "pictures" }, ...pictures)));
    });
    const met = flight.grades.filter(({ verdict }) => verdict === "met").length;
    const head = html("tr", {}, ...["Verdict", "Tolerance", "What was found", "Judged"].map((name) =>
        html("th", { scope: "col" }, name)));
    return html("section", { class: "grades" }, html("h2", {}, `Grades${of}: ${met} of ${flight.grades.length} met`),
        html("div", { class: "scroll" }, html("table", {}, html("thead", {}, head), html("tbody", {}, ...rows))));
}

/** The places of the points that are not permitted. */
export function outside(line: Line, { least = -Infinity, most = Infinity }: Band): boolean[] {
    return Array.from(line.value, (value) => value < least || value > most);
}

function pictureButton(grade: Grade<Line>, value: GradedValue<Line>, place: number, show: (at: number) => void): HTMLElement {
    const at = grade.worst ?? value.line.at[0];
    const said = grade.worst === undefined ? "Show where this was judged" : "Show the worst moment";
    const button = html("button", { type: "button", class: "graded", title: said },
        html("span", { class: "hint" }, value.unit === "" ? value.name : `${value.name}, ${value.unit}`),
        html("span", { class: "unseen" }, `: ${said}, ${elapsedText(at)}`),
        valuePicture(grade, value, place));
    button.addEventListener("click", () => show(at));
    return button;
}

function valuePicture(grade: Grade<Line>, value: GradedValue<Line>, place: number): SVGElement {
    const { line } = value;
    const [least, greatest] = range([line]) ?? [0, 1];
    const edges = [value.least, value.most].filter((edge): edge is number => edge !== undefined);
    const low = Math.min(least, ...edges);
    const high = Math.max(greatest, ...edges);
    const margin = Math.max((high - low) * 0.1, 0.05);
    const y = scaleLinear().domain([low - margin, high + margin]).range([BOTTOM, TOP]);
    const [from, to] = [line.at[0], line.at[line.at.length - 1]];
    const x = scaleLinear().domain([from, Math.max(to, from + 1)]).range([LEFT, WIDTH - 6]);
    const [upper, lower] = [value.most === undefined ? TOP : y(value.most), value.least === undefined ? BOTTOM : y(value.least)];
    const inside: Node[] = [
        svg("rect", { class: "permitted", x: LEFT, y: px(upper), width: WIDTH - 6 - LEFT, height: Math.max(1, px(lower - upper)) }),
        ...edges.map((edge) => svg("line", { class: "limit", x1: LEFT, x2: WIDTH - 6, y1: px(y(edge)), y2: px(y(edge)) })),
        ...edges.map((edge) => text(LEFT - 4, px(y(edge)) + 4, numberText(edge, edge % 1 === 0 ? 0 : 1),
            { class: "tick", "text-anchor": "end" })),
        svg("path", { class: `line flight${place}`, d: path(line, x, y, () => true) }),
    ];
    const beyond = outside(line, value);
    inside.push(svg("path", { class: "beyond", d: path(line, x, y, (i) => beyond[i]) }));
    if (grade.worst !== undefined) {
        const worst = px(x(grade.worst));
        inside.push(svg("line", { class: "worst", x1: worst, x2: worst, y1: TOP, y2: BOTTOM }),
            svg("path", { class: "worst", d: `M${worst} ${BOTTOM}l-4 6h8z` }));
    }
    inside.push(text(LEFT, HEIGHT - 2, elapsedText(from), { class: "tick" }),
        text(WIDTH - 6, HEIGHT - 2, elapsedText(to), { class: "tick", "text-anchor": "end" }));
    return picture(WIDTH, HEIGHT, ...inside);
}

/** Of the line the points that are `drawn`. */
function path(line: Line, x: (at: number) => number, y: (value: number) => number, drawn: (i: number) => boolean): string {
    let d = "";
    let isBroken = true;
    line.at.forEach((at, i) => {
        if (line.breaks[i]) isBroken = true;
        if (!drawn(i)) {
            isBroken = true;
            return;
        }
        d += isBroken ? `M${px(x(at))} ${px(y(line.value[i]))}h.1` : `L${px(x(at))} ${px(y(line.value[i]))}`;
        isBroken = false;
    });
    return d;
}

/** How long it took, beside what is permitted. */
function timePicture({ seconds, least, most }: Band & { seconds: number }): SVGElement {
    const whole = Math.max(seconds, least ?? 0, most ?? 0, 1) * 1.1;
    const x = (at: number) => px(6 + (at / whole) * (WIDTH - 12));
    const edges = [least, most].filter((edge): edge is number => edge !== undefined);
    return picture(WIDTH, 52,
        svg("rect", { class: "permitted", x: x(least ?? 0), y: 8, width: px(x(most ?? whole) - x(least ?? 0)), height: 24 }),
        svg("path", { class: "took", d: `M${x(0)} 20H${x(seconds)}m0 -6v12` }),
        ...edges.map((edge) => svg("line", { class: "limit", x1: x(edge), x2: x(edge), y1: 4, y2: 36 })),
        ...edges.map((edge) => text(x(edge), 48, elapsedText(edge), { class: "tick", "text-anchor": "middle" })));
}
