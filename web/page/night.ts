// Red alone, for eyes that are used to the dark.
import { button } from "./parts";
import type { Say } from "./texts";

/** The browser's own bars, where they take a colour from the page. */
const BARS = "#000000";

/** The switch for it; `keep` is told of each change. */
export function nightSwitch(say: Say, isNight: boolean, keep: (isNight: boolean) => void): HTMLButtonElement {
    const bars = [...document.querySelectorAll<HTMLMetaElement>('meta[name="theme-color"]')];
    const byDay = bars.map(meta => meta.content);
    const result = button(say("night"), () => {
        be(!document.documentElement.classList.contains("night"));
        keep(document.documentElement.classList.contains("night"));
    }, { id: "night" });
    function be(night: boolean): void {
        document.documentElement.classList.toggle("night", night);
        result.setAttribute("aria-pressed", String(night));
        bars.forEach((meta, at) => {
            meta.content = night ? BARS : byDay[at];
        });
    }
    be(isNight);
    return result;
}
