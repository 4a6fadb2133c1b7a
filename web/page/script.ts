// A script on the page: what its triggers say, and which have fired.
import type { FiredTriggerEvent, LoadScriptRequest, ScriptTrigger } from "../client/messages";
import type { Say } from "./texts";

/** Throws an Error that says why not. What is wrong within a trigger the companion says. */
export function parseScript(text: string, say: Say): LoadScriptRequest {
    const content = JSON.parse(text) as unknown;
    const triggers = Array.isArray(content) ? content : (content as { triggers?: unknown } | null)?.triggers;
    if (!Array.isArray(triggers)) throw new Error(say("noTriggers"));
    return { triggers: triggers as ScriptTrigger[] };
}

/** What a trigger has to say to people: the text of its action, or what the action is. */
export function textOf(trigger: ScriptTrigger): string {
    const { text } = trigger.action ?? {};
    return typeof text === "string" ? text : "";
}

export interface TriggerState {
    trigger: ScriptTrigger;
    /** Seconds of the recording; undefined while it waits. */
    firedAt: number | undefined;
}

export function triggerStates(script: LoadScriptRequest, fired: readonly FiredTriggerEvent[]): TriggerState[] {
    const times = new Map(fired.map(event => [event.trigger_id, event.elapsed_s]));
    return script.triggers.map(trigger => ({ trigger, firedAt: times.get(trigger.id) }));
}

/** Speaks texts one after the other by the browser's voice. */
export class Voice {
    isOn = false;

    constructor(private readonly language: string) {}

    static get isThere(): boolean {
        return "speechSynthesis" in globalThis;
    }

    speak(text: string): void {
        if (!this.isOn || !Voice.isThere || text === "") return;
        const utterance = new SpeechSynthesisUtterance(text);
        utterance.lang = this.language;
        speechSynthesis.speak(utterance);
    }

    /** Browsers want the first word to follow a touch. */
    wake(): void {
        if (Voice.isThere) speechSynthesis.speak(new SpeechSynthesisUtterance(""));
    }

    stop(): void {
        if (Voice.isThere) speechSynthesis.cancel();
    }
}
