// A recording that was caught up with, as the plot draws flights: what `tarnly-track plot` makes of its file, which
// Tests/Executables/test_page_flight.py compares.
import type { FiredTriggerEvent, RecordedFlight } from "../client/messages";
import type { Fired, Flight, Line, Track } from "../plot/flights";
import { firstNotBelow } from "../plot/lines";
import { column, Columns, drawnSamples, type Lever } from "./columns";
import { canFly, greatCircleMetres } from "./greatCircle";
import { logName } from "./recordingFile";
import { drawnOf, frozenSamples, gapsOf, IN_NO_RUN, runsOf, runsOfKnown } from "./runs";

const MOST_ENGINES = 4;
const METRES_PER_MILE = 1852;

const taken = (values: Float64Array, samples: Int32Array) => column(samples.length, place => values[samples[place]]);

function lineOf(at: Float64Array, runs: Int32Array, values: Float64Array): Line {
    const { samples, breaks } = drawnOf(runsOfKnown(runs, values));
    return { at: taken(at, samples), value: taken(values, samples), breaks };
}

/** The track, with a break where the aircraft was put elsewhere as well; the ways up in miles, absent without a position. */
function trackOf(at: Float64Array, runs: Int32Array, lat: Float64Array, lon: Float64Array): { track: Track; miles?: number } {
    const known = runsOfKnown(runsOfKnown(runs, lat), lon);
    const flown = new Int32Array(known.length).fill(IN_NO_RUN);
    const position = (i: number) => ({ lat: lat[i], lon: lon[i] });
    let run = 0;
    let metres = 0;
    for (let i = 0; i < known.length; ++i) {
        if (known[i] === IN_NO_RUN) continue;
        const isFlown = i > 0 && known[i - 1] === known[i] && canFly(position(i - 1), position(i), at[i] - at[i - 1]);
        if (isFlown) metres += greatCircleMetres(position(i - 1), position(i));
        else ++run;
        flown[i] = run;
    }
    const { samples, breaks } = drawnOf(flown);
    const track = { at: taken(at, samples), lat: taken(lat, samples), lon: taken(lon, samples), breaks };
    return { track, miles: run > 0 ? metres / METRES_PER_MILE : undefined };
}

/** A trigger fired on the last sample that is not later; what fired before all of them is not drawn. */
function firedOf(events: readonly FiredTriggerEvent[], at: Float64Array): Fired[] {
    return events.flatMap(({ trigger_id, action_kind, elapsed_s }) => {
        const next = firstNotBelow(at, elapsed_s);
        const sample = at[next] === elapsed_s ? next : next - 1;
        return sample < 0 ? [] : [{ id: trigger_id, action: action_kind, at: at[sample] }];
    });
}

export function flightOf(recorded: RecordedFlight, began: Date): Flight {
    const samples = drawnSamples(recorded.samples);
    const columns = new Columns(samples);
    const { at } = columns;
    const lat = columns.number("lat", 90);
    const lon = columns.number("lon", 180);
    const altitude = columns.altitude();
    const [agl, bank, pitch] = [columns.number("agl_ft"), columns.number("bank_deg"), columns.number("pitch_deg")];
    const frozen = frozenSamples(at, lat, lon, [altitude, agl, bank, pitch]);
    const runs = runsOf(at, frozen);
    const line = (values: Float64Array) => [lineOf(at, runs, values)].filter(one => one.at.length > 0);
    // An engine without values stays in its place, as an empty line.
    const engines = (lever: Lever) => {
        const all = columns.engines(lever, MOST_ENGINES);
        return all.length === 1 ? line(all[0]) : all.map(values => lineOf(at, runs, values));
    };
    const { track, miles } = trackOf(at, runs, lat, lon);
    const highest = altitude.reduce((most, value) => (value > most ? value : most), -Infinity);
    return {
        name: logName(began),
        start: Math.floor(began.getTime() / 1000),
        seconds: samples.length > 0 ? at[samples.length - 1] : 0,
        samples: samples.length,
        distance_nm: miles,
        highest_ft: highest === -Infinity ? undefined : highest,
        gaps: gapsOf(at),
        frozen: frozen.map(([first, last]) => [at[first], at[last]]),
        lines: new Map<string, Line[]>([
            ["alt_ft", line(altitude)],
            ["agl_ft", line(agl)],
            ["bank_deg", line(bank)],
            ["pitch_deg", line(pitch)],
            ["flap_ratio", line(columns.number("flap_ratio"))],
            ["gear_ratio", line(columns.number("gear_ratio"))],
            ["gear_down", line(columns.onOff("gear_down"))],
            ["autopilot_on", line(columns.onOff("autopilot_on"))],
            ["throttle_ratio", engines("throttle_ratio")],
            ["mixture_ratio", engines("mixture_ratio")],
            ["prop_ratio", engines("prop_ratio")],
        ]),
        track,
        grades: [],
        fired: firedOf(recorded.fired, at),
    };
}
