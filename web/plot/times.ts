// Moments and how they are written; flights laid over each other.
import type { Flight } from "./flights";
import { count } from "./words";

const STEPS = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400];

/** Round moments from `from` to `to`, at most about `wanted` of them. */
export function timeTicks(from: number, to: number, wanted: number): number[] {
    const least = (to - from) / Math.max(1, wanted);
    const step = STEPS.find((one) => one >= least) ?? Math.ceil(least / 86400) * 86400;
    const result = [];
    for (let tick = Math.ceil(from / step) * step; tick <= to; tick += step) result.push(tick);
    return result;
}

function twoDigits(number: number): string {
    return String(number).padStart(2, "0");
}

/** 75.5 as 1:15, 3725 as 1:02:05. */
export function elapsedText(seconds: number): string {
    const whole = Math.floor(Math.abs(seconds));
    const hours = Math.floor(whole / 3600);
    const minutes = Math.floor(whole / 60) % 60;
    const sign = seconds < 0 && whole > 0 ? "\u2212" : "";
    const rest = twoDigits(whole % 60);
    return sign + (hours > 0 ? `${hours}:${twoDigits(minutes)}:${rest}` : `${minutes}:${rest}`);
}

/** A moment since 1970 as the clock shows it in UTC, 01:09:38. */
export function clockText(seconds: number): string {
    return new Date(seconds * 1000).toISOString().slice(11, 19);
}

/** For people who listen: 1 hour 2 minutes 5 seconds. */
export function spokenTime(seconds: number): string {
    const whole = Math.floor(Math.abs(seconds));
    const parts: string[] = [];
    const [hours, minutes, rest] = [Math.floor(whole / 3600), Math.floor(whole / 60) % 60, whole % 60];
    if (hours > 0) parts.push(count(hours, "{0} hour", "{0} hours"));
    if (minutes > 0) parts.push(count(minutes, "{0} minute", "{0} minutes"));
    if (rest > 0 || parts.length === 0) parts.push(count(rest, "{0} second", "{0} seconds"));
    return (seconds < 0 ? "minus " : "") + parts.join(" ");
}

/** How flights are laid over each other: by their beginnings, by the time of day, or by a trigger that fired. */
export type Alignment = { by: "start" } | { by: "clock" } | { by: "trigger"; id: string };

/** The moment of the flight that stands at zero; absent where the flight has no such moment. */
export function zeroOf(flight: Flight, alignment: Alignment): number | undefined {
    if (alignment.by === "start") return 0;
    if (alignment.by === "clock") return flight.start === undefined ? undefined : -flight.start;
    return flight.fired.find((fired) => fired.id === alignment.id)?.at;
}

/** By what these flights can be laid over each other, the triggers in the order in which they fired first. */
export function alignmentsOf(flights: Flight[]): Alignment[] {
    const result: Alignment[] = [{ by: "start" }];
    if (flights.length < 2) return result;
    if (flights.every((flight) => flight.start !== undefined)) result.push({ by: "clock" });
    const flightsWith = new Map<string, number>();
    for (const flight of flights) {
        for (const id of new Set(flight.fired.map((fired) => fired.id))) {
            flightsWith.set(id, (flightsWith.get(id) ?? 0) + 1);
        }
    }
    for (const [id, count] of flightsWith) if (count > 1) result.push({ by: "trigger", id });
    return result;
}
