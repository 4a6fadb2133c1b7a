// Putting the aircraft somewhere, and into an attitude.
import { html } from "../plot/svg";
import type { Lesson } from "./lesson";
import { button, numberField, numberIn, part } from "./parts";
import type { Question } from "./question";
import { LATITUDE, LONGITUDE } from "./readings";
import type { Say, TextKey } from "./texts";

interface NumberWanted {
    key: TextKey;
    least: number;
    most: number;
    usual: string;
}

const place: NumberWanted[] = [
    { key: "latitude", least: -90, most: 90, usual: "" },
    { key: "longitude", least: -180, most: 180, usual: "" },
];
const attitude: NumberWanted[] = [
    { key: "pitch", least: -90, most: 90, usual: "0" },
    { key: "bank", least: -180, most: 180, usual: "0" },
    { key: "speed", least: 0, most: 1000, usual: "100" },
    { key: "throttleRatio", least: 0, most: 100, usual: "50" },
];

export class PlacePart {
    private readonly inputs = new Map<TextKey, HTMLInputElement>();
    private readonly complaint = html("p", { class: "amiss", role: "status" });
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly question: Question) {
        const fields = (wanted: NumberWanted[]) => wanted.map(one => {
            const { row, input } = numberField(`place-${one.key}`, say(one.key), one.usual);
            this.inputs.set(one.key, input);
            return row;
        });
        this.element = part("place", say("place"), html("div", { class: "fields" }, ...fields(place)),
            html("p", { class: "buttons" }, button(say("here"), () => this.takePlace()),
                button(say("move"), () => void this.move())),
            html("div", { class: "fields" }, ...fields(attitude)), html("p", { class: "buttons" }, button(say("apply"), () => void this.apply())), this.complaint);
    }

    private takePlace(): void {
        const { present } = this.lesson;
        const [lat, lon] = [present[LATITUDE], present[LONGITUDE]];
        const isKnown = lat !== undefined && lon !== undefined;
        this.complaint.textContent = isKnown ? "" : this.say("noPosition");
        if (!isKnown) return;
        this.inputs.get("latitude")!.value = lat.toFixed(5);
        this.inputs.get("longitude")!.value = lon.toFixed(5);
    }

    /** Absent, and told, where one of them is out of its range. */
    private numbers(wanted: NumberWanted[]): number[] | undefined {
        const found = wanted.map(one => numberIn(this.inputs.get(one.key)!));
        const wrong = wanted.find((one, at) => !(found[at] >= one.least && found[at] <= one.most));
        this.complaint.textContent = wrong === undefined ? "" : this.say("outOfRange", this.say(wrong.key), wrong.least, wrong.most);
        if (wrong !== undefined) this.inputs.get(wrong.key)!.focus();
        return wrong === undefined ? found : undefined;
    }

    private async move(): Promise<void> {
        const found = this.numbers(place);
        if (found === undefined) return;
        const [lat, lon] = found;
        if (!await this.question.ask(this.say("moveReally", lat, lon))) return;
        await this.lesson.act(this.say("move"), "move_to_preserving_agl", { lat, lon });
    }

    private async apply(): Promise<void> {
        const found = this.numbers(attitude);
        if (found === undefined) return;
        const [pitch_deg, bank_deg, ias_kts, percent] = found;
        if (!await this.question.ask(this.say("applyReally", pitch_deg, bank_deg, ias_kts, percent))) return;
        await this.lesson.act(this.say("apply"), "apply_attitude", { pitch_deg, bank_deg, ias_kts, throttle: percent / 100 });
    }
}
