// The lesson page: one lesson, and the parts that show it.
import { html } from "../plot/svg";
import { Controls, parseFailures } from "./controls";
import { DatarefsPart } from "./datarefsPart";
import { FlightPart } from "./flightPart";
import { Header } from "./header";
import { Instruments } from "./instruments";
import { Lesson } from "./lesson";
import { TrackMap } from "./map";
import { PlacePart } from "./place";
import { Question } from "./question";
import { RecordingPart } from "./recordingPart";
import { ScriptPart } from "./scriptPart";
import { Situations } from "./situations";
import { keepNames, keepPassword, keptNames, keptPassword } from "./store";
import { languageOf, speakerOf } from "./texts";

async function showFailures(controls: Controls): Promise<void> {
    try {
        const answer = await fetch("failures.json");
        if (answer.ok) controls.showFailures(parseFailures(await answer.text()));
    } catch {
        // A list that is none: the switches work without.
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
    const header = new Header(lesson, say, keepPassword);
    const instruments = new Instruments(say);
    const map = new TrackMap(say);
    const script = new ScriptPart(lesson, say, language);
    const recording = new RecordingPart(lesson, say, question, () => void flight.show());
    const controls = new Controls(lesson, say);
    const situations = new Situations(lesson, say, question);
    const place = new PlacePart(lesson, say, question);
    const datarefs = new DatarefsPart(lesson, say, keptNames(), keepNames);

    lesson.onLink = link => {
        header.show(link);
        root.classList.toggle("apart", link !== "paired");
        if (link !== "paired") return;
        void situations.look();
        void showFailures(controls);
    };
    lesson.onSimulator = () => header.show();
    lesson.onOutcome = outcome => header.tell(outcome);
    lesson.onRecording = isAnother => {
        script.show(isAnother);
        recording.show(isAnother);
    };
    lesson.onValues = () => {
        const { values } = lesson.values;
        header.show();
        instruments.show(values);
        map.show(values);
        datarefs.show();
    };
    lesson.values.onNames = () => datarefs.show();
    for (const event of ["online", "focus", "pageshow"]) addEventListener(event, () => lesson.lookNow());
    for (const event of ["visibilitychange", "resume"]) document.addEventListener(event, () => lesson.lookNow());

    main.append(instruments.element, map.element, script.element, recording.element, controls.element,
        situations.element, datarefs.element, place.element);
    root.append(header.element, main, flight.element, html("footer", {}, html("p", {}, say("install"))), question.element);
    header.show();
    lesson.start();
}

open(document.getElementById("page")!);
