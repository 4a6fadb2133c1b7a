// The way between two positions, on a sphere of the Earth's mean radius: as Sources/TarnlyTrack/Log/GreatCircle has it.

export interface Position {
    lat: number;
    lon: number;
}

const MEAN_RADIUS_METRES = 6_371_008.8;
/** Metres a second. */
const FASTEST = 2_500;
const SHORTEST_STEP = 0.1;

const radians = (degrees: number) => (degrees * Math.PI) / 180;

export function greatCircleMetres(from: Position, to: Position): number {
    const acrossLat = Math.sin(radians(to.lat - from.lat) / 2) ** 2;
    const acrossLon = Math.sin(radians(to.lon - from.lon) / 2) ** 2;
    const haversine = acrossLat + Math.cos(radians(from.lat)) * Math.cos(radians(to.lat)) * acrossLon;
    return 2 * MEAN_RADIUS_METRES * Math.asin(Math.sqrt(Math.min(1, haversine)));
}

/** Whether anything that flies comes so far in so many seconds; else the aircraft was put there. */
export function canFly(from: Position, to: Position, seconds: number): boolean {
    return greatCircleMetres(from, to) <= FASTEST * Math.max(seconds, SHORTEST_STEP);
}
