// What the hatches and the marks mean, where there are any.
import type { Flight } from "./flights";
import { MarkKind, shape } from "./marks";
import { html, picture, svg } from "./svg";
import { say } from "./words";

export function keyOf(flights: Flight[]): HTMLElement[] {
    const said: Node[] = [];
    const hatch = (className: string, words: string) =>
        said.push(picture(26, 12, svg("rect", { class: className, width: 26, height: 12 })), html("span", {}, words));
    const mark = (kind: MarkKind, words: string) => said.push(picture(16, 16, shape(kind, 0, 8, kind === "fired" ? 12 : 8)),
        html("span", {}, words));
    if (flights.some((one) => one.gaps.length > 0)) hatch("gap", say("nothing recorded"));
    if (flights.some((one) => one.frozen.length > 0)) hatch("frozen", say("simulator paused"));
    if (flights.some((one) => one.trial)) {
        mark("fired", "fired in the recording");
        mark("would", "the script would have fired");
        mark("miss", "the script would not have fired: the nearest moment");
    }
    return said.length > 0 ? [html("p", { class: "key" }, ...said)] : [];
}
