// The saved situations, to be loaded.
import { html } from "../plot/svg";
import type { Lesson } from "./lesson";
import { button, part } from "./parts";
import type { Question } from "./question";
import type { Say } from "./texts";

export class Situations {
    private readonly list = html("ul", { class: "rows" });
    private shown = "";
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly question: Question) {
        this.element = part("situations", say("situations"), this.list, button(say("reload"), () => void this.look()));
    }

    async look(): Promise<void> {
        const flights = await this.lesson.situations();
        if (flights === undefined) return;
        // Rows that stay as they are keep the focus.
        const content = JSON.stringify(flights);
        if (content === this.shown) return;
        this.shown = content;
        if (flights.length === 0) {
            this.list.replaceChildren(html("li", {}, this.say("noSituations")));
            return;
        }
        this.list.replaceChildren(...flights.map(flight => html("li", {}, html("span", {}, flight.name),
            button(this.say("load"), () => void this.load(flight.name, flight.path),
                { "aria-label": `${flight.name}: ${this.say("load")}` }))));
    }

    private async load(name: string, path: string): Promise<void> {
        if (await this.question.ask(this.say("loadReally", name))) await this.lesson.act(name, "load_flight", { path });
    }
}
