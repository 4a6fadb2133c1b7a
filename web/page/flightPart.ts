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

interface Plot {
    view: FlightView;
    style: string;
}

async function loadedPlot(): Promise<Plot> {
    const style = async () => {
        const answer = await fetch(asset("flight-style"));
        if (!answer.ok) throw new Error(answer.statusText);
        return answer.text();
    };
    const [view, text] = await Promise.all([import(asset("flight-view")) as Promise<FlightView>, style()]);
    return { view, style: text };
}

/** Safari has no other way to tell that nothing else is to be done. */
const whenIdle = (act: () => void) => void (globalThis.requestIdleCallback?.(act) ?? setTimeout(act, 1_000));

export class FlightPart {
    readonly element: HTMLElement;
    private readonly back: HTMLButtonElement;
    private host = html("div", {});
    private cameFrom: Element | null = null;
    private plot: Promise<Plot> | undefined;

    constructor(private readonly lesson: Lesson, private readonly say: Say, private readonly main: HTMLElement) {
        this.back = button(say("closePlot"), () => this.close());
        this.element = html("div", { id: "flight", role: "main", hidden: "" }, html("p", { class: "buttons" }, this.back), this.host);
    }

    /** While the companion is there: a flight can be looked at without it. */
    fetch(): void {
        whenIdle(() => void this.load());
    }

    async show(): Promise<void> {
        const cameFrom = document.activeElement;
        const plot = await this.load();
        if (plot === undefined) {
            this.lesson.onOutcome({ failed: this.say("plot"), words: this.say("plotLost") });
            return;
        }
        const host = this.newHost();
        this.cameFrom = cameFrom;
        this.element.hidden = false;
        this.main.hidden = true;
        document.documentElement.classList.add("plotted");
        this.back.focus();
        plot.view.showFlight(host, flightOf(this.lesson.recording, this.lesson.beganAt()), plot.style);
        scrollTo(0, 0);
    }

    close(): void {
        if (this.element.hidden) return;
        this.element.hidden = true;
        document.documentElement.classList.remove("plotted");
        this.main.hidden = false;
        this.newHost();
        if (this.cameFrom instanceof HTMLElement) this.cameFrom.focus();
        this.cameFrom = null;
    }

    /** The last one's plot is let go: nothing takes a shadow off its element. */
    private newHost(): HTMLElement {
        const host = html("div", {});
        this.host.replaceWith(host);
        this.host = host;
        return host;
    }

    /** Absent when it does not come; it is tried again then. */
    private async load(): Promise<Plot | undefined> {
        try {
            return await (this.plot ??= loadedPlot());
        } catch {
            this.plot = undefined;
            return undefined;
        }
    }
}
