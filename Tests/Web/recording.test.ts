import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import { catchUp, Recording } from "../../web/client/recording";
import type { RecordedFlight } from "../../web/client/messages";

const sample = (elapsed_s: number, alt_ft = 1000) => ({ elapsed_s, alt_ft });
const fired = (trigger_id: string, elapsed_s: number) => ({ trigger_id, elapsed_s, action_kind: "speak" });

/** A companion that records, as docs/protocol.md has it. */
class Companion {
    all: RecordedFlight = { samples: [], fired: [] };
    readonly asked: (number | undefined)[] = [];

    request = (_: "catch_up", params: { since_elapsed_s?: number }): Promise<RecordedFlight> => {
        const since = params.since_elapsed_s;
        this.asked.push(since);
        const later = <T extends { elapsed_s: number }>(list: T[]) =>
            list.filter(one => since === undefined || one.elapsed_s > since);
        return Promise.resolve({ samples: later(this.all.samples), fired: later(this.all.fired) });
    };
}

test("each sample and each trigger comes once", async () => {
    const companion = new Companion();
    const recording = new Recording();
    deepEqual(await catchUp(companion, recording), { samples: [], fired: [] });
    companion.all = { samples: [sample(0), sample(0.5)], fired: [fired("a", 0.5)] };
    deepEqual(await catchUp(companion, recording), companion.all);
    companion.all.samples.push(sample(1.0));
    companion.all.fired.push(fired("b", 0.5), fired("c", 1.0));
    deepEqual(await catchUp(companion, recording), { samples: [sample(1.0)], fired: [fired("b", 0.5), fired("c", 1.0)] });
    deepEqual(await catchUp(companion, recording), { samples: [], fired: [] });
    deepEqual(recording.samples, companion.all.samples);
    deepEqual(recording.fired, companion.all.fired);
    ok(companion.asked.slice(-1)[0]! < 1.0 && companion.asked.slice(-1)[0]! > 0.9999999);
});

test("the next question includes the last sample, whatever its time", () => {
    for (const seconds of [0.5, 1, 1.0000000000000002, 2, 2.0000000000000004, 86400.123456, 123456789.1]) {
        const recording = new Recording();
        recording.take({ samples: [sample(0), sample(seconds)], fired: [] });
        const since = recording.since!;
        ok(since < seconds && seconds - since <= seconds * Number.EPSILON);
    }
});

test("another recording is noticed, and had from its beginning", async () => {
    const companion = new Companion();
    const recording = new Recording();
    companion.all = { samples: [sample(0), sample(0.5), sample(1)], fired: [fired("a", 0)] };
    await catchUp(companion, recording);
    companion.all = { samples: [sample(0, 5), sample(0.5, 6)], fired: [] };
    equal(await catchUp(companion, recording), undefined);
    deepEqual(recording.samples, companion.all.samples);
    deepEqual(recording.fired, []);
});

test("a companion that has forgotten all is noticed as well", async () => {
    const companion = new Companion();
    const recording = new Recording();
    companion.all = { samples: [sample(0), sample(0.5)], fired: [] };
    await catchUp(companion, recording);
    companion.all = { samples: [], fired: [] };
    equal(await catchUp(companion, recording), undefined);
    equal(recording.samples.length, 0);
});

test("a day is caught up with at once", async () => {
    const companion = new Companion();
    const recording = new Recording();
    companion.all.samples = Array.from({ length: 172_800 }, (_, number) => sample(number / 2));
    companion.all.fired = Array.from({ length: 172_800 }, (_, number) => fired(`${number}`, number / 2));
    await catchUp(companion, recording);
    equal(recording.samples.length, 172_800);
    equal(recording.fired.length, 172_800);
});

test("of a long recording only the end is looked at", async () => {
    const companion = new Companion();
    const recording = new Recording();
    let looks = 0;
    companion.all.samples = Array.from({ length: 14_400 }, (_, number) => ({
        get elapsed_s() {
            ++looks;
            return number / 2;
        },
        alt_ft: 1000,
    }));
    await catchUp(companion, recording);
    const [last] = companion.all.samples.slice(-1);
    looks = 0;
    recording.take({ samples: [last, sample(7200)], fired: [] });
    equal(recording.samples.length, 14_401);
    ok(looks < 20);
});
