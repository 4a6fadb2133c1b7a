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

/** The language of that text, where the script tells it. */
export function languageOfText(trigger: ScriptTrigger): string | undefined {
    const { language } = trigger.action ?? {};
    return typeof language === "string" && language !== "" ? language : undefined;
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
