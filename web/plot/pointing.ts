// How people choose a moment and a part of the time: by pointing, by keys, by buttons.
import type { Cursor } from "./cursor";
import type { TimeWindow } from "./timeWindow";
import { toolbarOf } from "./toolbar";
import type { TrackView } from "./track";
import { say } from "./words";

/** What pointers and keys do; `choose` takes a moment, and brings it into sight where it `isKept`. */
export class Pointing {
    constructor(private readonly time: TimeWindow, private readonly cursor: Cursor,
        private readonly choose: (moment: number, isKept?: boolean) => void) {}

    listen(slider: HTMLElement, track: TrackView): void {
        const point = (event: PointerEvent) => {
            const x = event.clientX - slider.getBoundingClientRect().left;
            const window = this.time.window();
            const part = (x - window.left) / (window.right - window.left);
            this.choose(window.from + Math.min(1, Math.max(0, part)) * (window.to - window.from));
        };
        slider.addEventListener("pointermove", point);
        slider.addEventListener("pointerdown", point);
        const pointTrack = (event: PointerEvent) => {
            const box = track.element.getBoundingClientRect();
            const moment = track.momentAt(event.clientX - box.left, event.clientY - box.top);
            if (moment !== undefined) this.choose(moment);
        };
        track.element.addEventListener("pointermove", pointTrack);
        track.element.addEventListener("pointerdown", pointTrack);
        slider.addEventListener("keydown", (event) => this.onKey(event));
    }

    tools(): HTMLElement {
        return toolbarOf(say("Part of the flight"), [
            { label: "+", name: say("Zoom in"), act: () => this.zoomBy(2) },
            { label: "\u2212", name: say("Zoom out"), act: () => this.zoomBy(0.5) },
            { label: "\u25c0", name: say("Earlier"), act: () => this.time.move(-0.5) },
            { label: "\u25b6", name: say("Later"), act: () => this.time.move(0.5) },
            { label: say("Whole"), name: say("The whole flight"), act: () => this.time.showWhole() },
        ]);
    }

    private zoomBy(factor: number): void {
        this.time.zoomBy(factor, this.cursor.moment);
    }

    private onKey(event: KeyboardEvent): void {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        const { time } = this;
        const { from, to } = time.window();
        const step = (to - from) * (event.shiftKey ? 0.1 : 0.01);
        const [first, last] = time.whole();
        const at = this.cursor.moment ?? from;
        const acts: { [key: string]: () => void } = {
            ArrowLeft: () => this.choose(Math.max(first, at - step), true),
            ArrowDown: () => this.choose(Math.max(first, at - step), true),
            ArrowRight: () => this.choose(Math.min(last, at + step), true),
            ArrowUp: () => this.choose(Math.min(last, at + step), true),
            Home: () => this.choose(first, true),
            End: () => this.choose(last, true),
            PageUp: () => time.move(-0.5),
            PageDown: () => time.move(0.5),
            "+": () => this.zoomBy(2),
            "=": () => this.zoomBy(2),
            "-": () => this.zoomBy(0.5),
            "0": () => time.showWhole(),
        };
        const act = acts[event.key];
        if (!act) return;
        event.preventDefault();
        act();
    }
}
