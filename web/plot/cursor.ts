// The moment that a person has chosen, in words: for those who look, and for those who listen.
import { marksOf } from "./marks";
import { Drawn, letterOf, Window } from "./strips";
import { valueFor } from "./summary";
import { html } from "./svg";
import { clockText, spokenTime } from "./times";
import type { TimeWindow } from "./timeWindow";
import { say } from "./words";

/** How near the cursor has to be to a mark, in pixels. */
const NEAR = 6;

export class Cursor {
    moment: number | undefined;
    /** What those who look read. */
    readonly element = html("output", { class: "time" });

    /** Those who listen are told by `slider`. */
    constructor(private readonly slider: HTMLElement, private readonly time: TimeWindow, private readonly isSingle: boolean) {}

    say(window: Window, drawn: Drawn[]): void {
        const { slider, moment } = this;
        if (moment === undefined) {
            this.element.textContent = "";
            slider.setAttribute("aria-valuenow", window.from.toFixed(1));
            slider.setAttribute("aria-valuetext", say("no moment chosen"));
            return;
        }
        this.element.textContent = [this.time.timeText(moment), ...this.markedAt(moment, window, drawn)].join(" \u00b7 ");
        slider.setAttribute("aria-valuenow", moment.toFixed(1));
        const values = drawn.map(({ flight, place, zero }) => {
            const altitude = valueFor(flight, "alt_ft", moment + zero, 0);
            const height = valueFor(flight, "agl_ft", moment + zero, 0);
            const lead = this.isSingle ? "" : `flight ${letterOf(place)}: `;
            return lead + say("altitude {0} feet, above ground {1} feet", altitude, height);
        });
        const when = this.time.alignment.by === "clock" ? clockText(moment) : spokenTime(moment);
        slider.setAttribute("aria-valuetext", [when, ...values].join("; "));
    }

    /** What the marks say that the cursor touches. */
    private markedAt(moment: number, window: Window, drawn: Drawn[]): string[] {
        const near = (NEAR * (window.to - window.from)) / (window.right - window.left);
        return drawn.flatMap(({ flight, place, zero }) => marksOf(flight)
            .filter((mark) => Math.abs(mark.at - zero - moment) <= near).slice(0, 3)
            .map((mark) => (this.isSingle ? "" : `${letterOf(place)} `) + mark.said));
    }
}
