// Lines over time, without a page: what of them is drawn, and what they say at a moment.
import type { Line } from "./flights";

/** The first place in `sorted` that is not below `value`; its length when there is none. */
export function firstNotBelow(sorted: Float64Array, value: number): number {
    let low = 0;
    let high = sorted.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (sorted[middle] < value) low = middle + 1;
        else high = middle;
    }
    return low;
}

/**
 * The places of the points to draw from `from` to `to`, in `columns` columns of pixels: the first, the least, the
 * greatest and the last of each column and unbroken run, so that a drawn line covers the pixels that the whole one would.
 * Of what lies outside, the nearest point on either side, which a line leads to.
 */
export function visiblePoints(line: Line, from: number, to: number, columns: number): number[] {
    const { at, value, breaks } = line;
    const begin = Math.max(0, firstNotBelow(at, from) - 1);
    const end = Math.min(at.length, firstNotBelow(at, to) + 1);
    const width = (to - from) / Math.max(1, columns);
    const columnOf = (i: number) => Math.floor((at[i] - from) / width);
    const result: number[] = [];
    let i = begin;
    while (i < end) {
        const column = columnOf(i);
        const first = i;
        let least = i;
        let greatest = i;
        for (++i; i < end && !breaks[i] && columnOf(i) === column; ++i) {
            if (value[i] < value[least]) least = i;
            if (value[i] > value[greatest]) greatest = i;
        }
        let before = -1;
        for (const place of [first, Math.min(least, greatest), Math.max(least, greatest), i - 1]) {
            if (place !== before) result.push(place);
            before = place;
        }
    }
    return result;
}

/** Between two points in proportion, or, for what is on or off, as before; absent where the line is broken. */
export function valueAt(line: Line, moment: number, isSwitch = false): number | undefined {
    const { at, value, breaks } = line;
    const next = firstNotBelow(at, moment);
    if (next < at.length && at[next] === moment) return value[next];
    if (next === 0 || next === at.length || breaks[next]) return undefined;
    if (isSwitch) return value[next - 1];
    const part = (moment - at[next - 1]) / (at[next] - at[next - 1]);
    return value[next - 1] + part * (value[next] - value[next - 1]);
}

/** The least and the greatest value of all lines; absent where they have none. */
export function range(lines: Line[]): [number, number] | undefined {
    let least = Infinity;
    let greatest = -Infinity;
    for (const line of lines) {
        for (const value of line.value) {
            if (value < least) least = value;
            if (value > greatest) greatest = value;
        }
    }
    return least <= greatest ? [least, greatest] : undefined;
}
