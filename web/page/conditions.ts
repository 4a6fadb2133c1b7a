// What a trigger waits for, in words.
import type { ScriptTrigger } from "../client/messages";
import type { Language, Say, TextKey } from "./texts";

type Words = TextKey | { climbing: TextKey; descending: TextKey };

interface Kind {
    /** In the order of the words' places. */
    needs: Record<string, "number" | "string">;
    /** Two for a kind that needs `climbing` as well. */
    words: Words;
}

const kinds = new Map(Object.entries<Kind>({
    reaches_fix: { needs: { fix: "string", within_nm: "number" }, words: "reachesFix" },
    crosses_agl: { needs: { feet: "number" }, words: { climbing: "climbsThroughAgl", descending: "descendsThroughAgl" } },
    crosses_altitude: { needs: { feet: "number" },
        words: { climbing: "climbsThroughAltitude", descending: "descendsThroughAltitude" } },
    after_gear_down: { needs: { seconds: "number" }, words: "afterGearDown" },
    after_start: { needs: { seconds: "number" }, words: "afterStart" },
    after_trigger: { needs: { after_trigger_id: "string", seconds: "number" }, words: "afterTrigger" },
}));

/** A condition that lacks something never holds; it is shown as it stands in the script. */
export function conditionText(trigger: ScriptTrigger, say: Say, language: Language): string {
    const condition = trigger.condition ?? {};
    const kind = kinds.get(trigger.condition_kind);
    const words = kind === undefined ? undefined : wordsOf(kind.words, condition.climbing);
    const isWhole = kind !== undefined && Object.entries(kind.needs).every(([key, type]) => typeof condition[key] === type);
    if (words === undefined || !isWhole) {
        const parts = Object.entries(condition).map(([key, value]) => `${key} ${value}`);
        return say("incompleteCondition", [trigger.condition_kind, ...parts].join(", "));
    }
    return say(words, ...Object.keys(kind.needs).map(key => valueText(condition[key], language)));
}

function wordsOf(words: Words, climbing: unknown): TextKey | undefined {
    if (typeof words === "string") return words;
    if (typeof climbing !== "boolean") return undefined;
    return climbing ? words.climbing : words.descending;
}

function valueText(value: unknown, language: Language): string {
    return typeof value === "number" ? value.toLocaleString(language, { useGrouping: false, maximumFractionDigits: 6 })
        : String(value);
}
