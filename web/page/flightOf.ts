// A recording that was caught up with, as the plot draws flights: what `tarnly-track plot` makes of its file.
import type { RecordedFlight, TrackSample } from "../client/messages";
import type { Flight, Line, Stretch, Track } from "../plot/flights";
import { Plane } from "../plot/ground";

/** Between two samples farther apart nobody knows what the aircraft did. */
const LONGEST_STEP = 3;
/** What stays the same to the last digit for so long was paused. */
const FROZEN_SECONDS = 5;
const MOST_ENGINES = 4;
const METRES_PER_MILE = 1852;
/** Faster than anything flies: the aircraft was put elsewhere. */
const FASTEST = 1_000;

const held = ["lat", "lon", "alt_ft", "agl_ft", "bank_deg", "pitch_deg"] as const;

/** By the recording's keys; NaN where a value is not known. */
class Columns {
    readonly at: Float64Array;
    readonly isGap: Uint8Array;

    constructor(private readonly samples: readonly TrackSample[]) {
        this.at = Float64Array.from(samples, sample => sample.elapsed_s - samples[0].elapsed_s);
        this.isGap = Uint8Array.from(samples, (_, i) =>
            i === 0 || !(this.at[i] >= this.at[i - 1] && this.at[i] - this.at[i - 1] <= LONGEST_STEP) ? 1 : 0);
    }

    of(value: (sample: TrackSample) => number | undefined): Float64Array {
        return Float64Array.from(this.samples, sample => value(sample) ?? NaN);
    }

    /** The simulator says 0 before it says what the altimeter shows. */
    altitude(): Float64Array {
        const column = this.of(sample => sample.alt_ft);
        let isTold = false;
        for (let i = 0; i < column.length; ++i) {
            if (this.isGap[i]) isTold = false;
            isTold ||= column[i] !== 0;
            if (!isTold) column[i] = NaN;
        }
        return column;
    }

    /** No line where nothing is known. */
    line(column: Float64Array): Line[] {
        const known = [...column.keys()].filter(i => !Number.isNaN(column[i]));
        if (known.length === 0) return [];
        const breaks = Uint8Array.from(known, (i, place) => {
            if (place === 0) return 1;
            for (let next = known[place - 1] + 1; next <= i; ++next) {
                if (this.isGap[next] || Number.isNaN(column[next])) return 1;
            }
            return 0;
        });
        return [{ at: Float64Array.from(known, i => this.at[i]), value: Float64Array.from(known, i => column[i]), breaks }];
    }

    /** One line where all engines always agree, else one for each of the first ones. */
    engines(values: (sample: TrackSample) => number[] | undefined): Line[] {
        const count = Math.max(0, ...this.samples.map(sample => values(sample)?.length ?? 0));
        const columns = Array.from({ length: count }, (_, engine) => this.of(sample => values(sample)?.[engine]));
        const agree = columns.every(column => column.every((value, i) => Object.is(value, columns[0][i])));
        return columns.slice(0, agree ? 1 : MOST_ENGINES).flatMap(column => this.line(column));
    }
}

function gapsOf({ at, isGap }: Columns): Stretch[] {
    return [...at.keys()].filter(i => i > 0 && isGap[i] === 1 && at[i] > at[i - 1]).map(i => [at[i - 1], at[i]]);
}

function frozenOf(samples: readonly TrackSample[], { at, isGap }: Columns): Stretch[] {
    const result: Stretch[] = [];
    let begin = 0;
    for (let i = 1; i <= samples.length; ++i) {
        const stands = i < samples.length && !isGap[i] && samples[i].lat !== undefined
            && held.every(key => samples[i][key] === samples[i - 1][key]);
        if (stands) continue;
        if (at[i - 1] - at[begin] >= FROZEN_SECONDS) result.push([at[begin], at[i - 1]]);
        begin = i;
    }
    return result;
}

/** The track, with a break where the aircraft was put elsewhere as well, and the ways up in metres. */
function trackOf(samples: readonly TrackSample[], { at, isGap }: Columns): { track: Track; metres: number } {
    const known = [...samples.keys()].filter(i => samples[i].lat !== undefined && samples[i].lon !== undefined);
    let metres = 0;
    const breaks = Uint8Array.from(known, (i, place) => {
        if (place === 0) return 1;
        const last = known[place - 1];
        const plane = new Plane(samples[last].lat!, samples[last].lon!);
        const way = Math.hypot(plane.east(samples[i].lon!), plane.north(samples[i].lat!));
        const isApart = isGap.subarray(last + 1, i + 1).includes(1);
        if (!isApart) metres += way;
        return isApart || way > FASTEST * (at[i] - at[last]) ? 1 : 0;
    });
    const column = (value: (i: number) => number) => Float64Array.from(known, value);
    return { track: { at: column(i => at[i]), lat: column(i => samples[i].lat!), lon: column(i => samples[i].lon!), breaks }, metres };
}

/** `start` in seconds since 1970. */
export function flightOf(recorded: RecordedFlight, name: string, start: number | undefined): Flight {
    const { samples } = recorded;
    const columns = new Columns(samples);
    const altitude = columns.altitude();
    const number = (key: "agl_ft" | "bank_deg" | "pitch_deg" | "flap_ratio" | "gear_ratio") =>
        columns.line(columns.of(sample => sample[key]));
    const onOff = (key: "gear_down" | "autopilot_on") =>
        columns.line(columns.of(sample => sample[key] === undefined ? undefined : Number(sample[key])));
    const { track, metres } = trackOf(samples, columns);
    const highest = altitude.reduce((most, value) => (value > most ? value : most), -Infinity);
    const first = samples.length > 0 ? samples[0].elapsed_s : 0;
    return {
        name,
        start,
        seconds: samples.length > 0 ? columns.at[samples.length - 1] : 0,
        samples: samples.length,
        distance_nm: track.at.length > 1 ? metres / METRES_PER_MILE : undefined,
        highest_ft: highest === -Infinity ? undefined : highest,
        gaps: gapsOf(columns),
        frozen: frozenOf(samples, columns),
        lines: new Map<string, Line[]>([
            ["alt_ft", columns.line(altitude)],
            ["agl_ft", number("agl_ft")],
            ["bank_deg", number("bank_deg")],
            ["pitch_deg", number("pitch_deg")],
            ["flap_ratio", number("flap_ratio")],
            ["gear_ratio", number("gear_ratio")],
            ["gear_down", onOff("gear_down")],
            ["autopilot_on", onOff("autopilot_on")],
            ["throttle_ratio", columns.engines(sample => sample.throttle_ratio)],
            ["mixture_ratio", columns.engines(sample => sample.mixture_ratio)],
            ["prop_ratio", columns.engines(sample => sample.prop_ratio)],
        ]),
        track,
        grades: [],
        fired: recorded.fired.map(event => ({ id: event.trigger_id, action: event.action_kind, at: event.elapsed_s - first })),
    };
}
