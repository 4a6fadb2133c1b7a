// What the instruments show: where each value comes from, and how it is written.
import type { Values } from "../client/connection";
import type { TextKey } from "./texts";

const FEET_PER_METRE = 1 / 0.3048;
const POSITION = "sim/flightmodel/position/";

export const LATITUDE = POSITION + "latitude";
export const LONGITUDE = POSITION + "longitude";
export const PITCH = POSITION + "theta";
export const BANK = POSITION + "phi";
export const HEADING = POSITION + "mag_psi";
/** Against the track, which lies by true north. */
export const TRUE_HEADING = POSITION + "psi";
export const PAUSED = "sim/time/paused";
export const GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down";

/** A number on a dial, with its label; units are the same in all languages. */
export interface Reading {
    key: TextKey;
    unit: string;
    /** The first of these that the simulator has; older releases have other names. */
    sources: string[];
    /** What is written of a value of the source: at the dials' size and for the eye, so in round numbers. */
    write(value: number): string;
}

const round = (value: number, step = 1) => {
    const rounded = Math.round(value / step) * step;
    return String(rounded === 0 ? 0 : rounded); // no minus zero
};
const percent = (ratio: number) => round(ratio * 100);

/** 1 to 360, as headings are read. */
export function headingText(degrees: number): string {
    const whole = ((Math.round(degrees) % 360) + 360) % 360;
    return String(whole === 0 ? 360 : whole).padStart(3, "0");
}

export const readings: Reading[] = [
    { key: "altitude", unit: "ft", sources: ["sim/flightmodel/misc/h_ind"], write: value => round(value, 10) },
    { key: "height", unit: "ft", sources: [POSITION + "y_agl"], write: metres => {
        const feet = metres * FEET_PER_METRE;
        return round(feet, feet < 200 ? 1 : 10);
    } },
    { key: "airspeed", unit: "kt", sources: [POSITION + "indicated_airspeed"], write: value => round(value) },
    { key: "verticalSpeed", unit: "ft/min", sources: [POSITION + "vh_ind_fpm"], write: value => round(value, 50) },
    { key: "heading", unit: "°", sources: [HEADING, TRUE_HEADING], write: headingText },
    { key: "bank", unit: "°", sources: [BANK], write: value => round(value) },
    { key: "pitch", unit: "°", sources: [PITCH], write: value => round(value) },
    { key: "flaps", unit: "%", write: percent,
        sources: ["sim/cockpit2/controls/flap_handle_request_ratio", "sim/cockpit2/controls/flap_ratio"] },
    { key: "throttle", unit: "%", sources: ["sim/cockpit2/engine/actuators/throttle_ratio_all",
        "sim/cockpit2/engine/actuators/throttle_ratio[0]"], write: percent },
];

/** All names that the instruments may want. */
export const instrumentNames = [LATITUDE, LONGITUDE, PITCH, BANK, GEAR_HANDLE, PAUSED,
    ...readings.flatMap(reading => reading.sources)];

/** A dash where nobody knows. */
export function readingText(reading: Reading, values: Values): string {
    const source = reading.sources.find(name => values[name] !== undefined);
    return source === undefined ? "–" : reading.write(values[source]);
}
