// The dials: numbers to be read at arm's length, around the attitude.
import { html } from "../plot/svg";
import type { Values } from "../client/connection";
import { AttitudeDial } from "./attitude";
import { part, setText } from "./parts";
import { BANK, GEAR_HANDLE, PITCH, readings, readingText } from "./readings";
import type { Say } from "./texts";

export class Instruments {
    private readonly numbers = new Map<string, HTMLElement>();
    private readonly gear = html("dd", {});
    private readonly dial = new AttitudeDial();
    readonly element: HTMLElement;

    constructor(private readonly say: Say) {
        const list = html("dl", { class: "dials" });
        for (const reading of readings) {
            const number = html("span", {});
            this.numbers.set(reading.key, number);
            list.append(html("div", { "data-reading": reading.key },
                html("dt", {}, say(reading.key), " ", html("small", {}, reading.unit)), html("dd", {}, number)));
        }
        list.append(html("div", { "data-reading": "gear" }, html("dt", {}, say("gear")), this.gear));
        this.element = part("instruments", say("instruments"), html("div", { class: "panel" }, this.dial.element, list));
    }

    show(values: Values): void {
        for (const reading of readings) {
            const number = this.numbers.get(reading.key)!;
            const text = readingText(reading, values);
            setText(number, text);
            number.classList.toggle("long", text.length > 4);
        }
        const handle = values[GEAR_HANDLE];
        setText(this.gear, handle === undefined ? "–" : this.say(handle > 0.5 ? "gearDown" : "gearUp"));
        this.dial.show(values[PITCH], values[BANK]);
    }
}
