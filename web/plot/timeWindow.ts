// The part of time that is shown: how the flights are laid over each other, and what of them is zoomed to.
import type { Flight } from "./flights";
import { Gestures } from "./gestures";
import { Drawn, Window } from "./strips";
import { Alignment, alignmentsOf, clockText, elapsedText, zeroOf } from "./times";

const LEFT = 52;
const RIGHT = 24;

export class TimeWindow {
    readonly alignments: Alignment[];
    alignment: Alignment = { by: "start" };
    readonly isShown: boolean[];
    width = 0;
    private readonly gestures: Gestures;

    /** Zoomed and moved on `node`, whose width `resize` is told. */
    constructor(private readonly flights: Flight[], node: Element, private readonly changed: () => void) {
        this.alignments = alignmentsOf(flights);
        this.isShown = flights.map(() => true);
        this.gestures = new Gestures(node, "x", changed);
    }

    drawn(): Drawn[] {
        const result: Drawn[] = [];
        this.flights.forEach((flight, place) => {
            const zero = zeroOf(flight, this.alignment);
            if (this.isShown[place] && zero !== undefined) result.push({ flight, place, zero });
        });
        return result;
    }

    /** All that there is to see, in aligned seconds. */
    whole(): [number, number] {
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

    window(): Window {
        const [from, to] = this.whole();
        const { transform } = this.gestures;
        const [left, right] = [LEFT, Math.max(LEFT + 1, this.width - RIGHT)];
        const perPixel = (to - from) / (right - left);
        const moment = (x: number) => from + (transform.invertX(x) - left) * perPixel;
        return { from: moment(left), to: moment(right), left, right };
    }

    timeText(moment: number): string {
        return this.alignment.by === "clock" ? clockText(moment) : elapsedText(moment);
    }

    /** About `moment` where that is seen, else about the middle. */
    zoomBy(factor: number, moment: number | undefined): void {
        const { from, to } = this.window();
        const middle = moment !== undefined && moment >= from && moment <= to ? moment : (from + to) / 2;
        this.showRange(middle - (middle - from) / factor, middle + (to - middle) / factor);
    }

    /** By a part of what is shown. */
    move(part: number): void {
        const { from, to } = this.window();
        const step = (to - from) * part;
        this.showRange(from + step, to + step);
    }

    showWhole(): void {
        this.gestures.show(1, LEFT, LEFT);
        this.changed();
    }

    showRange(from: number, to: number): void {
        const [first, last] = this.whole();
        const length = Math.min(to - from, last - first);
        const begin = Math.min(Math.max(from, first), last - length);
        const { left, right } = this.window();
        const perSecond = (right - left) / (last - first);
        this.gestures.show((last - first) / length, left + (begin - first) * perSecond, left);
        this.changed();
    }

    /** What was shown stays. */
    resize(width: number): void {
        const { from, to } = this.window();
        const hadWidth = this.width > 0;
        this.width = width;
        this.gestures.setExtent(LEFT, 0, width - RIGHT, 100);
        if (hadWidth) this.showRange(from, to);
    }
}
