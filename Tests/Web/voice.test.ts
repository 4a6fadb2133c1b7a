import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { languageOfText } from "../../web/page/script";
import { Voice } from "../../web/page/voice";

class FakeUtterance {
    lang = "";
    onerror: (event: { error: string }) => void = () => {};
    constructor(readonly text: string) {}
}
Object.assign(globalThis, { SpeechSynthesisUtterance: FakeUtterance });

class FakeSpeech extends EventTarget {
    voices: object[] = [{}];
    spoken: FakeUtterance[] = [];
    cancelled = 0;
    getVoices = () => this.voices;
    speak(utterance: FakeUtterance): void {
        this.spoken.push(utterance);
    }
    cancel(): void {
        ++this.cancelled;
        for (const utterance of this.spoken) utterance.onerror({ error: "canceled" });
    }
}

const voiceOf = (speech: FakeSpeech | undefined) => new Voice("de", speech as unknown as SpeechSynthesis | undefined);

test("texts are read in their language, or the page's, while the switch is on", () => {
    const speech = new FakeSpeech();
    const voice = voiceOf(speech);
    voice.speak("Zu früh.");
    voice.turnOn("An.");
    voice.speak("Landeklappen?");
    voice.speak("Turn base.", "en-GB");
    voice.speak("");
    deepEqual(speech.spoken.map(one => [one.text, one.lang]), [["An.", "de"], ["Landeklappen?", "de"], ["Turn base.", "en-GB"]]);
    voice.turnOff();
    equal(speech.cancelled, 1);
    voice.speak("Zu spät.");
    equal(speech.spoken.length, 3);
});

test("what the browser does not read is told, what was stopped is not", () => {
    const speech = new FakeSpeech();
    const voice = voiceOf(speech);
    const silences: string[] = [];
    voice.onSilence = why => silences.push(why);
    voice.turnOn("An.");
    voice.speak("Landeklappen?");
    speech.spoken[1].onerror({ error: "not-allowed" });
    voice.turnOff();
    deepEqual(silences, ["not-allowed"]);
});

test("voices may come later, or never", () => {
    const speech = new FakeSpeech();
    speech.voices = [];
    const voice = voiceOf(speech);
    let told = 0;
    voice.onVoices = () => { ++told; };
    equal(voice.isThere, false);
    speech.voices = [{}];
    speech.dispatchEvent(new Event("voiceschanged"));
    equal(voice.isThere, true);
    equal(told, 1);
    equal(voiceOf(undefined).isThere, false);
    voiceOf(undefined).turnOn("An.");
});

test("a script tells the language of its texts or leaves it to the page", () => {
    const trigger = { id: "a", condition_kind: "after_start", condition: {}, action_kind: "speak", action: { text: "x" } };
    equal(languageOfText(trigger), undefined);
    equal(languageOfText({ ...trigger, action: { text: "x", language: "en-GB" } }), "en-GB");
    equal(languageOfText({ ...trigger, action: { text: "x", language: 1 } }), undefined);
});
