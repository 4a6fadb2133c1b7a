// What a companion records, caught up with over lost connections.
import type { FiredTriggerEvent, RecordedFlight, TrackSample } from "./messages";

/** The greatest number below a positive one: the next double towards 0. */
const justBelow = (seconds: number) => seconds * (1 - Number.EPSILON / 2);

/** What of a list that is in the order of time is later than that; the rest is not looked at. */
function laterThan<T extends { elapsed_s: number }>(since: number, list: readonly T[]): T[] {
    let begin = list.length;
    while (begin > 0 && list[begin - 1].elapsed_s > since) --begin;
    return list.slice(begin);
}

/** `all.push(...more)` has no room for the samples of a day. */
function append<T>(all: T[], more: readonly T[]): void {
    for (const one of more) all.push(one);
}

const beginsWith = (all: readonly unknown[], beginning: readonly unknown[]) =>
    beginning.every((one, place) => JSON.stringify(one) === JSON.stringify(all[place]));

/** The recording so far, put together from the answers to `catch_up`. */
export class Recording {
    samples: TrackSample[] = [];
    fired: FiredTriggerEvent[] = [];

    /**
     * What to ask `catch_up` with: just below the last sample, so that the answer begins with that very one unless it
     * is another recording's. Without a number for everything: the very first sample may still have the time of a
     * recording before.
     */
    get since(): number | undefined {
        return this.samples.length < 2 ? undefined : justBelow(this.samples[this.samples.length - 1].elapsed_s);
    }

    /**
     * Takes the answer to a question with `since`, and tells what was new in it. Undefined: somebody has begun another
     * recording; this one is empty now, and everything is to be asked for.
     */
    take(answer: RecordedFlight): RecordedFlight | undefined {
        const since = this.since ?? -Infinity;
        const known = { samples: laterThan(since, this.samples), fired: laterThan(since, this.fired) };
        if (!beginsWith(answer.samples, known.samples) || !beginsWith(answer.fired, known.fired)) {
            this.samples = [];
            this.fired = [];
            return undefined;
        }
        const news = {
            samples: answer.samples.slice(known.samples.length),
            fired: answer.fired.slice(known.fired.length),
        };
        append(this.samples, news.samples);
        append(this.fired, news.fired);
        return news;
    }
}

/** What asks: a `Companion` is one. */
export interface Asker {
    request(type: "catch_up", params: { since_elapsed_s?: number }): Promise<RecordedFlight>;
}

/** Asks for what is new. Undefined where another recording has begun: `recording` then has all of that. */
export async function catchUp(companion: Asker, recording: Recording): Promise<RecordedFlight | undefined> {
    const ask = () => companion.request("catch_up", { since_elapsed_s: recording.since });
    const news = recording.take(await ask());
    if (news !== undefined) return news;
    recording.take(await ask());
    return undefined;
}
