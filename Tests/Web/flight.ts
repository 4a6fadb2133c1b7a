// A recording for the tests, as the page unpacks it.
import { Flight, PackedFlight, unpack } from "../../web/plot/flights";

export const packed: PackedFlight = {
    name: "session-2026-11-16T010938Z.jsonl", start: "2026-11-16T01:09:38Z", seconds: 60.5, samples: 3,
    gaps: [], frozen: [], fired: [],
    lines: { alt_ft: [{ at: [50, 50, 1000], value: [14165, -5, 10], unit: 0.1, breaks: [0, 2] }] },
    track: { at: [50, 50], lat: [47458100, 100], lon: [-8548100, -100], breaks: [0] },
};

export function flight(changes: Partial<Flight> = {}): Flight {
    return { ...unpack(packed), ...changes };
}
