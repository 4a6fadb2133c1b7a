// The page in words: what a screen reader reads, and what stands under a printed picture.
import type { Flight, ScriptTrial, Stretch } from "./flights";
import { valueAt } from "./lines";
import { elapsedText, spokenTime } from "./times";
import { count, numberText, say } from "./words";

function counted(number: number, one: string, many = `${one}s`): string {
    return number === 1 ? `one ${one}` : `${numberText(number, 0)} ${many}`;
}

function listed(stretches: Stretch[]): string {
    const shown = stretches.slice(0, 5).map(([from, to]) => say("{0} to {1}", elapsedText(from), elapsedText(to)));
    return shown.join(", ") + (stretches.length > shown.length ? ", \u2026" : "");
}

export function startText(flight: Flight): string {
    if (flight.start === undefined) return say("start unknown");
    const [day, time] = new Date(flight.start * 1000).toISOString().slice(0, 19).split("T");
    return say("{0}-{1}-{2} {3} UTC", ...day.split("-"), time);
}

export function summaryOf(flight: Flight): string {
    const parts = [`${startText(flight)}. ${say("Lasted {0}", spokenTime(flight.seconds))}`];
    if (flight.distance_nm !== undefined) parts.push(say("{0} nautical miles over ground", numberText(flight.distance_nm, 1)));
    if (flight.highest_ft !== undefined) parts.push(say("highest {0} feet indicated", numberText(flight.highest_ft, 0)));
    parts.push(flight.fired.length === 0 ? say("no trigger fired")
        : count(flight.fired.length, "one trigger fired", "{0} triggers fired"));
    let result = parts.join("; ") + ".";
    const { gaps, frozen } = flight;
    if (gaps.length > 0) {
        result += " " + count(gaps.length, "Nothing was recorded during one gap ({1}).",
            "Nothing was recorded during {0} gaps ({1}).", listed(gaps));
    }
    if (frozen.length > 0) {
        result += " " + count(frozen.length, "The simulator was paused once ({1}).",
            "The simulator was paused {0} times ({1}).", listed(frozen));
    }
    if (flight.grades.length > 0) result += ` ${gradesText(flight.grades)}`;
    return flight.trial ? `${result} ${trialText(flight.trial)}` : result;
}

function gradesText(grades: { title: string; verdict: string }[]): string {
    const met = grades.filter(({ verdict }) => verdict === "met").length;
    const others = grades.filter(({ verdict }) => verdict !== "met").map(({ title, verdict }) => `${title}: ${verdict}`);
    const sum = `Of ${counted(grades.length, "tolerance")} ${numberText(met, 0)} met`;
    return others.length === 0 ? `${sum}.` : `${sum} (${others.join("; ")}).`;
}

function trialText({ script, fired, missed }: ScriptTrial): string {
    const result = `With the script ${script} ${fired.length === 0 ? "no trigger" : counted(fired.length, "trigger")} would have fired`;
    if (missed.length === 0) return `${result}, all that it has.`;
    const shown = missed.slice(0, 5).map(({ id, words }) => `${id}: ${words}`);
    return `${result}, ${numberText(missed.length, 0)} would not (${shown.join("; ")}${missed.length > 5 ? "; \u2026" : ""}).`;
}

/** A value at a moment for a table, or a dash. */
export function valueFor(flight: Flight, key: string, moment: number, decimals: number): string {
    const line = flight.lines.get(key)?.[0];
    const value = line && valueAt(line, moment);
    return value === undefined ? "\u2013" : numberText(value, decimals);
}
