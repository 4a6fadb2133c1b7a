// The page in words: what a screen reader reads, and what stands under a printed picture.
import type { Flight, ScriptTrial, Stretch } from "./flights";
import { valueAt } from "./lines";
import { numberText } from "./strips";
import { elapsedText, spokenTime } from "./times";

function count(number: number, one: string, many = `${one}s`): string {
    return number === 1 ? `one ${one}` : `${numberText(number, 0)} ${many}`;
}

function listed(stretches: Stretch[]): string {
    const shown = stretches.slice(0, 5).map(([from, to]) => `${elapsedText(from)} to ${elapsedText(to)}`);
    return shown.join(", ") + (stretches.length > shown.length ? ", \u2026" : "");
}

export function startText(flight: Flight): string {
    if (flight.start === undefined) return "start unknown";
    return new Date(flight.start * 1000).toISOString().replace("T", " ").slice(0, 19) + " UTC";
}

export function summaryOf(flight: Flight): string {
    const parts = [`${startText(flight)}. Lasted ${spokenTime(flight.seconds)}`];
    if (flight.distance_nm !== undefined) parts.push(`${numberText(flight.distance_nm, 1)} nautical miles over ground`);
    if (flight.highest_ft !== undefined) parts.push(`highest ${numberText(flight.highest_ft, 0)} feet indicated`);
    parts.push(flight.fired.length === 0 ? "no trigger fired" : `${count(flight.fired.length, "trigger")} fired`);
    let result = parts.join("; ") + ".";
    if (flight.gaps.length > 0) {
        result += ` Nothing was recorded during ${count(flight.gaps.length, "gap")} (${listed(flight.gaps)}).`;
    }
    if (flight.frozen.length > 0) {
        const times = flight.frozen.length === 1 ? "once" : `${numberText(flight.frozen.length, 0)} times`;
        result += ` The simulator was paused ${times} (${listed(flight.frozen)}).`;
    }
    if (flight.grades.length > 0) result += ` ${gradesText(flight.grades)}`;
    return flight.trial ? `${result} ${trialText(flight.trial)}` : result;
}

function gradesText(grades: { title: string; verdict: string }[]): string {
    const met = grades.filter(({ verdict }) => verdict === "met").length;
    const others = grades.filter(({ verdict }) => verdict !== "met").map(({ title, verdict }) => `${title}: ${verdict}`);
    const sum = `Of ${count(grades.length, "tolerance")} ${numberText(met, 0)} met`;
    return others.length === 0 ? `${sum}.` : `${sum} (${others.join("; ")}).`;
}

function trialText({ script, fired, missed }: ScriptTrial): string {
    const result = `With the script ${script} ${fired.length === 0 ? "no trigger" : count(fired.length, "trigger")} would have fired`;
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
