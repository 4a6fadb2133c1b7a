// The ground track on a plane, without a page.
import type { Track } from "./flights";
import { say, shortText } from "./words";

const METRES_PER_DEGREE = 111_195; // of a sphere of 6,371 km
const METRES_PER_MILE = 1852;

/** A plane that touches the earth at its origin: good for the surroundings of a flight. Metres east and north. */
export class Plane {
    private readonly metresPerLongitude: number;

    constructor(private readonly lat: number, private readonly lon: number) {
        this.metresPerLongitude = METRES_PER_DEGREE * Math.max(0.01, Math.cos((lat * Math.PI) / 180));
    }

    /** East of the origin, the shorter way round. */
    east(lon: number): number {
        const turns = Math.round((lon - this.lon) / 360);
        return (lon - this.lon - 360 * turns) * this.metresPerLongitude;
    }

    north(lat: number): number {
        return (lat - this.lat) * METRES_PER_DEGREE;
    }
}

export interface Box {
    west: number;
    east: number;
    south: number;
    north: number;
}

/** What holds all tracks, in metres on the plane; absent without a single position. */
export function boxOf(tracks: Track[], plane: Plane): Box | undefined {
    const box = { west: Infinity, east: -Infinity, south: Infinity, north: -Infinity };
    for (const track of tracks) {
        for (let i = 0; i < track.at.length; ++i) {
            const east = plane.east(track.lon[i]);
            const north = plane.north(track.lat[i]);
            box.west = Math.min(box.west, east);
            box.east = Math.max(box.east, east);
            box.south = Math.min(box.south, north);
            box.north = Math.max(box.north, north);
        }
    }
    return box.west <= box.east ? box : undefined;
}

/** A round length for the scale, no longer than `metres`, with what to write beside it. */
export function scaleLength(metres: number): { metres: number; text: string } {
    const round = (length: number) => {
        const power = 10 ** Math.floor(Math.log10(length));
        return [5, 2, 1].map((digit) => digit * power).find((one) => one <= length * 1.000001) ?? power;
    };
    if (metres >= 0.1 * METRES_PER_MILE) {
        const miles = round(metres / METRES_PER_MILE);
        return { metres: miles * METRES_PER_MILE, text: say("{0} nm", shortText(Number(miles.toPrecision(1)))) };
    }
    const length = round(metres);
    return { metres: length, text: `${shortText(Number(length.toPrecision(1)))} m` };
}

/** Where a track is at a moment, in degrees; absent where nobody knows. */
export function placeAt(track: Track, moment: number): { lat: number; lon: number } | undefined {
    const { at, lat, lon, breaks } = track;
    let low = 0;
    let high = at.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (at[middle] < moment) low = middle + 1;
        else high = middle;
    }
    if (low < at.length && at[low] === moment) return { lat: lat[low], lon: lon[low] };
    if (low === 0 || low === at.length || breaks[low]) return undefined;
    const part = (moment - at[low - 1]) / (at[low] - at[low - 1]);
    let step = lon[low] - lon[low - 1];
    step -= 360 * Math.round(step / 360);
    return { lat: lat[low - 1] + part * (lat[low] - lat[low - 1]), lon: lon[low - 1] + part * step };
}
