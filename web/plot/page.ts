// The page: one window of time over all strips, one cursor through all of them and the track.
import type { Flight } from "./flights";
import { Gestures } from "./gestures";
import { gradeTable } from "./grades";
import { keyOf } from "./key";
import { marksOf } from "./marks";
import { cursorLine, RecordedStrip } from "./recorded";
import { Drawn, letterOf, linesOf, Strip, STRIPS, Window, xOf } from "./strips";
import { startText, summaryOf, valueFor } from "./summary";
import { html, picture, px, svg, text } from "./svg";
import { firedTable, trialTable } from "./tables";
import { Alignment, alignmentsOf, clockText, elapsedText, spokenTime, timeTicks, zeroOf } from "./times";
import { toolbarOf } from "./toolbar";
import { TrackView } from "./track";

const LEFT = 52;
const RIGHT = 24;
/** How many strips are drawn at once when the page is opened. */
const SEEN_FIRST = 2;

export class Page {
    private readonly alignments: Alignment[];
    private alignment: Alignment = { by: "start" };
    private readonly shown: boolean[];
    private cursor: number | undefined;
    private width = 0;

    private readonly strips: Strip[];
    private readonly recorded = new RecordedStrip();
    private readonly bottom = html("div", { class: "holder" });
    private readonly time = html("output", { class: "time" });
    private readonly remark = html("p", { class: "remark" });
    private readonly slider = html("div", {
        class: "strips", role: "slider", tabindex: 0, "aria-label": "Moment of the flight", "aria-valuemin": 0,
        "aria-describedby": "keys",
    });
    private readonly track: TrackView;
    private readonly gestures: Gestures;
    private cursorLines: SVGElement[] = [];
    private isDrawAsked = false;
    private isOpened = false;

    constructor(private readonly flights: Flight[], private readonly root: HTMLElement) {
        this.alignments = alignmentsOf(flights);
        this.shown = flights.map(() => true);
        this.strips = STRIPS.filter((kind) => flights.some((flight) => linesOf(flight, kind).length > 0))
            .map((kind) => new Strip(kind, flights));
        this.track = new TrackView(flights, () => this.askDraw());
        this.gestures = new Gestures(this.slider, "x", () => this.askDraw());
        this.build();
        this.listen();
        new ResizeObserver(() => this.resize()).observe(this.slider);
        this.resize();
    }

    get title(): string {
        const { flights } = this;
        return this.isSingle ? `Recorded flight, ${startText(flights[0])}` : `${flights.length} recorded flights`;
    }

    private get isSingle(): boolean {
        return this.flights.length === 1;
    }

    private drawn(): Drawn[] {
        const result: Drawn[] = [];
        this.flights.forEach((flight, place) => {
            const zero = zeroOf(flight, this.alignment);
            if (this.shown[place] && zero !== undefined) result.push({ flight, place, zero });
        });
        return result;
    }

    /** All that there is to see, in aligned seconds. */
    private whole(): [number, number] {
        let from = Infinity;
        let to = -Infinity;
        for (const flight of this.flights) {
            const zero = zeroOf(flight, this.alignment);
            if (zero === undefined) continue;
            from = Math.min(from, -zero);
            to = Math.max(to, flight.seconds - zero);
        }
        return from < to ? [from, to] : [0, 1];
    }

    private window(): Window {
        const [from, to] = this.whole();
        const { transform } = this.gestures;
        const [left, right] = [LEFT, Math.max(LEFT + 1, this.width - RIGHT)];
        const perPixel = (to - from) / (right - left);
        const moment = (x: number) => from + (transform.invertX(x) - left) * perPixel;
        return { from: moment(left), to: moment(right), left, right };
    }

    private timeText(moment: number): string {
        return this.alignment.by === "clock" ? clockText(moment) : elapsedText(moment);
    }

    // What the page has, once.

