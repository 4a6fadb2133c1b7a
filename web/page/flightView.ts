// The plot of a flight within the page; loaded apart from it, once there is time.
import type { Flight } from "../plot/flights";
import { german } from "../plot/german";
import { Page } from "../plot/page";
import { html } from "../plot/svg";
import { speak } from "../plot/words";

if (document.documentElement.lang === "de") speak(german);

/** Draws into an element of its own, apart from the page's styles. */
export function showFlight(host: HTMLElement, flight: Flight, style: string): void {
    const root = host.attachShadow({ mode: "open" });
    const rules = new CSSStyleSheet();
    rules.replaceSync(style);
    root.adoptedStyleSheets = [rules];
    const sheet = html("div", { class: "sheet" });
    root.append(sheet);
    new Page([flight], sheet);
}
