// The page: one window of time over all strips, one cursor through all of them and the track.
import { Cursor } from "./cursor";
import { alignmentChoice, choosableEntry, flightEntry, tablesOf } from "./entries";
import type { Flight } from "./flights";
import { keyOf } from "./key";
import { Pointing } from "./pointing";
import { cursorLine, RecordedStrip } from "./recorded";
import { letterOf, linesOf, Strip, STRIPS, Window, xOf } from "./strips";
import { startText } from "./summary";
import { html, picture, px, svg, text } from "./svg";
import { timeTicks, zeroOf } from "./times";
import { TimeWindow } from "./timeWindow";
import { toolbarOf } from "./toolbar";
import { TrackView } from "./track";
import { say } from "./words";

/** How many strips are drawn at once when the page is opened. */
const SEEN_FIRST = 2;

export class Page {
    private readonly strips: Strip[];
    private readonly recorded = new RecordedStrip();
    private readonly bottom = html("div", { class: "holder" });
    private readonly remark = html("p", { class: "remark" });
    private readonly slider = html("div", {
        class: "strips", role: "slider", tabindex: 0, "aria-label": say("Moment of the flight"), "aria-valuemin": 0,
        "aria-describedby": "keys",
    });
    private readonly time: TimeWindow;
    private readonly cursor: Cursor;
    private readonly pointing: Pointing;
    private readonly track: TrackView;
    private cursorLines: SVGElement[] = [];
    private isDrawAsked = false;
    private isOpened = false;

    constructor(private readonly flights: Flight[], private readonly root: HTMLElement) {
        this.strips = STRIPS.filter((kind) => flights.some((flight) => linesOf(flight, kind).length > 0))
            .map((kind) => new Strip(kind, flights));
        this.track = new TrackView(flights, () => this.askDraw());
        this.time = new TimeWindow(flights, this.slider, () => this.askDraw());
        this.cursor = new Cursor(this.slider, this.time, this.isSingle);
        this.pointing = new Pointing(this.time, this.cursor, (moment, isKept) => this.setCursor(moment, isKept));
        this.build();
        this.pointing.listen(this.slider, this.track);
        new ResizeObserver(() => this.resize()).observe(this.slider);
        this.resize();
    }

    get title(): string {
        const { flights } = this;
        return this.isSingle ? say("Recorded flight, {0}", startText(flights[0])) : `${flights.length} recorded flights`;
    }

    private get isSingle(): boolean {
        return this.flights.length === 1;
    }

    // What the page has, once.

    private build(): void {
        const { flights } = this;
        this.slider.append(this.recorded.element, ...this.strips.map((strip) => strip.element), this.bottom);
        this.root.append(
            html("h1", {}, this.title),
            html("section", { class: "flights", "aria-label": say("Summary") }, ...this.entries()),
            html("h2", {}, say("Ground track")),
            this.track.isEmpty ? html("p", {}, say("No position was recorded."))
                : html("figure", {}, this.trackTools(), this.track.element),
            html("h2", {}, say("Over time")),
            html("div", { class: "sticky" }, this.timeTools(), this.cursor.element),
            this.remark,
            ...keyOf(flights),
            html("p", { id: "keys", class: "hint" }, say("Point at a moment, or take the arrow keys;"), " ",
                say("+ and \u2212 zoom, as do two fingers and the wheel with Ctrl; 0 shows the whole flight.")),
            this.slider,
            ...tablesOf(flights, (place, at) => this.showMoment(place, at)));
    }

    private entries(): HTMLElement[] {
        if (this.isSingle) return [flightEntry(this.flights[0])];
        return this.flights.map((flight, place) => choosableEntry(flight, place, (isShown) => {
            this.time.isShown[place] = isShown;
            this.askDraw();
        }));
    }

    private timeTools(): HTMLElement {
        const { time } = this;
        const tools = this.pointing.tools();
        if (time.alignments.length < 2) return tools;
        tools.append(alignmentChoice(time.alignments, (alignment) => {
            time.alignment = alignment;
            this.cursor.moment = undefined;
            time.showWhole();
        }));
        return tools;
    }

