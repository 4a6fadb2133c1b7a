import test from "node:test";
import { deepEqual, equal } from "node:assert/strict";
import { settled } from "./fakeClock";
import { Awake } from "../../web/page/awake";

class FakeLock {
    released = false;
    release(): Promise<void> {
        this.released = true;
        return Promise.resolve();
    }
}

/** A page, and a browser that gives it locks until it is to refuse. */
function inBrowser() {
    const locks: FakeLock[] = [];
    const page = Object.assign(new EventTarget(), { visibilityState: "visible" });
    const browser = {
        locks, isRefusing: false,
        become(visibilityState: "visible" | "hidden"): Promise<void> {
            page.visibilityState = visibilityState;
            if (visibilityState === "hidden") for (const lock of locks) lock.released = true;
            page.dispatchEvent(new Event("visibilitychange"));
            return settled();
        },
    };
    const awake = new Awake({
        request: () => {
            if (browser.isRefusing) return Promise.reject(new Error("battery"));
            locks.push(new FakeLock());
            return Promise.resolve(locks[locks.length - 1]);
        },
    }, page as unknown as Document);
    return { awake, browser };
}

test("the screen is asked to stay on once, and again when the page is seen again, until that is not wanted", async () => {
    const { awake, browser } = inBrowser();
    for (let second = 0; second < 3; ++second) awake.want(true);
    await settled();
    deepEqual(browser.locks.map(lock => lock.released), [false]);
    await browser.become("hidden");
    equal(awake.isAwake, false);
    await browser.become("visible");
    deepEqual(browser.locks.map(lock => lock.released), [true, false]);
    equal(awake.isAwake, true);
    awake.want(false);
    await settled();
    deepEqual(browser.locks.map(lock => lock.released), [true, true]);
    await browser.become("hidden");
    await browser.become("visible");
    equal(browser.locks.length, 2);
});

test("what is not wanted any more when the browser answers is given back", async () => {
    const { awake, browser } = inBrowser();
    awake.want(true);
    awake.want(false);
    await settled();
    deepEqual(browser.locks.map(lock => lock.released), [true]);
});

test("a browser that refuses, or has no such thing, is told of", async () => {
    const { awake, browser } = inBrowser();
    let told = 0;
    awake.onChange = () => { ++told; };
    browser.isRefusing = true;
    awake.want(true);
    await settled();
    equal(awake.isAwake, false);
    equal(told, 1);
    const without = new Awake(undefined, new EventTarget() as Document);
    without.want(true);
    equal(without.isAwake, false);
});
