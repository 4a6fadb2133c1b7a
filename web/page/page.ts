// The lesson page: one lesson, and the parts that show it.
import { html } from "../plot/svg";
import { ActionBar } from "./actionBar";
import { Controls } from "./controls";
import { DatarefsPart } from "./datarefsPart";
import { parseFailures } from "./failures";
import { FlightPart } from "./flightPart";
import { Header } from "./header";
import { Instruments } from "./instruments";
import { Lesson } from "./lesson";
import { TrackMap } from "./map";
import { nightSwitch } from "./night";
import { PlacePart } from "./place";
import { Question } from "./question";
import { RecordingPart } from "./recordingPart";
import { ScriptPart } from "./scriptPart";
import { Situations } from "./situations";
import { keepNames, keepPassword, keptNames, keptPassword } from "./store";
import { type Language, languageOf, type Say, speakerOf } from "./texts";

async function showFailures(controls: Controls, say: Say, language: Language): Promise<void> {
    const text = await fetch("failures.json").then(answer => answer.text()).catch(() => undefined);
    if (text === undefined) return;
    try {
        controls.showFailures(parseFailures(text, say, language));
    } catch (error) {
        controls.showFailures({ failures: [], complaints: [(error as Error).message] });
    }
}

function open(root: HTMLElement): void {
    const language = languageOf(navigator.languages);
    const say = speakerOf(language);
    document.documentElement.lang = language;
    const lesson = new Lesson(`ws://${location.host}/`, keptPassword());
    const question = new Question(say);

    const main = html("main", {});
    const flight = new FlightPart(lesson, say, main);
    const instruments = new Instruments(say);
    const map = new TrackMap(say);
    const script = new ScriptPart(lesson, say, language);
    const recording = new RecordingPart(lesson, say, question, () => void flight.show());
    const bar = new ActionBar(lesson, say, () => void recording.record(), () => {
        flight.close();
        script.open();
    });
    const header = new Header(lesson, say, keptPassword() !== undefined, keepPassword, [bar.clock, nightSwitch(say)]);
    const controls = new Controls(lesson, say);
    const situations = new Situations(lesson, say, question);
    const place = new PlacePart(lesson, say, question);
    const datarefs = new DatarefsPart(lesson, say, keptNames(), keepNames);

    lesson.onLink = link => {
        showValues();
        root.classList.toggle("apart", link !== "paired");
        root.classList.toggle("locked", link === "refused");
        if (link !== "paired") return;
        flight.fetch();
        void situations.look();
        void showFailures(controls, say, language);
    };
    const showValues = () => {
        header.show();
        bar.show();
        instruments.show(lesson.present);
        map.show(lesson.present);
        datarefs.show();
    };
    lesson.onSimulator = showValues;
    lesson.onOutcome = outcome => header.tell(outcome);
    lesson.onRecording = isAnother => {
        script.show(isAnother);
        recording.show(isAnother);
        bar.show();
    };
    lesson.onValues = showValues;
    // That nothing comes any more nobody tells.
    setInterval(() => {
        if (lesson.values.isQuiet) showValues();
    }, 1_000);
    lesson.values.onNames = () => datarefs.show();
    const look = () => {
        lesson.lookNow();
        script.lookForVoice();
    };
    for (const event of ["online", "focus", "pageshow"]) addEventListener(event, look);
    for (const event of ["visibilitychange", "resume"]) document.addEventListener(event, look);

    // In this order on a phone, beside each other where there is room.
    main.append(html("div", {}, instruments.element, script.element),
        html("div", {}, map.element, recording.element, controls.element),
        html("div", {}, situations.element, place.element, datarefs.element));
    const footer = html("footer", {}, html("p", {}, say("install")), header.forget);
    root.append(header.element, header.pairing, main, flight.element, footer, bar.element, question.element);
    header.show();
    lesson.start();
}

open(document.getElementById("page")!);
