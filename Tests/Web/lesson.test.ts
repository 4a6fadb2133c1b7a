import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import { FakeClock, settled } from "./fakeClock";
import { RecordingCompanion } from "./recordingCompanion";
import { Lesson } from "../../web/page/lesson";

async function inALesson(work: (lesson: Lesson, clock: FakeClock, companion: RecordingCompanion) => Promise<void>) {
    const clock = new FakeClock();
    const companion = new RecordingCompanion();
    const { WebSocket } = globalThis;
    Object.assign(globalThis, { WebSocket: function() { return companion.open(); } });
    try {
        const lesson = new Lesson("ws://x/", undefined);
        lesson.start();
        await settled();
        equal(lesson.link, "paired");
        await work(lesson, clock, companion);
    } finally {
        Object.assign(globalThis, { WebSocket });
        clock.end();
    }
}

/** Every half second from the recording's begin on, but for the last moments. */
function isWhole({ recording: { samples } }: Lesson): boolean {
    return samples.every((sample, number) => sample.elapsed_s === number / 2) && samples.length > Date.now() / 500 - 4;
}

test("a device that wakes up on a dead network has all of the recording within seconds", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(10_300);
        companion.loseAll();
        await clock.pass(1_000); // a question is on its way that nobody will answer
        clock.sleep(20 * 60_000);
        for (let times = 0; times < 3; ++times) lesson.lookNow();
        await clock.pass(8_000);
        equal(lesson.link, "paired");
        ok(isWhole(lesson));
    }));

test("a device that wakes up with its connections goes on with them", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(2_000);
        clock.sleep(20 * 60_000);
        const [first] = companion.sockets;
        lesson.lookNow();
        await clock.pass(8_000);
        ok(!first.isClosed);
        ok(isWhole(lesson));
    }));

test("a network that goes without a word while an answer is waited for is noticed without anybody's help", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(10_300);
        companion.loseAll();
        await clock.pass(90_000);
        equal(lesson.link, "paired");
        ok(isWhole(lesson));
    }));

test("an answer that takes its minute is waited for", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(2_000);
        const [socket] = companion.sockets;
        const { onSent } = socket;
        const late: (() => void)[] = [];
        socket.onSent = request => late.push(() => onSent(request));
        let answer: unknown;
        void lesson.act("Pause", "run_command", { name: "sim/operation/pause_toggle" }).then(data => { answer = data; });
        await clock.pass(60_000);
        equal(answer, undefined);
        for (const reply of late.splice(0)) reply();
        await settled();
        ok(answer !== undefined);
        ok(!socket.isClosed);
    }));

test("a day with a bad network loses nothing and leaves nothing behind", () =>
    inALesson(async (lesson, clock, companion) => {
        for (let hour = 0; hour < 24; ++hour) {
            await clock.pass(3 * 60_000);
            companion.endAll();
            await clock.pass(3 * 60_000);
            companion.loseAll();
            clock.sleep(54 * 60_000);
            lesson.lookNow();
        }
        await clock.pass(10_000);
        equal(lesson.link, "paired");
        ok(isWhole(lesson));
        ok(companion.openCount <= 3);
        ok(clock.timerCount < 12);
    }));

test("a recording that grows runs, whoever began it, and what comes after an absence is late", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(1_100);
        ok(lesson.isLate); // of a time before the page
        await clock.pass(2_000);
        ok(!lesson.isLate && lesson.isRunning && !lesson.isRecording);
        companion.endAll();
        await clock.pass(4_000);
        ok(!lesson.isLate && lesson.isRunning); // a short break is none
        companion.endAll();
        let wasToldOfEnd = false;
        lesson.onRecording = () => { wasToldOfEnd ||= !lesson.isRunning; };
        companion.isUnreachable = true;
        await clock.pass(15_000);
        ok(!lesson.isRunning && wasToldOfEnd);
        const lates: boolean[] = [];
        lesson.onRecording = () => lates.push(lesson.isLate);
        companion.isUnreachable = false;
        await clock.pass(30_000);
        ok(lates[0] && !lates[lates.length - 1] && isWhole(lesson));
    }));

const script = { triggers: [{ id: "cue", condition_kind: "after_start", condition: { seconds: 1 }, action_kind: "speak", action: {} }] };

test("each recording has the script's triggers anew", () =>
    inALesson(async (lesson, clock, companion) => {
        await lesson.load("script", script);
        for (let recordings = 0; recordings < 2; ++recordings) {
            await lesson.record("Record");
            await clock.pass(1_600);
            companion.meet("cue");
            await clock.pass(1_600);
            equal(lesson.firedOfScript.length, 1);
            await lesson.stop("Stop");
        }
    }));

test("what fired before a script was loaded within a recording is not that script's", () =>
    inALesson(async (lesson, clock, companion) => {
        await lesson.load("script", script);
        await lesson.record("Record");
        await clock.pass(1_600);
        companion.meet("cue");
        await lesson.load("script", script);
        equal(lesson.recording.fired.length, 1);
        equal(lesson.firedOfScript.length, 0);
        companion.meet("cue");
        await clock.pass(1_600);
        equal(lesson.recording.fired.length, 2);
        equal(lesson.firedOfScript.length, 1);
    }));

test("a recording that begins while the one before is asked for is this page's own", () =>
    inALesson(async (lesson, clock, companion) => {
        await clock.pass(2_200);
        const answers: (() => void)[] = [];
        companion.holdBack = (_, answer) => answers.push(answer);
        const begun = lesson.record("Record");
        await clock.pass(1_100); // asks for the recording behind that
        companion.holdBack = undefined;
        for (const answer of answers) {
            answer();
            await settled();
        }
        await begun;
        await clock.pass(2_100);
        ok(lesson.isRecording);
        ok(lesson.began !== undefined);
        ok(lesson.earlier !== undefined);
        equal(lesson.recording.samples[0].elapsed_s, 0);
    }));

test("a recording that was stopped does not seem to run on", () =>
    inALesson(async (lesson, clock, companion) => {
        await lesson.record("Record");
        await clock.pass(2_500);
        const answers: (() => void)[] = [];
        companion.holdBack = (type, answer) => (type === "catch_up" ? answers.push(answer) : answer());
        await clock.pass(1_000); // asks for more of it
        await clock.pass(900);
        const stopped = lesson.stop("Stop");
        await settled();
        companion.holdBack = undefined;
        for (const answer of answers) answer();
        await stopped;
        ok(!lesson.isRunning);
        equal(lesson.recording.samples[lesson.recording.samples.length - 1].elapsed_s, 4);
    }));

test("what is asked for without a connection is not said to be lost", () =>
    inALesson(async (lesson, _, companion) => {
        companion.isUnreachable = true;
        companion.endAll();
        await settled();
        const outcomes: unknown[] = [];
        lesson.onOutcome = outcome => outcomes.push(outcome);
        await lesson.act("Gear", "run_command", { name: "sim/flight_controls/landing_gear_toggle" });
        deepEqual(outcomes, [{ unsent: "Gear" }]);
    }));

test("a password that was changed is asked for once values need it", () =>
    inALesson(async (lesson, clock, companion) => {
        companion.password = "new";
        lesson.values.want(["further"]);
        await clock.pass(3_000);
        equal(lesson.link, "refused");
        lesson.pairWith("new");
        await clock.pass(3_000);
        equal(lesson.link, "paired");
    }));
