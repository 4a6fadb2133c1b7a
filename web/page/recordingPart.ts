// The recording: begun, ended, followed, and taken along.
import { html } from "../plot/svg";
import type { RecordedFlight } from "../client/messages";
import type { Lesson } from "./lesson";
import { button, durationText, part, setText } from "./parts";
import type { Question } from "./question";
import { logName, logText } from "./recordingFile";
import type { Say } from "./texts";

/** Keeps the screen on, where the browser does that. */
class WakeLock {
    private lock: WakeLockSentinel | undefined;
    private isWanted = false;

    constructor() {
        document.addEventListener("visibilitychange", () => {
            if (this.isWanted && document.visibilityState === "visible") void this.take();
        });
    }

    static get isThere(): boolean {
        return "wakeLock" in navigator;
    }

    want(isWanted: boolean): void {
        this.isWanted = isWanted;
        if (isWanted) void this.take();
        else void this.lock?.release();
    }

    private async take(): Promise<void> {
        if (!WakeLock.isThere) return;
        try {
            this.lock = await navigator.wakeLock.request("screen");
        } catch {
            // A battery that is low; the screen then goes off as it does.
        }
    }
}

export class RecordingPart {
    private readonly wakeLock = new WakeLock();
    private readonly state: HTMLElement;
    private readonly remark = html("p", { role: "status" });
    private readonly saving: HTMLButtonElement;
    private readonly looking: HTMLButtonElement;
    private readonly savingEarlier: HTMLButtonElement;
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly question: Question,
        lookAtFlight: () => void) {
        this.state = html("p", { id: "recorded" }, say("nothingRecorded"));
        this.saving = button(say("download"), () => save(lesson.recording, lesson.beganAt()));
        this.savingEarlier = button("", () => {
            if (lesson.earlier !== undefined) save(lesson.earlier.recorded, lesson.earlier.began);
        });
        this.looking = button(say("plot"), lookAtFlight);
        this.element = part("recording", say("recording"), this.state,
            html("p", { class: "buttons" }, button(say("record"), () => void this.record()),
                button(say("stop"), () => void lesson.stop(say("stop")))),
            this.remark, html("p", { class: "buttons" }, this.looking, this.saving, this.savingEarlier));
        this.show(false);
    }

    show(isAnother: boolean): void {
        const { recording, isRecording } = this.lesson;
        const last = recording.samples[recording.samples.length - 1];
        setText(this.state, last === undefined ? this.say("nothingRecorded")
            : this.say("samples", recording.samples.length, durationText(last.elapsed_s)));
        if (isAnother) setText(this.remark, this.say("anotherRecording"));
        else if (isRecording) setText(this.remark, this.say(WakeLock.isThere ? "awake" : "notAwake"));
        this.saving.disabled = this.looking.disabled = last === undefined;
        this.savingEarlier.hidden = this.lesson.earlier === undefined;
        setText(this.savingEarlier, this.say("earlier", this.lesson.earlier?.recorded.samples.length ?? 0));
        this.wakeLock.want(isRecording);
    }

    private async record(): Promise<void> {
        const isSure = this.lesson.recording.samples.length === 0 || await this.question.ask(this.say("recordReally"));
        if (isSure) await this.lesson.record(this.say("record"));
    }
}

function save(recorded: RecordedFlight, began: Date): void {
    const url = URL.createObjectURL(new Blob([logText(recorded)], { type: "application/jsonl" }));
    html("a", { href: url, download: logName(began) }).click();
    setTimeout(() => URL.revokeObjectURL(url), 60_000);
}
