// Whether the simulator behind the companion flies, by what the companion answers.
import { ConnectionLost, Refusal } from "../client/failure";

/** flight: values come. silent: it is there and says nothing. menu: no flight is loaded. away: it is not there, or
 * lets nobody in. */
export type SimulatorState = "unknown" | "away" | "menu" | "silent" | "flight";

export interface SimulatorNews {
    state: SimulatorState;
    /** The companion's own words, where there are any: what is the matter, and what to do. */
    words: string;
}

const absent = new Set(["connectionFailed", "connectionClosed", "timedOut", "invalidResponse", "sendFailed"]);

/** What a request for a value has found: `failure` is what it threw, undefined when the value came. */
export function simulatorAfter(failure: unknown): SimulatorNews {
    if (failure === undefined) return { state: "flight", words: "" };
    if (failure instanceof ConnectionLost || !(failure instanceof Refusal)) return { state: "unknown", words: "" };
    // Behind the name of what was asked for, or the address: "…: start X-Plane 12.1.4 or later"
    const words = failure.about.replace(/^\S+: /, "");
    if (absent.has(failure.case)) return { state: "away", words };
    if (failure.case !== "timeout") return { state: "flight", words: "" };
    return failure.about.includes("load a flight") ? { state: "menu", words } : { state: "silent", words: "" };
}
