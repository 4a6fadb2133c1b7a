// Red alone, for eyes that are used to the dark.
import { button } from "./parts";
import type { Say } from "./texts";

/** The browser's own bars, where they take a colour from the page. */
const BARS = "#000000";
/** In the address, so that it stays night when the page is loaded again, and nothing is stored for it. */
const FRAGMENT = "#night";

export function nightSwitch(say: Say): HTMLButtonElement {
    const bars = [...document.querySelectorAll<HTMLMetaElement>('meta[name="theme-color"]')];
    const byDay = bars.map(meta => meta.content);
    const result = button(say("night"), () => {
        const isNight = !document.documentElement.classList.contains("night");
        history.replaceState(null, "", isNight ? FRAGMENT : location.pathname);
        be(isNight);
    }, { id: "night" });
    function be(isNight: boolean): void {
        document.documentElement.classList.toggle("night", isNight);
        result.setAttribute("aria-pressed", String(isNight));
        bars.forEach((meta, at) => {
            meta.content = isNight ? BARS : byDay[at];
        });
    }
    be(location.hash === FRAGMENT);
    return result;
}
