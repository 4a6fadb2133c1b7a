// What the page is given, and how it is unpacked: the block of JSON that the program writes, one entry a recording.

/** A line over time as it is packed: each number is the step from the one before, in whole units. */
export interface PackedLine {
    /** Hundredths of a second since the first heartbeat. */
    at: number[];
    /** Units of `unit`. */
    value: number[];
    unit: number;
    /** The points before which the line is broken: nobody knows what lies between them and the one before. */
    breaks: number[];
}

/** The ground track, packed likewise: millionths of a degree. */
export interface PackedTrack {
    at: number[];
    lat: number[];
    lon: number[];
    breaks: number[];
}

/** A stretch of time, in seconds since the first heartbeat. */
export type Stretch = [number, number];

export interface Fired {
    id: string;
    action: string;
    /** Seconds since the first heartbeat. */
    at: number;
}

/** A trigger of a script that would not have fired. */
export interface Miss {
    id: string;
    /** Why, and how near it came, in one clause. */
    words: string;
    /** The nearest moment, where there is one. */
    at?: number;
}

/** What a script would have done, had it been loaded before the recording was started. */
export interface ScriptTrial {
    /** The script's file name. */
    script: string;
    fired: Fired[];
    missed: Miss[];
}

/** What is permitted; a limit that is absent is none. */
export interface Band {
    least?: number;
    most?: number;
}

/** A value over the part of the flight that was judged. */
export interface GradedValue<L> extends Band {
    name: string;
    unit: string;
    line: L;
}

/** How well the flight kept to a tolerance. */
export interface Grade<L> {
    title: string;
    /** "met", "not met", "not judged". */
    verdict: string;
    /** What was found, in one clause. */
    words: string;
    /** The worst moment, where there is one. */
    worst?: number;
    values: GradedValue<L>[];
    /** For a tolerance that asks how long something takes. */
    took?: Band & { seconds: number };
}

export interface PackedFlight {
    /** The recording's file name. */
    name: string;
    /** When the recording was started, as in 2026-11-16T01:09:38Z; absent when the name does not tell. */
    start?: string;
    /** Of the last sample, since the first heartbeat. */
    seconds: number;
    samples: number;
    /** Over ground, gaps not bridged. */
    distance_nm?: number;
    highest_ft?: number;
    gaps: Stretch[];
    /** While the simulator was paused. */
    frozen: Stretch[];
    /** By the recording's key; of what each engine has, one line an engine. */
    lines: { [key: string]: PackedLine[] };
    track: PackedTrack;
    fired: Fired[];
    trial?: ScriptTrial;
    /** One a tolerance, where the flight is graded. */
    grades?: Grade<PackedLine>[];
}

export interface PackedFlights {
    flights: PackedFlight[];
}

/** Points in the order of time; `breaks[i]` is 1 where no line leads to point i. */
export interface Line {
    at: Float64Array;
    value: Float64Array;
    breaks: Uint8Array;
}

export interface Track {
    at: Float64Array;
    lat: Float64Array;
    lon: Float64Array;
    breaks: Uint8Array;
}

export interface Flight extends Omit<PackedFlight, "lines" | "track" | "start" | "grades"> {
    /** Seconds since 1970, where the name tells. */
    start?: number;
    lines: Map<string, Line[]>;
    track: Track;
    grades: Grade<Line>[];
}

function summed(steps: number[], unit: number): Float64Array {
    const result = new Float64Array(steps.length);
    let sum = 0;
    for (let i = 0; i < steps.length; ++i) {
        sum += steps[i];
        result[i] = sum * unit;
    }
    return result;
}

function marked(places: number[], count: number): Uint8Array {
    const result = new Uint8Array(count);
    for (const place of places) result[place] = 1;
    return result;
}

function unpackLine(line: PackedLine): Line {
    return {
        at: summed(line.at, 0.01),
        value: summed(line.value, line.unit),
        breaks: marked(line.breaks, line.at.length),
    };
}

export function unpack(packed: PackedFlight): Flight {
    const lines = new Map<string, Line[]>();
    for (const key of Object.keys(packed.lines)) lines.set(key, packed.lines[key].map(unpackLine));
    const { at, lat, lon, breaks } = packed.track;
    return {
        ...packed,
        start: packed.start === undefined ? undefined : Date.parse(packed.start) / 1000,
        lines,
        grades: (packed.grades ?? []).map((grade) => ({
            ...grade, values: grade.values.map((value) => ({ ...value, line: unpackLine(value.line) })),
        })),
        track: {
            at: summed(at, 0.01),
            lat: summed(lat, 1e-6),
            lon: summed(lon, 1e-6),
            breaks: marked(breaks, at.length),
        },
    };
}
