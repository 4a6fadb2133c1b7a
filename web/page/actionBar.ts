// What a thumb reaches: recording, pause, script.
import { html } from "../plot/svg";
import type { Lesson } from "./lesson";
import { button, durationText, setText } from "./parts";
import { PAUSED } from "./readings";
import type { Say } from "./texts";

const PAUSE = "sim/operation/pause_toggle";

export class ActionBar {
    private readonly recording: HTMLButtonElement;
    private readonly pausing: HTMLButtonElement;
    private readonly script: HTMLButtonElement;
    /** How long it has recorded; not told aloud, as it changes every second. */
    readonly clock = html("p", { id: "clock", hidden: "" });
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, record: () => void, openScript: () => void) {
        this.recording = button(say("record"), () => {
            if (lesson.isRunning) void lesson.stop(say("stop"));
            else record();
        }, { id: "record" });
        this.pausing = button(say("pause"), () => void lesson.act(this.pausing.textContent!, "run_command", { name: PAUSE }),
            { id: "pause" });
        this.script = button(say("script"), openScript, { id: "to-script" });
        this.element = html("nav", { id: "bar", "aria-label": say("actions") }, this.recording, this.pausing, this.script);
        this.show();
    }

    show(): void {
        const { lesson, say } = this;
        const isPaired = lesson.link === "paired";
        const isPaused = lesson.present[PAUSED] === 1;
        setText(this.recording, say(lesson.isRunning ? "stop" : "record"));
        this.recording.classList.toggle("running", lesson.isRunning);
        this.recording.disabled = !isPaired;
        setText(this.pausing, say(isPaused ? "resume" : "pause"));
        this.pausing.classList.toggle("paused", isPaused);
        this.pausing.disabled = !isPaired || lesson.simulator.state !== "flight";
        this.script.disabled = !isPaired;
        const { samples } = lesson.recording;
        this.clock.hidden = !lesson.isRunning;
        setText(this.clock, durationText(samples.length === 0 ? 0 : samples[samples.length - 1].elapsed_s));
    }
}
