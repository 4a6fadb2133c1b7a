// The list of failures: the companion's own, or a file that people may edit, so that what is wrong in it has to be named.
import type { Language, Say } from "./texts";

/** An entry of the file. */
export interface Failure {
    /** As the person reads it. */
    name: string;
    dataref: string;
    /** What is written: it fails now, it works. */
    fail: number;
    repair: number;
}

export interface FailureList {
    failures: Failure[];
    /** What is wrong with each entry that is none. */
    complaints: string[];
}

/** What the simulator's failure datarefs take. */
const FAILED = 6;
const WORKS = 0;
const keys = ["name", "dataref", "fail", "repair"];

/** Throws an Error for a text that is no list at all. */
export function parseFailures(text: string, say: Say, language: Language): FailureList {
    const content = JSON.parse(text) as { failures?: unknown; problem?: unknown } | null;
    const list = content?.failures;
    if (!Array.isArray(list)) throw new Error(say("noFailures"));
    // The companion's own words, where it has not taken the file.
    const result: FailureList = { failures: [], complaints: typeof content?.problem === "string" ? [content.problem] : [] };
    list.forEach((entry: unknown, place) => {
        try {
            result.failures.push(failureOf(entry, say, language));
        } catch (error) {
            result.complaints.push(say("badFailure", place + 1, (error as Error).message));
        }
    });
    return result;
}

function failureOf(entry: unknown, say: Say, language: Language): Failure {
    const { name, dataref, fail = FAILED, repair = WORKS, ...more } = (entry ?? {}) as Record<string, unknown>;
    const label = nameIn(name, language);
    if (label === undefined) throw new Error(say("badFailureName"));
    if (typeof dataref !== "string" || dataref.trim() === "") throw new Error(say("badFailureDataref", label));
    if (typeof fail !== "number") throw new Error(say("badFailureNumber", label, "fail"));
    if (typeof repair !== "number") throw new Error(say("badFailureNumber", label, "repair"));
    const [unknown] = Object.keys(more);
    if (unknown !== undefined) throw new Error(say("unknownFailureKey", label, unknown, keys.join(", ")));
    return { name: label, dataref: dataref.trim(), fail, repair };
}

/** One text, or one for each language; the first of them for a person whose language has none. */
function nameIn(name: unknown, language: Language): string | undefined {
    const names = typeof name === "string" ? [name] : typeof name === "object" && name !== null
        ? [(name as Record<string, unknown>)[language], ...Object.values(name)] : [];
    return names.find((one): one is string => typeof one === "string" && one.trim() !== "");
}
