import test from "node:test";
import { equal, ok } from "node:assert/strict";
import protocol from "../../docs/protocol.md";
import type { ScriptTrigger } from "../../web/client/messages";
import { conditionText } from "../../web/page/conditions";
import { speakerOf } from "../../web/page/texts";

const english = speakerOf("en");

function trigger(condition_kind: string, condition: ScriptTrigger["condition"]): ScriptTrigger {
    return { id: "a", condition_kind, condition, action_kind: "speak", action: {} };
}

/** The kinds of the protocol's table, each with a condition that has all that it needs. */
const table = protocol.slice(protocol.indexOf("| `condition_kind` | Needs |")).split("\n\n")[0];
const documented = table.split("\n").slice(2).map(row => {
    const [, kind, needs] = row.split("|").map(cell => cell.trim().replaceAll("`", ""));
    const values: Record<string, string | number | boolean> = { text: "RIDGE", number: 2.5, "true or false": true };
    const pairs = needs.split("; ").map(need => need.split(", "));
    return trigger(kind, Object.fromEntries(pairs.map(([key, type]) => [key, values[type]])));
});

test("each kind of condition of the protocol has words, in both languages", () => {
    equal(documented.length, 6);
    for (const language of ["en", "de"] as const) {
        const say = speakerOf(language);
        const seen = new Set<string>();
        for (const one of documented) {
            const said = conditionText(one, say, language);
            ok(!said.includes(say("incompleteCondition", "")) && !/[_{}]|undefined/.test(said));
            for (const value of Object.values(one.condition)) {
                ok(said.includes({ string: "RIDGE", number: language === "de" ? "2,5" : "2.5" }[typeof value as string] ?? ""));
            }
            seen.add(said);
        }
        equal(seen.size, documented.length);
    }
});

test("a condition that lacks something, or has it of another kind, is shown as one that never holds", () => {
    for (const one of documented) {
        for (const key of Object.keys(one.condition)) {
            const { [key]: _, ...rest } = one.condition;
            for (const condition of [rest, { ...rest, [key]: null }]) {
                const said = conditionText(trigger(one.condition_kind, condition), english, "en");
                ok(said.startsWith(english("incompleteCondition", one.condition_kind)));
            }
        }
    }
    equal(conditionText(trigger("toString", {}), english, "en"), "never fires, for its condition lacks something: toString");
});

test("conditions are told with their units", () => {
    const said = (kind: string, condition: ScriptTrigger["condition"], language: "en" | "de" = "en") =>
        conditionText(trigger(kind, condition), speakerOf(language), language);
    equal(said("crosses_agl", { feet: 500, climbing: false }), "descending through 500 ft above ground");
    equal(said("crosses_altitude", { feet: 12000, climbing: true }, "de"), "steigend durch 12000 ft angezeigt");
    equal(said("reaches_fix", { fix: "ridge", within_nm: 0.25 }, "de"), "höchstens 0,25 NM von ridge");
    equal(said("after_trigger", { after_trigger_id: "{0}", seconds: 1e-3 }), "0.001 s after “{0}”");
});