    private trackTools(): HTMLElement {
        const { track } = this;
        const tool = (label: string, name: string, zoom: () => void) => ({ label, name, act: () => {
            zoom();
            this.askDraw();
        } });
        return toolbarOf(say("Part of the track"), [
            tool("+", say("Zoom into the track"), () => track.zoomBy(2)),
            tool("\u2212", say("Zoom out of the track"), () => track.zoomBy(0.5)),
            tool(say("Whole"), say("The whole track"), () => track.reset()),
        ]);
    }

    // What people do.

    private showMoment(place: number, at: number): void {
        const zero = zeroOf(this.flights[place], this.time.alignment);
        if (zero !== undefined) this.setCursor(at - zero, true);
        this.slider.scrollIntoView({ block: "nearest" });
    }

    /** Brought into sight where it `isKept`. */
    private setCursor(moment: number, isKept = false): void {
        this.cursor.moment = moment;
        const { from, to } = this.time.window();
        if (isKept && (moment < from || moment > to)) {
            const half = (to - from) / 2;
            this.time.showRange(moment - half, moment + half);
        } else {
            this.drawCursor();
        }
    }

    // What is drawn.

    private resize(): void {
        const width = Math.floor(this.slider.clientWidth);
        if (width === this.time.width || width === 0) return;
        this.track.resize(width, Math.round(Math.min(width * 0.75, 480)), this.flights);
        this.time.resize(width);
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
        const { width } = this.time;
        const window = this.time.window();
        const drawn = this.time.drawn();
        const ticks = timeTicks(window.from, window.to, (window.right - window.left) / 75);
        const strips = this.isOpened ? this.strips : this.strips.slice(0, SEEN_FIRST);
        for (const strip of strips) strip.draw(drawn, window, width, ticks);
        if (!this.isOpened) this.drawRestSoon();
        const upper = this.recorded.draw(drawn, window, width, this.axis(window, ticks, 12), this.isSingle);
        const lower = cursorLine(0, 4);
        this.bottom.replaceChildren(picture(width, 20, this.axis(window, ticks, 15), lower));
        this.cursorLines = [upper, lower];
        this.track.draw(drawn, [window.from, window.to], this.isSingle);
        const left = this.flights.filter((flight) => zeroOf(flight, this.time.alignment) === undefined);
        this.remark.textContent = left.length === 0 ? ""
            : `Without that trigger, and therefore not drawn: ${left.map((flight) => letterOf(this.flights.indexOf(flight))).join(", ")}.`;
        const [first, last] = this.time.whole();
        this.slider.setAttribute("aria-valuemin", first.toFixed(1));
        this.slider.setAttribute("aria-valuemax", last.toFixed(1));
        this.slider.dataset.from = window.from.toFixed(2);
        this.slider.dataset.to = window.to.toFixed(2);
        this.drawCursor();
    }

    private axis(window: Window, ticks: number[], y: number): Node {
        return svg("g", {}, ...ticks.map((tick) =>
            text(px(xOf(window, tick)), y, this.time.timeText(tick), { class: "tick", "text-anchor": "middle" })));
    }

    /** What stands farther down is drawn when what stands above can be seen: slow machines open a page in half the time. */
    private drawRestSoon(): void {
        for (const strip of this.strips.slice(SEEN_FIRST)) strip.keepPlace(this.time.width);
        requestAnimationFrame(() => setTimeout(() => {
            this.isOpened = true;
            this.draw();
        }));
    }

    private drawCursor(): void {
        const window = this.time.window();
        const drawn = this.time.drawn();
        const { moment } = this.cursor;
        const isSeen = moment !== undefined && moment >= window.from && moment <= window.to;
        const x = isSeen ? xOf(window, moment) : undefined;
        for (const strip of this.strips) strip.point(x, drawn, moment);
        for (const line of this.cursorLines) {
            for (const name of ["x1", "x2"]) line.setAttribute(name, String(x === undefined ? -9 : px(x)));
        }
        this.track.point(moment, this.isSingle);
        this.cursor.say(window, drawn);
    }
}
