// The flight, looked at on the page in place of the lesson.
import { html } from "../plot/svg";
import { flightOf } from "./flightOf";
import type { Lesson } from "./lesson";
import { button } from "./parts";
import type { Say } from "./texts";

type FlightView = typeof import("./flightView");

/** Where the view and its style are: in the head of the page, by the build. */
function asset(name: string): string {
    return document.querySelector<HTMLLinkElement>(`link[data-asset="${name}"]`)!.href;
}

export class FlightPart {
    readonly element: HTMLElement;
    private readonly back: HTMLButtonElement;
    private host = html("div", {});
    private cameFrom: Element | null = null;

    constructor(private readonly lesson: Lesson, say: Say, private readonly main: HTMLElement) {
        this.back = button(say("closePlot"), () => this.close());
        this.element = html("div", { id: "flight", role: "main", hidden: "" }, html("p", { class: "buttons" }, this.back), this.host);
    }

    async show(): Promise<void> {
        const { showFlight } = await import(asset("flight-view")) as FlightView;
        const host = html("div", {});
        this.host.replaceWith(host);
        this.host = host;
        this.cameFrom = document.activeElement;
        this.element.hidden = false;
        this.main.hidden = true;
        document.documentElement.classList.add("plotted");
        this.back.focus();
        showFlight(host, flightOf(this.lesson.recording, this.lesson.beganAt()), asset("flight-style"));
        scrollTo(0, 0);
    }

    close(): void {
        this.element.hidden = true;
        document.documentElement.classList.remove("plotted");
        this.main.hidden = false;
        this.host.replaceChildren();
        if (this.cameFrom instanceof HTMLElement) this.cameFrom.focus();
    }
}
