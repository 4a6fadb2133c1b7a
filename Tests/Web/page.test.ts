import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import { ConnectionLost, Refusal } from "../../web/client/failure";
import { headingText, readings, readingText } from "../../web/page/readings";
import { logName, logText } from "../../web/page/recordingFile";
import { parseScript, textOf, triggerStates } from "../../web/page/script";
import { simulatorAfter } from "../../web/page/simulator";
import { languageOf, speakerOf, texts, type TextKey } from "../../web/page/texts";

const say = speakerOf("en");
const reading = (key: string) => readings.find(one => one.key === key)!;

test("the simulator's state is told by what a request for a value comes to", () => {
    equal(simulatorAfter(undefined).state, "flight");
    deepEqual(simulatorAfter(new Refusal('connectionFailed("127.0.0.1:8086: Connection refused: start X-Plane")')),
        { state: "away", words: "Connection refused: start X-Plane" });
    deepEqual(simulatorAfter(new Refusal('timeout("sim/a: the simulator is at its main menu: load a flight")')),
        { state: "menu", words: "the simulator is at its main menu: load a flight" });
    equal(simulatorAfter(new Refusal('timeout("sim/a")')).state, "silent");
    equal(simulatorAfter(new Refusal('unknownDataref("sim/a")')).state, "flight");
    equal(simulatorAfter(new Refusal("timedOut")).state, "away");
    equal(simulatorAfter(new ConnectionLost()).state, "unknown");
});

test("dials are written in round numbers", () => {
    equal(readingText(reading("altitude"), { "sim/flightmodel/misc/h_ind": 1416.4 }), "1420");
    equal(readingText(reading("height"), { "sim/flightmodel/position/y_agl": 30.48 }), "100");
    equal(readingText(reading("height"), { "sim/flightmodel/position/y_agl": 1.2 }), "4");
    equal(readingText(reading("verticalSpeed"), { "sim/flightmodel/position/vh_ind_fpm": -24 }), "0");
    equal(readingText(reading("flaps"), { "sim/cockpit2/controls/flap_ratio": 0.5 }), "50");
    equal(readingText(reading("bank"), {}), "–");
    equal(headingText(0.4), "360");
    equal(headingText(359.6), "360");
    equal(headingText(7), "007");
});

test("a script is an object with triggers, or their list", () => {
    const trigger = { id: "a", condition_kind: "crosses_agl", condition: { feet: 500, climbing: false },
        action_kind: "speak", action: { text: "Low." } };
    deepEqual(parseScript(JSON.stringify([trigger]), say), { triggers: [trigger] });
    deepEqual(parseScript(JSON.stringify({ triggers: [trigger] }), say), { triggers: [trigger] });
    equal(textOf(trigger), "Low.");
    equal(textOf({ ...trigger, action: { page: 1 } }), "");
    deepEqual(triggerStates({ triggers: [trigger, { ...trigger, id: "b" }] },
        [{ trigger_id: "b", elapsed_s: 3, action_kind: "speak" }]).map(one => one.firedAt), [undefined, 3]);
    let complaint = "";
    try {
        parseScript("{}", say);
    } catch (error) {
        complaint = (error as Error).message;
    }
    equal(complaint, "it has no list “triggers”");
});

test("a recording becomes the log that the companion would have written", () => {
    const text = logText({
        samples: [{ elapsed_s: 0.5, alt_ft: 1 }, { elapsed_s: 1, alt_ft: 2 }],
        fired: [{ trigger_id: "a", elapsed_s: 0.5, action_kind: "x" }, { trigger_id: "b", elapsed_s: 1, action_kind: "x" }],
    });
    deepEqual(text.split("\n").map(line => line.slice(0, 40)), [
        '{"kind":"sample","sample":{"elapsed_s":0', '{"kind":"fired","fired":{"trigger_id":"a',
        '{"kind":"sample","sample":{"elapsed_s":1', '{"kind":"fired","fired":{"trigger_id":"b', ""]);
    equal(logName(new Date(Date.UTC(2026, 10, 16, 1, 9, 38, 700))), "session-2026-11-16T010938Z.jsonl");
});

test("both languages have all texts, with the same places for what stands in them", () => {
    equal(languageOf(["fr-FR", "de-CH", "en"]), "de");
    equal(languageOf(["fr"]), "en");
    equal(speakerOf("de")("fired", "1:02"), "ausgelöst bei 1:02");
    equal(speakerOf("en")("outOfRange", "Bank", -180, 180), "Bank: from -180 to 180");
    const places = (text: string) => (text.match(/\{\d\}/g) ?? []).sort();
    for (const key of Object.keys(texts.en) as TextKey[]) {
        ok(texts.de[key].length > 0);
        deepEqual(places(texts.de[key]), places(texts.en[key]));
    }
});
