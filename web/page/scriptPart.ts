// The script: loaded from a file, its triggers waiting or fired, its texts shown and spoken.
import { html } from "../plot/svg";
import { conditionText } from "./conditions";
import { MISSED_MS, type Lesson } from "./lesson";
import { durationText, part, setText } from "./parts";
import { languageOfText, parseScript, textOf, triggerStates } from "./script";
import type { Language, Say } from "./texts";
import { Voice } from "./voice";

const MOST_CARDS = 12;

export class ScriptPart {
    private readonly remark: HTMLElement;
    private readonly triggers = html("ol", { class: "triggers" });
    private readonly cards = html("div", { id: "cards", role: "log", "aria-live": "polite", "aria-labelledby": "script-heading" });
    private readonly voice: Voice;
    private readonly speak = html("input", { id: "speak", type: "checkbox", "aria-describedby": "voice" });
    private readonly aboutVoice = html("p", { id: "voice", role: "status" });
    private readonly file: HTMLInputElement;
    private readonly heading: HTMLElement;
    private told = 0;
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly language: Language) {
        this.voice = new Voice(language, globalThis.speechSynthesis);
        this.voice.onVoices = () => this.lookForVoice();
        this.voice.onSilence = why => {
            const isForbidden = why === "not-allowed";
            if (isForbidden) {
                this.speak.checked = false;
                this.voice.turnOff();
            }
            setText(this.aboutVoice, isForbidden ? say("voiceNotAllowed") : say("voiceSilent", why));
        };
        this.remark = html("p", { role: "status" }, say("noScript"));
        this.file = html("input", { id: "script-file", type: "file", accept: ".json,application/json" });
        this.file.addEventListener("change", () => {
            const [chosen] = this.file.files ?? [];
            if (chosen !== undefined) void this.load(chosen);
            this.file.value = "";
        });
        this.speak.addEventListener("change", () => {
            setText(this.aboutVoice, "");
            if (this.speak.checked) this.voice.turnOn(say("greeting"));
            else this.voice.turnOff();
        });
        this.element = part("script", say("script"), this.cards,
            html("p", {}, html("label", { for: "script-file", class: "button" }, say("chooseScript")), this.file),
            html("p", {}, html("label", { for: "speak", class: "switch" }, this.speak, " ", say("speakTexts"))), this.aboutVoice,
            this.remark, this.triggers);
        this.heading = this.element.querySelector("h2")!;
        this.heading.tabIndex = -1;
        this.lookForVoice();
    }

    /** To where the script is, or to the choice of one. */
    open(): void {
        this.element.scrollIntoView({ block: "start" });
        this.heading.focus({ preventScroll: true });
        if (this.lesson.script === undefined) this.file.click();
    }

    /** What fired since it was last shown becomes a card, and is spoken. */
    show(isAnother: boolean): void {
        const { script, recording } = this.lesson;
        if (isAnother || recording.fired.length < this.told) {
            this.told = 0;
            this.cards.replaceChildren();
        }
        for (const event of recording.fired.slice(this.told)) {
            const trigger = script?.triggers.find(one => one.id === event.trigger_id);
            const text = trigger === undefined ? "" : textOf(trigger);
            const isMissed = this.isMissed(event.elapsed_s);
            // Nothing is read that is no longer true, nor all that was missed at once.
            if (!isMissed && event.action_kind === "speak") this.voice.speak(text, trigger && languageOfText(trigger));
            this.cards.prepend(html("p", { class: isMissed ? "card missed" : "card", "data-action": event.action_kind },
                html("small", {}, `${durationText(event.elapsed_s)} · ${event.trigger_id}${isMissed ? ` · ${this.say("missed")}` : ""}`),
                text === "" ? event.action_kind : text));
        }
        while (this.cards.childElementCount > MOST_CARDS) this.cards.lastElementChild?.remove();
        // By which a keyboard scrolls them.
        if (this.cards.childElementCount > 0) this.cards.tabIndex = 0;
        else this.cards.removeAttribute("tabindex");
        this.told = recording.fired.length;
        this.showTriggers();
    }

    private isMissed(elapsed: number): boolean {
        const { isLate, recording: { samples } } = this.lesson;
        return isLate || (samples.length > 0 && samples[samples.length - 1].elapsed_s - elapsed > MISSED_MS / 1_000);
    }

    /** Not every browser tells when its voices have come: to be called also when the page is looked at again. */
    lookForVoice(): void {
        const { isThere } = this.voice;
        if (isThere !== this.speak.disabled) return;
        this.speak.disabled = !isThere;
        setText(this.aboutVoice, isThere ? "" : this.say("noVoice"));
    }

    private showTriggers(): void {
        const { script, firedOfScript } = this.lesson;
        if (script === undefined) return;
        const states = triggerStates(script, firedOfScript);
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
