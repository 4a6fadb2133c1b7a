// What fired, and what a script would have done, as tables; each row leads to its moment.
import type { Fired, Flight } from "./flights";
import { labelOf } from "./marks";
import { valueFor } from "./summary";
import { html } from "./svg";
import { clockText, elapsedText } from "./times";
import { say } from "./words";

const MOST_ROWS = 500;

type Show = (at: number) => void;

/** `of` says which flight's it is, where there are several. */
export function firedTable(flight: Flight, of: string, show: Show): HTMLElement {
    const rows = flight.fired.slice(0, MOST_ROWS).map((fired, number) => html("tr", {},
        html("td", {}, labelOf("fired", number)), ...timeCells(flight, fired.at, show),
        html("td", { class: "id" }, fired.id), html("td", { class: "id" }, fired.action), ...heightCells(flight, fired.at)));
    return section(say("Triggers that fired") + of,
        [say("No."), say("After"), "UTC", say("Trigger"), say("Action"), ...heights()], rows, flight.fired.length);
}

/** Of a flight that has a trial. */
export function trialTable(flight: Flight, of: string, show: Show): HTMLElement {
    const { script, fired, missed } = flight.trial!;
    const row = (label: string, id: string, action: string, said: string, at?: number) => html("tr", {},
        html("td", {}, label), ...timeCells(flight, at, show), html("td", { class: "id" }, id), html("td", { class: "id" }, action),
        html("td", { class: "words" }, said), ...heightCells(flight, at));
    const rows = [
        ...fired.slice(0, MOST_ROWS).map((one, number) => row(labelOf("would", number), one.id, one.action,
            `would have fired; ${recordedOf(one, flight)}`, one.at)),
        ...missed.slice(0, MOST_ROWS).map((one, number) => row(labelOf("miss", number), one.id, "\u2013",
            `would not have fired: ${one.words}`, one.at)),
    ];
    return section(`What the script ${script} would have done${of}`,
        ["Mark", say("After"), "UTC", say("Trigger"), say("Action"), "Outcome", ...heights()], rows, fired.length + missed.length);
}

const heights = () => [say("Altitude, ft"), say("Above ground, ft")];

/** What the recording has of the same trigger. */
function recordedOf(one: Fired, flight: Flight): string {
    const recorded = flight.fired.find((fired) => fired.id === one.id);
    return recorded ? `fired in the recording after ${elapsedText(recorded.at)}` : "did not fire in the recording";
}

function timeCells(flight: Flight, at: number | undefined, show: Show): HTMLElement[] {
    if (at === undefined) return [html("td", {}, "\u2013"), html("td", {}, "\u2013")];
    const go = html("button", { type: "button", title: say("Show this moment") }, elapsedText(at));
    go.addEventListener("click", () => show(at));
    return [html("td", {}, go), html("td", {}, flight.start === undefined ? "\u2013" : clockText(flight.start + at))];
}

function heightCells(flight: Flight, at: number | undefined): HTMLElement[] {
    return ["alt_ft", "agl_ft"].map((key) =>
        html("td", { class: "number" }, at === undefined ? "\u2013" : valueFor(flight, key, at, 0)));
}

function section(title: string, names: string[], rows: HTMLElement[], all: number): HTMLElement {
    const head = html("tr", {}, ...names.map((name) => html("th", { scope: "col" }, name)));
    const more = all - rows.length;
    return html("section", { class: "fired" }, html("h2", {}, title),
        html("div", { class: "scroll" }, html("table", {}, html("thead", {}, head), html("tbody", {}, ...rows))),
        ...(more > 0 ? [html("p", {}, say("and {0} more", more))] : []));
}
