// The moments that are marked on a flight: what fired, and what a script would have done. Each kind has its own shape.
import type { Flight } from "./flights";
import { px, svg } from "./svg";

export type MarkKind = "fired" | "would" | "miss";

export interface Mark {
    kind: MarkKind;
    /** By which pictures and tables name it: 1, s1 (the script's), m1 (missed). */
    label: string;
    /** Seconds since the first heartbeat. */
    at: number;
    /** What the cursor's line says of it. */
    said: string;
}

export function labelOf(kind: MarkKind, number: number): string {
    return { fired: "", would: "s", miss: "m" }[kind] + String(number + 1);
}

export function marksOf(flight: Flight): Mark[] {
    const fired = flight.fired.map(({ id, at }, number): Mark => ({ kind: "fired", label: labelOf("fired", number), at, said: id }));
    const { trial } = flight;
    if (!trial) return fired;
    const would = trial.fired.map(({ id, at }, number): Mark =>
        ({ kind: "would", label: labelOf("would", number), at, said: `script: ${id}` }));
    const missed = trial.missed.flatMap(({ id, at, words }, number): Mark[] => at === undefined ? []
        : [{ kind: "miss", label: labelOf("miss", number), at, said: `script missed ${id}: ${words}` }]);
    return [...fired, ...would, ...missed];
}

/** A flag on the place, a hollow diamond around it, or a cross through it, in the flight's colour. */
export function shape(kind: MarkKind, place: number, x: number, y: number): SVGElement {
    const [left, top] = [px(x), px(y)];
    if (kind === "fired") return svg("path", { class: `flag fill${place % 4}`, d: `M${left} ${top}l-5 -9h10z` });
    const d = kind === "would" ? `M${px(x - 6)} ${top}l6 -6l6 6l-6 6z` : `M${px(x - 5)} ${px(y - 5)}l10 10m0 -10l-10 10`;
    return svg("path", { class: `${kind} ink${place % 4}`, d });
}
