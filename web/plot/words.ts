// What the plot says, and how it writes numbers. English stands where it is said; other languages are tables.
import type { PlotText } from "./german";

export type { PlotText };

export interface Language {
    texts: { [Text in PlotText]: string };
    /** What stands between thousands, and before decimals. */
    thousands: string;
    point: string;
}

let language: Language | undefined;

/** For all that is said from now on. */
export function speak(other: Language): void {
    language = other;
}

/** A text with what stands for {0}, {1}… */
export function say(text: PlotText, ...arguments_: (string | number)[]): string {
    return (language?.texts[text] ?? text).replace(/\{(\d)\}/g, (_, place) => String(arguments_[place]));
}

/** `{0}` of `many` is the number. */
export function count(number: number, one: PlotText, many: PlotText, ...further: string[]): string {
    return say(number === 1 ? one : many, numberText(number, 0), ...further);
}

export function numberText(value: number, decimals: number): string {
    const rounded = value.toFixed(decimals);
    const plain = Number(rounded) === 0 ? rounded.replace("-", "") : rounded;
    const [whole, fraction] = plain.split(".");
    const grouped = whole.replace("-", "\u2212").replace(/\B(?=(\d{3})+$)/g, language?.thousands ?? ",");
    return fraction === undefined ? grouped : grouped + (language?.point ?? ".") + fraction;
}

/** As short as it can be, and without thousands. */
export function shortText(value: number): string {
    return String(value).replace(".", language?.point ?? ".");
}