    private build(): void {
        const { flights } = this;
        const toolbar = toolbarOf("Part of the flight", [
            { label: "+", name: "Zoom in", act: () => this.zoomBy(2) },
            { label: "\u2212", name: "Zoom out", act: () => this.zoomBy(0.5) },
            { label: "\u25c0", name: "Earlier", act: () => this.move(-0.5) },
            { label: "\u25b6", name: "Later", act: () => this.move(0.5) },
            { label: "Whole", name: "The whole flight", act: () => this.showWhole() },
        ]);
        if (this.alignments.length > 1) toolbar.append(this.alignmentChoice());
        const place = toolbarOf("Part of the track", [
            { label: "+", name: "Zoom into the track", act: () => this.zoomTrack(2) },
            { label: "\u2212", name: "Zoom out of the track", act: () => this.zoomTrack(0.5) },
            { label: "Whole", name: "The whole track", act: () => this.zoomTrack(undefined) },
        ]);
        this.slider.append(this.recorded.element, ...this.strips.map((strip) => strip.element), this.bottom);
        this.root.append(
            html("h1", {}, this.title),
            html("section", { class: "flights", "aria-label": "Summary" }, ...flights.map((one, at) => this.flightEntry(one, at))),
            html("h2", {}, "Ground track"),
            this.track.isEmpty ? html("p", {}, "No position was recorded.") : html("figure", {}, place, this.track.element),
            html("h2", {}, "Over time"),
            html("div", { class: "sticky" }, toolbar, this.time),
            this.remark,
            ...keyOf(flights),
            html("p", { id: "keys", class: "hint" },
                "Point at a moment, or take the arrow keys; + and \u2212 zoom, as do two fingers and the wheel with Ctrl; "
                + "0 shows the whole flight."),
            this.slider,
            ...this.tables());
    }

    private alignmentChoice(): HTMLElement {
        const choice = html("select", { id: "align" });
        this.alignments.forEach((alignment, index) => {
            const label = alignment.by === "start" ? "start of recording"
                : alignment.by === "clock" ? "time of day (UTC)" : `trigger ${alignment.id}`;
            choice.append(html("option", { value: index }, label));
        });
        choice.addEventListener("change", () => {
            this.alignment = this.alignments[Number(choice.value)];
            this.cursor = undefined;
            this.showWhole();
        });
        return html("label", {}, "Laid over by ", choice);
    }

    private flightEntry(flight: Flight, place: number): HTMLElement {
        const key = picture(40, 10, svg("path", { class: `line flight${place}`, d: "M1 5h38" }));
        const name = html("span", { class: "name" }, flight.name);
        if (this.isSingle) return html("div", {}, html("p", {}, name, ": ", summaryOf(flight)));
        const box = html("input", { type: "checkbox", id: `flight${place}` });
        box.checked = true;
        box.addEventListener("change", () => {
            this.shown[place] = box.checked;
            this.askDraw();
        });
        const label = html("label", { for: `flight${place}` }, box, key, html("b", {}, letterOf(place)), " ", name);
        return html("div", {}, label, html("p", {}, summaryOf(flight)));
    }

    private tables(): HTMLElement[] {
        return this.flights.flatMap((flight, place) => {
            const of = this.isSingle ? "" : ` of flight ${letterOf(place)}`;
            const show = (at: number) => this.showMoment(place, at);
            return [
                ...(flight.grades.length > 0 ? [gradeTable(flight, place, of, show)] : []),
                ...(flight.fired.length > 0 ? [firedTable(flight, of, show)] : []),
                ...(flight.trial ? [trialTable(flight, of, show)] : []),
            ];
        });
    }

    // What people do.

    private listen(): void {
        const { slider, track } = this;
        const point = (event: PointerEvent) => {
            const x = event.clientX - slider.getBoundingClientRect().left;
            const window = this.window();
            const part = (x - window.left) / (window.right - window.left);
            this.setCursor(window.from + Math.min(1, Math.max(0, part)) * (window.to - window.from));
        };
        slider.addEventListener("pointermove", point);
        slider.addEventListener("pointerdown", point);
        const pointTrack = (event: PointerEvent) => {
            const box = track.element.getBoundingClientRect();
            const moment = track.momentAt(event.clientX - box.left, event.clientY - box.top);
            if (moment !== undefined) this.setCursor(moment);
        };
        track.element.addEventListener("pointermove", pointTrack);
        track.element.addEventListener("pointerdown", pointTrack);
        slider.addEventListener("keydown", (event) => this.onKey(event));
    }

