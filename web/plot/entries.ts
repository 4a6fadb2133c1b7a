// What the page has for each flight: an entry at its top, and tables at its end.
import type { Flight } from "./flights";
import { gradeTable } from "./grades";
import { letterOf } from "./strips";
import { summaryOf } from "./summary";
import { html, picture, svg } from "./svg";
import { firedTable, trialTable } from "./tables";
import type { Alignment } from "./times";

/** Of a single flight. */
export function flightEntry(flight: Flight): HTMLElement {
    return html("div", {}, html("p", {}, nameOf(flight), ": ", summaryOf(flight)));
}

/** One of several, which can be hidden; `show` is told. */
export function choosableEntry(flight: Flight, place: number, show: (isShown: boolean) => void): HTMLElement {
    const key = picture(40, 10, svg("path", { class: `line flight${place}`, d: "M1 5h38" }));
    const box = html("input", { type: "checkbox", id: `flight${place}` });
    box.checked = true;
    box.addEventListener("change", () => show(box.checked));
    const label = html("label", { for: `flight${place}` }, box, key, html("b", {}, letterOf(place)), " ", nameOf(flight));
    return html("div", {}, label, html("p", {}, summaryOf(flight)));
}

function nameOf(flight: Flight): HTMLElement {
    return html("span", { class: "name" }, flight.name);
}

/** How the flights are laid over each other. */
export function alignmentChoice(alignments: Alignment[], choose: (alignment: Alignment) => void): HTMLElement {
    const choice = html("select", { id: "align" });
    alignments.forEach((alignment, index) => {
        const label = alignment.by === "start" ? "start of recording"
            : alignment.by === "clock" ? "time of day (UTC)" : `trigger ${alignment.id}`;
        choice.append(html("option", { value: index }, label));
    });
    choice.addEventListener("change", () => choose(alignments[Number(choice.value)]));
    return html("label", {}, "Laid over by ", choice);
}

/** `showMoment` is told of which flight somebody wants to see which moment. */
export function tablesOf(flights: Flight[], showMoment: (place: number, at: number) => void): HTMLElement[] {
    return flights.flatMap((flight, place) => {
        const of = flights.length === 1 ? "" : ` of flight ${letterOf(place)}`;
        const show = (at: number) => showMoment(place, at);
        return [
            ...(flight.grades.length > 0 ? [gradeTable(flight, place, of, show)] : []),
            ...(flight.fired.length > 0 ? [firedTable(flight, of, show)] : []),
            ...(flight.trial ? [trialTable(flight, of, show)] : []),
        ];
    });
}
