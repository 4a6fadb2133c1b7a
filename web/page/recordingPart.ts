// The recording: begun, ended, followed, and taken along.
import { html } from "../plot/svg";
import type { RecordedFlight } from "../client/messages";
import { Awake, screenLocks } from "./awake";
import type { Lesson } from "./lesson";
import { button, durationText, part, setText } from "./parts";
import type { Question } from "./question";
import { logName, logText } from "./recordingFile";
import type { Say } from "./texts";

export class RecordingPart {
    private readonly awake = new Awake(screenLocks());
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
            this.remark, html("p", { class: "buttons" }, this.looking, this.saving, this.savingEarlier));
        this.awake.onChange = () => this.show(false);
        this.show(false);
    }

    /** Asks the person first where a recording would be forgotten. */
    async record(): Promise<void> {
        const isSure = this.lesson.recording.samples.length === 0 || await this.question.ask(this.say("recordReally"));
        if (isSure) await this.lesson.record(this.say("record"));
    }

    show(isAnother: boolean): void {
        const { recording, isRunning } = this.lesson;
        const last = recording.samples[recording.samples.length - 1];
        setText(this.state, last === undefined ? this.say("nothingRecorded")
            : this.say("samples", recording.samples.length, durationText(last.elapsed_s)));
        if (isAnother) setText(this.remark, this.say("anotherRecording"));
        else if (isRunning) setText(this.remark, this.say(this.awake.isAwake ? "awake" : "notAwake"));
        this.saving.disabled = this.looking.disabled = last === undefined;
        this.savingEarlier.hidden = this.lesson.earlier === undefined;
        setText(this.savingEarlier, this.say("earlier", this.lesson.earlier?.recorded.samples.length ?? 0));
        this.awake.want(isRunning);
    }
}

function save(recorded: RecordedFlight, began: Date): void {
    const url = URL.createObjectURL(new Blob([logText(recorded)], { type: "application/jsonl" }));
    html("a", { href: url, download: logName(began) }).click();
    setTimeout(() => URL.revokeObjectURL(url), 60_000);
}
