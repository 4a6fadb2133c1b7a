// The plot of a flight within the page; loaded when somebody asks for it.
import type { Flight } from "../plot/flights";
import { german } from "../plot/german";
import { Page } from "../plot/page";
import { html } from "../plot/svg";
import { speak } from "../plot/words";

if (document.documentElement.lang === "de") speak(german);

/** Draws into an element of its own, apart from the page's styles. */
export function showFlight(host: HTMLElement, flight: Flight, style: string): void {
    const root = host.shadowRoot ?? host.attachShadow({ mode: "open" });
    const link = html("link", { rel: "stylesheet", href: style });
    const sheet = html("div", { class: "sheet" });
    root.replaceChildren(link, sheet);
    // Its size is needed to draw it.
    link.addEventListener("load", () => new Page([flight], sheet));
}
