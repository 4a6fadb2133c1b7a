import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { flight } from "./flight";
import { alignmentsOf, clockText, elapsedText, spokenTime, timeTicks, zeroOf } from "../../web/plot/times";

const fired = (id: string, at: number) => ({ id, action: "speak", at });

test("ticks stand at round moments", () => {
    deepEqual(timeTicks(0, 60, 7), [0, 10, 20, 30, 40, 50, 60]);
    deepEqual(timeTicks(61, 400, 4), [120, 240, 360]);
    deepEqual(timeTicks(-20, 20, 5), [-20, -10, 0, 10, 20]);
    equal(timeTicks(0, 30 * 86400, 4).length, 4);
});

test("times are written for eyes and for ears", () => {
    equal(elapsedText(75.5), "1:15");
    equal(elapsedText(3725), "1:02:05");
    equal(elapsedText(-75), "\u22121:15");
    equal(elapsedText(-0.4), "0:00");
    equal(spokenTime(3725), "1 hour 2 minutes 5 seconds");
    equal(spokenTime(0), "0 seconds");
    equal(clockText(1794791378), "01:09:38");
});

test("flights are laid over each other by what several of them have", () => {
    const a = flight({ fired: [fired("rotate", 40), fired("alone", 50)] });
    const b = flight({ fired: [fired("base", 10), fired("rotate", 45), fired("rotate", 90)] });
    deepEqual(alignmentsOf([a]), [{ by: "start" }]);
    deepEqual(alignmentsOf([a, b]), [{ by: "start" }, { by: "clock" }, { by: "trigger", id: "rotate" }]);
    deepEqual(alignmentsOf([a, flight({ start: undefined })]), [{ by: "start" }]);
});

test("the first firing of a trigger is the moment that stands at zero", () => {
    const one = flight({ fired: [fired("rotate", 45), fired("rotate", 90)] });
    equal(zeroOf(one, { by: "start" }), 0);
    equal(zeroOf(one, { by: "trigger", id: "rotate" }), 45);
    equal(zeroOf(one, { by: "trigger", id: "base" }), undefined);
    equal(zeroOf(one, { by: "clock" }), -1794791378);
    equal(zeroOf(flight({ start: undefined }), { by: "clock" }), undefined);
});
