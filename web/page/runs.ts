// Through which samples one line may lead without a break: those of one run.
import type { Stretch } from "../plot/flights";

/** Between two samples farther apart nobody knows what the aircraft did. */
const LONGEST_STEP = 3;
/** What stays the same to the last digit for so long was paused. */
const FROZEN_SECONDS = 5;
/** Of a sample through which no line leads. */
export const IN_NO_RUN = -1;

export const isGapBefore = (at: Float64Array, sample: number) => at[sample] - at[sample - 1] > LONGEST_STEP;

export function gapsOf(at: Float64Array): Stretch[] {
    const result: Stretch[] = [];
    for (let i = 1; i < at.length; ++i) if (isGapBefore(at, i)) result.push([at[i - 1], at[i]]);
    return result;
}

/**
 * First and last samples of the stretches in which none of the columns in `held` changed; `lat` and `lon` have to be
 * known there. What is unknown stays the same while it is.
 */
export function frozenSamples(at: Float64Array, lat: Float64Array, lon: Float64Array, held: Float64Array[]): [number, number][] {
    const isSame = (column: Float64Array, i: number) =>
        column[i] === column[i - 1] || (Number.isNaN(column[i]) && Number.isNaN(column[i - 1]));
    const stands = (i: number) => !isGapBefore(at, i) && lat[i] === lat[i - 1] && lon[i] === lon[i - 1]
        && held.every(column => isSame(column, i));
    const result: [number, number][] = [];
    let begin = 0;
    for (let i = 1; i <= at.length; ++i) {
        if (i < at.length && stands(i)) continue;
        if (at[i - 1] - at[begin] >= FROZEN_SECONDS) result.push([begin, i - 1]);
        begin = i;
    }
    return result;
}

/** No line leads across a gap, nor through a stretch in which the simulator was paused. */
export function runsOf(at: Float64Array, frozen: [number, number][]): Int32Array {
    const isBroken = new Uint8Array(at.length);
    for (let i = 1; i < at.length; ++i) isBroken[i] = isGapBefore(at, i) ? 1 : 0;
    const isPaused = new Uint8Array(at.length);
    for (const [first, last] of frozen) {
        isBroken[last] = 1;
        isPaused.fill(1, first + 1, last);
    }
    const result = new Int32Array(at.length);
    let run = 0;
    for (let i = 0; i < at.length; ++i) {
        run += isBroken[i];
        result[i] = isPaused[i] ? IN_NO_RUN : run;
    }
    return result;
}

/** A run ends as well where a value is not known. */
export function runsOfKnown(runs: Int32Array, values: Float64Array): Int32Array {
    const result = new Int32Array(runs.length).fill(IN_NO_RUN);
    let run = 0;
    for (let i = 0; i < runs.length; ++i) {
        if (runs[i] === IN_NO_RUN || Number.isNaN(values[i])) continue;
        const goesOn = i > 0 && result[i - 1] !== IN_NO_RUN && runs[i - 1] === runs[i];
        if (!goesOn) ++run;
        result[i] = run;
    }
    return result;
}

/** The samples that are in runs, and which of them begin one. */
export function drawnOf(runs: Int32Array): { samples: Int32Array; breaks: Uint8Array } {
    let count = 0;
    for (const run of runs) if (run !== IN_NO_RUN) ++count;
    const samples = new Int32Array(count);
    const breaks = new Uint8Array(count);
    let place = 0;
    for (let i = 0; i < runs.length; ++i) {
        if (runs[i] === IN_NO_RUN) continue;
        breaks[place] = place === 0 || runs[i] !== runs[samples[place - 1]] ? 1 : 0;
        samples[place++] = i;
    }
    return { samples, breaks };
}