    private onKey(event: KeyboardEvent): void {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        const { from, to } = this.window();
        const step = (to - from) * (event.shiftKey ? 0.1 : 0.01);
        const [first, last] = this.whole();
        const at = this.cursor ?? from;
        const acts: { [key: string]: () => void } = {
            ArrowLeft: () => this.setCursor(Math.max(first, at - step), true),
            ArrowDown: () => this.setCursor(Math.max(first, at - step), true),
            ArrowRight: () => this.setCursor(Math.min(last, at + step), true),
            ArrowUp: () => this.setCursor(Math.min(last, at + step), true),
            Home: () => this.setCursor(first, true),
            End: () => this.setCursor(last, true),
            PageUp: () => this.move(-0.5),
            PageDown: () => this.move(0.5),
            "+": () => this.zoomBy(2),
            "=": () => this.zoomBy(2),
            "-": () => this.zoomBy(0.5),
            "0": () => this.showWhole(),
        };
        const act = acts[event.key];
        if (!act) return;
        event.preventDefault();
        act();
    }

    private showMoment(place: number, at: number): void {
        const zero = zeroOf(this.flights[place], this.alignment);
        if (zero !== undefined) this.setCursor(at - zero, true);
        this.slider.scrollIntoView({ block: "nearest" });
    }

    private setCursor(moment: number, isKept = false): void {
        this.cursor = moment;
        const { from, to } = this.window();
        if (isKept && (moment < from || moment > to)) {
            const half = (to - from) / 2;
            this.showRange(moment - half, moment + half);
        } else {
            this.drawCursor();
        }
    }

    private zoomBy(factor: number): void {
        const { from, to } = this.window();
        const isSeen = this.cursor !== undefined && this.cursor >= from && this.cursor <= to;
        const middle = isSeen ? this.cursor! : (from + to) / 2;
        this.showRange(middle - (middle - from) / factor, middle + (to - middle) / factor);
    }

    private zoomTrack(factor: number | undefined): void {
        if (factor === undefined) this.track.reset();
        else this.track.zoomBy(factor);
        this.askDraw();
    }

    /** By a part of what is shown. */
    private move(part: number): void {
        const { from, to } = this.window();
        const step = (to - from) * part;
        this.showRange(from + step, to + step);
    }

    private showWhole(): void {
        this.gestures.show(1, LEFT, LEFT);
        this.askDraw();
    }

    private showRange(from: number, to: number): void {
        const [first, last] = this.whole();
        const length = Math.min(to - from, last - first);
        const begin = Math.min(Math.max(from, first), last - length);
        const { left, right } = this.window();
        const perSecond = (right - left) / (last - first);
        this.gestures.show((last - first) / length, left + (begin - first) * perSecond, left);
        this.askDraw();
    }

    // What is drawn.

    private resize(): void {
        const width = Math.floor(this.slider.clientWidth);
        if (width === this.width || width === 0) return;
        const { from, to } = this.window();
        const hadWidth = this.width > 0;
        this.width = width;
        this.gestures.setExtent(LEFT, 0, width - RIGHT, 100);
        this.track.resize(width, Math.round(Math.min(width * 0.75, 480)), this.flights);
        if (hadWidth) this.showRange(from, to);
        this.draw();
    }

    private askDraw(): void {
        if (this.isDrawAsked) return;
        this.isDrawAsked = true;
        requestAnimationFrame(() => {
            this.isDrawAsked = false;
            this.draw();
        });
    }

