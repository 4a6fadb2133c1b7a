// The script: loaded from a file, its triggers waiting or fired, its texts shown and spoken.
import { html } from "../plot/svg";
import { conditionText } from "./conditions";
import type { Lesson } from "./lesson";
import { durationText, part, setText } from "./parts";
import { parseScript, textOf, triggerStates, Voice } from "./script";
import type { Language, Say } from "./texts";

const MOST_CARDS = 5;

export class ScriptPart {
    private readonly remark: HTMLElement;
    private readonly triggers = html("ol", { class: "triggers" });
    private readonly cards = html("div", { id: "cards", role: "log", "aria-live": "polite" });
    private readonly voice: Voice;
    private readonly file: HTMLInputElement;
    private told = 0;
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly language: Language) {
        this.voice = new Voice(language);
        this.remark = html("p", { role: "status" }, say("noScript"));
        this.file = html("input", { id: "script-file", type: "file", accept: ".json,application/json" });
        this.file.addEventListener("change", () => {
            const [chosen] = this.file.files ?? [];
            if (chosen !== undefined) void this.load(chosen);
            this.file.value = "";
        });
        const speak = html("input", { id: "speak", type: "checkbox" });
        speak.addEventListener("change", () => {
            this.voice.isOn = speak.checked;
            if (speak.checked) this.voice.wake();
            else this.voice.stop();
        });
        speak.disabled = !Voice.isThere;
        this.element = part("script", say("script"), this.cards,
            html("p", {}, html("label", { for: "script-file", class: "button" }, say("chooseScript")), this.file),
            html("p", {}, html("label", { for: "speak", class: "switch" }, speak, " ", Voice.isThere ? say("speakTexts") : say("noVoice"))),
            this.remark, this.triggers);
    }

    /** To where the script is, or to the choice of one. */
    open(): void {
        this.element.scrollIntoView({ block: "start" });
        if (this.lesson.script === undefined) this.file.click();
    }

    /** What fired since it was last shown becomes a card, and is spoken. */
    show(isAnother: boolean): void {
        const { script, recording } = this.lesson;
        if (isAnother || recording.fired.length < this.told) this.told = 0;
        for (const event of recording.fired.slice(this.told)) {
            const trigger = script?.triggers.find(one => one.id === event.trigger_id);
            const text = trigger === undefined ? "" : textOf(trigger);
            // Of a recording that was under way when the page came, nothing old is spoken.
            if (this.isFresh(event.elapsed_s) && event.action_kind === "speak") this.voice.speak(text);
            this.cards.prepend(html("p", { class: "card", "data-action": event.action_kind },
                html("small", {}, `${durationText(event.elapsed_s)} · ${event.trigger_id}`), text === "" ? event.action_kind : text));
        }
        while (this.cards.childElementCount > MOST_CARDS) this.cards.lastElementChild?.remove();
        this.told = recording.fired.length;
        this.showTriggers();
    }

    private isFresh(elapsed: number): boolean {
        const { samples } = this.lesson.recording;
        return samples.length === 0 || samples[samples.length - 1].elapsed_s - elapsed < 30;
    }

    private showTriggers(): void {
        const { script, recording } = this.lesson;
        if (script === undefined) return;
        const states = triggerStates(script, recording.fired);
        if (this.triggers.childElementCount !== states.length) {
            this.triggers.replaceChildren(...states.map(({ trigger }) => html("li", {},
                html("b", {}, trigger.id), " ", html("span", {}, conditionText(trigger, this.say, this.language)), " ", html("em", {}))));
        }
        states.forEach(({ firedAt }, at) => {
            const row = this.triggers.children[at];
            row.className = firedAt === undefined ? "" : "fired";
            setText(row.querySelector("em")!, firedAt === undefined ? this.say("waiting") : this.say("fired", durationText(firedAt)));
        });
    }

    private async load(file: File): Promise<void> {
        try {
            const script = parseScript(await file.text(), this.say);
            const unresolved = await this.lesson.load(file.name, script);
            if (unresolved === undefined) return;
            this.triggers.replaceChildren();
            const fixes = unresolved.length === 0 ? "" : ` ${this.say("unresolved", unresolved.join(", "))}`;
            setText(this.remark, this.say("scriptLoaded", script.triggers.length) + fixes);
            this.showTriggers();
        } catch (error) {
            setText(this.remark, this.say("notAScript", (error as Error).message));
        }
    }
}
