// Compares a flight of the lesson page with that which tarnly-track has put into its own page for the same recording.
import type { Flight, Line, PackedFlight, PackedLine } from "../../web/plot/flights";
import { unpack } from "../../web/plot/flights";

/** Hundredths of a second, to which times are rounded there. */
const TIME_UNIT = 0.01;
const DEGREE_UNIT = 1e-6;
/** A flight with more than two points in each of so many columns of pixels is thinned there. */
const COLUMNS = 4096;
/** What sums and sines of two compilers may differ by. */
const RELATIVE = 1e-9;

/** A line of one or two values, to compare. */
interface Points {
    at: Float64Array;
    values: Float64Array[];
    breaks: Uint8Array;
    /** Of each of the values. */
    unit: number;
}

const isNear = (a: number, b: number, unit: number) => Math.abs(a - b) <= unit / 2 + RELATIVE * Math.max(1, Math.abs(b));

/** Why `drawn`, rounded and thinned, is not `whole`; absent where it is. */
function differenceOf(whole: Points, drawn: Points): string | undefined {
    const count = whole.at.length;
    const isThinned = count > 2 * COLUMNS;
    const width = isThinned ? (whole.at[count - 1] - whole.at[0]) / COLUMNS + TIME_UNIT : 0;
    const isLevel = (i: number) => i > 0 && i + 1 < count && !whole.breaks[i + 1]
        && whole.values.every(values => values[i - 1] === values[i] && values[i] === values[i + 1]);
    let next = 0;
    for (let i = 0; i < count; ++i) {
        const isThere = next < drawn.at.length && isNear(whole.at[i], drawn.at[next], TIME_UNIT)
            && whole.values.every((values, which) => isNear(values[i], drawn.values[which][next], drawn.unit));
        if (isThere) {
            if (whole.breaks[i] !== drawn.breaks[next]) return `break at ${whole.at[i]}: ${whole.breaks[i]}, not ${drawn.breaks[next]}`;
            ++next;
            continue;
        }
        const isLeftOut = !whole.breaks[i] && (isThinned ? isBetween(whole, drawn, i, next, width) : isLevel(i));
        if (!isLeftOut) return `point at ${whole.at[i]}: ${whole.values.map(values => values[i])} is not drawn there`;
    }
    return next === drawn.at.length ? undefined : `point at ${drawn.at[next]} is only there`;
}

/** Whether point `i` lies between the least and the greatest of what is drawn of its run about it; `next` is drawn after it. */
function isBetween(whole: Points, drawn: Points, i: number, next: number, width: number): boolean {
    let from = next - 1;
    while (from > 0 && !drawn.breaks[from] && drawn.at[from] > whole.at[i] - width) --from;
    let to = next;
    while (to + 1 < drawn.at.length && !drawn.breaks[to + 1] && drawn.at[to] < whole.at[i] + width) ++to;
    if (from < 0 || to >= drawn.at.length || drawn.breaks[next]) return false;
    return whole.values.every((values, which) => {
        const about = drawn.values[which].subarray(from, to + 1);
        const slack = drawn.unit / 2 + RELATIVE;
        return values[i] >= Math.min(...about) - slack && values[i] <= Math.max(...about) + slack;
    });
}

const pointsOf = ({ at, value, breaks }: Line, unit: number): Points => ({ at, values: [value], breaks, unit });

function* lineDifferences(key: string, whole: Line[], drawn: Line[], packed: PackedLine[]): Iterable<string> {
    if (whole.length !== drawn.length) yield `${key}: ${whole.length} lines, not ${drawn.length}`;
    for (let i = 0; i < Math.min(whole.length, drawn.length); ++i) {
        const difference = differenceOf(pointsOf(whole[i], packed[i].unit), pointsOf(drawn[i], packed[i].unit));
        if (difference !== undefined) yield `${key} ${i}: ${difference}`;
    }
}

/** In words; none where they are the same, but for what tarnly-track rounds, and leaves out because no pixel shows it. */
export function* differences(flight: Flight, packed: PackedFlight): Iterable<string> {
    const other = unpack(packed);
    const told = (one: Flight) => JSON.stringify([one.name, one.start, one.samples, one.seconds, one.highest_ft,
        one.gaps, one.frozen, one.fired]);
    if (told(flight) !== told(other)) yield `${told(flight)}, not ${told(other)}`;
    const [way, otherWay] = [flight.distance_nm ?? -1, other.distance_nm ?? -1];
    if (!(Math.abs(way - otherWay) <= RELATIVE * Math.max(1, otherWay))) yield `distance ${way}, not ${otherWay}`;
    for (const key of new Set([...flight.lines.keys(), ...other.lines.keys()])) {
        yield* lineDifferences(key, flight.lines.get(key) ?? [], other.lines.get(key) ?? [], packed.lines[key] ?? []);
    }
    const track = ({ track: { at, lat, lon, breaks } }: Flight): Points => ({ at, values: [lat, lon], breaks, unit: DEGREE_UNIT });
    const difference = differenceOf(track(flight), track(other));
    if (difference !== undefined) yield `track: ${difference}`;
}