    private draw(): void {
        const { width } = this;
        const window = this.window();
        const drawn = this.drawn();
        const ticks = timeTicks(window.from, window.to, (window.right - window.left) / 75);
        const strips = this.isOpened ? this.strips : this.strips.slice(0, SEEN_FIRST);
        for (const strip of strips) strip.draw(drawn, window, width, ticks);
        if (!this.isOpened) this.drawRestSoon();
        const upper = this.recorded.draw(drawn, window, width, this.axis(window, ticks, 12), this.isSingle);
        const lower = cursorLine(0, 4);
        this.bottom.replaceChildren(picture(width, 20, this.axis(window, ticks, 15), lower));
        this.cursorLines = [upper, lower];
        this.track.draw(drawn, [window.from, window.to], this.isSingle);
        const left = this.flights.filter((flight) => zeroOf(flight, this.alignment) === undefined);
        this.remark.textContent = left.length === 0 ? ""
            : `Without that trigger, and therefore not drawn: ${left.map((flight) => letterOf(this.flights.indexOf(flight))).join(", ")}.`;
        const [first, last] = this.whole();
        this.slider.setAttribute("aria-valuemin", first.toFixed(1));
        this.slider.setAttribute("aria-valuemax", last.toFixed(1));
        this.slider.dataset.from = window.from.toFixed(2);
        this.slider.dataset.to = window.to.toFixed(2);
        this.drawCursor();
    }

    private axis(window: Window, ticks: number[], y: number): Node {
        return svg("g", {}, ...ticks.map((tick) =>
            text(px(xOf(window, tick)), y, this.timeText(tick), { class: "tick", "text-anchor": "middle" })));
    }

    /** What stands farther down is drawn when what stands above can be seen: slow machines open a page in half the time. */
    private drawRestSoon(): void {
        for (const strip of this.strips.slice(SEEN_FIRST)) strip.keepPlace(this.width);
        requestAnimationFrame(() => setTimeout(() => {
            this.isOpened = true;
            this.draw();
        }));
    }

    /** What the marks say that the cursor touches. */
    private markedAt(cursor: number, window: Window, drawn: Drawn[]): string[] {
        const near = (6 * (window.to - window.from)) / (window.right - window.left);
        return drawn.flatMap(({ flight, place, zero }) => marksOf(flight)
            .filter((mark) => Math.abs(mark.at - zero - cursor) <= near).slice(0, 3)
            .map((mark) => (this.isSingle ? "" : `${letterOf(place)} `) + mark.said));
    }

    private drawCursor(): void {
        const window = this.window();
        const drawn = this.drawn();
        const { cursor } = this;
        const isSeen = cursor !== undefined && cursor >= window.from && cursor <= window.to;
        const x = isSeen ? xOf(window, cursor) : undefined;
        for (const strip of this.strips) strip.point(x, drawn, cursor);
        for (const line of this.cursorLines) {
            for (const name of ["x1", "x2"]) line.setAttribute(name, String(x === undefined ? -9 : px(x)));
        }
        this.track.point(cursor, this.isSingle);
        if (cursor === undefined) {
            this.time.textContent = "";
            this.slider.setAttribute("aria-valuenow", window.from.toFixed(1));
            this.slider.setAttribute("aria-valuetext", "no moment chosen");
            return;
        }
        this.time.textContent = [this.timeText(cursor), ...this.markedAt(cursor, window, drawn)].join(" \u00b7 ");
        this.slider.setAttribute("aria-valuenow", cursor.toFixed(1));
        const values = drawn.map(({ flight, place, zero }) => {
            const altitude = valueFor(flight, "alt_ft", cursor + zero, 0);
            const height = valueFor(flight, "agl_ft", cursor + zero, 0);
            const lead = this.isSingle ? "" : `flight ${letterOf(place)}: `;
            return `${lead}altitude ${altitude} feet, above ground ${height} feet`;
        });
        const when = this.alignment.by === "clock" ? clockText(cursor) : spokenTime(cursor);
        this.slider.setAttribute("aria-valuetext", [when, ...values].join("; "));
    }
}
