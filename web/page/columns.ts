// The samples of a recording in columns: one number a sample, NaN where it is not known.
import type { TrackSample } from "../client/messages";
import { isGapBefore } from "./runs";

/** Beyond it a number is nothing that an aircraft does, and no pixel either. */
const LARGEST = 1e9;

/** The keys of a sample whose values are of a type. */
type KeyOf<T> = { [K in keyof TrackSample]-?: TrackSample[K] extends T | undefined ? K : never }[keyof TrackSample];
export type Lever = KeyOf<number[]>;

/** Quicker than `Float64Array.from`, which a day's recording would take a second for. */
export function column(count: number, value: (place: number) => number): Float64Array {
    const result = new Float64Array(count);
    for (let i = 0; i < count; ++i) result[i] = value(i);
    return result;
}

/** Up to where time begins again, or leaves all bounds. */
export function drawnSamples(samples: readonly TrackSample[]): readonly TrackSample[] {
    const end = samples.findIndex(({ elapsed_s }, i) =>
        Math.abs(elapsed_s) >= LARGEST || (i > 0 && elapsed_s < samples[i - 1].elapsed_s));
    return end < 0 ? samples : samples.slice(0, end);
}

export class Columns {
    readonly at: Float64Array;

    constructor(private readonly samples: readonly TrackSample[]) {
        this.at = column(samples.length, i => samples[i].elapsed_s);
    }

    /** What is beyond `largest` is not known either. */
    number(key: KeyOf<number>, largest = LARGEST): Float64Array {
        return this.each(sample => known(sample[key], largest));
    }

    onOff(key: KeyOf<boolean>): Float64Array {
        return this.each(sample => (sample[key] === undefined ? NaN : Number(sample[key])));
    }

    /** The simulator says 0 before it says what the altimeter shows. */
    altitude(): Float64Array {
        const result = this.number("alt_ft");
        let isTold = false;
        for (let i = 0; i < result.length; ++i) {
            if (i > 0 && isGapBefore(this.at, i)) isTold = false;
            if (Number.isNaN(result[i])) continue;
            isTold ||= result[i] !== 0;
            if (!isTold) result[i] = NaN;
        }
        return result;
    }

    /** A column for each engine; a single one where in each sample all engines agree. */
    engines(lever: Lever, most: number): Float64Array[] {
        let count = 0;
        let doAgree = true;
        for (const { [lever]: values = [] } of this.samples) {
            count = Math.max(count, values.length);
            doAgree &&= values.every(value => value === values[0]);
        }
        return Array.from({ length: Math.min(count, doAgree ? 1 : most) }, (_, engine) =>
            this.each(sample => known(sample[lever]?.[engine], LARGEST)));
    }

    private each(value: (sample: TrackSample) => number): Float64Array {
        return column(this.samples.length, i => value(this.samples[i]));
    }
}

function known(value: number | undefined, largest: number): number {
    return value !== undefined && Math.abs(value) <= largest ? value : NaN;
}
