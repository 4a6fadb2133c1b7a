import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import { FakeClock, settled } from "./fakeClock";
import { FakeSocket } from "./fakeSocket";
import { PushedValues } from "../../web/page/values";

const moment = () => new Promise(done => setTimeout(done, 20));

/** Companions with a password, and what they were asked. */
class FakeCompanions {
    readonly asked: string[] = [];
    isPaired = true;
    password: string | undefined = "right";
    /** Told of each question before its answer. */
    onAsked: (type: string) => void = () => {};

    readonly values = new PushedValues({
        url: "ws://x/", isPaired: () => this.isPaired, password: () => this.password, open: () => this.opened(),
    });

    private opened(): FakeSocket {
        const socket = new FakeSocket();
        socket.onSent = ({ type, req_id, params }) => queueMicrotask(() => {
            this.asked.push(type);
            this.onAsked(type);
            const isRight = (params as { password?: string } | undefined)?.password === "right";
            const data = type === "pair" ? { accepted: isRight } : {};
            socket.say({ type, req_id, data });
        });
        queueMicrotask(() => socket.open());
        return socket;
    }
}

test("nothing is asked before the companion has accepted the password", async () => {
    const companions = new FakeCompanions();
    companions.isPaired = false;
    companions.values.want(["a"]);
    await moment();
    deepEqual(companions.asked, []);
    companions.isPaired = true;
    companions.values.want(["a"]);
    await moment();
    companions.values.end();
    deepEqual(companions.asked.slice(0, 2), ["pair", "dataref_subscribe_values"]);
    equal(companions.values.stateOf("a"), "pushed");
});

test("a password that counts no more is tried once", async () => {
    const companions = new FakeCompanions();
    companions.password = "of yesterday";
    for (let time = 0; time < 3; ++time) {
        companions.values.want(["a"]);
        await moment();
    }
    deepEqual(companions.asked, ["pair"]);
    companions.password = "right";
    companions.values.want(["a"]);
    await moment();
    companions.values.end();
    ok(companions.asked.length > 2);
    equal(companions.values.stateOf("a"), "pushed");
});

test("a connection on which nothing comes is given up, and another one tried", async () => {
    const clock = new FakeClock();
    try {
        const sockets: FakeSocket[] = [];
        const open = () => {
            sockets.push(new FakeSocket());
            return sockets[sockets.length - 1];
        };
        const values = new PushedValues({ url: "ws://x/", isPaired: () => true, password: () => undefined, open });
        values.want(["a"]);
        await clock.pass(30_000);
        equal(sockets.length, 2);
        sockets[1].open(); // and no answer
        await settled();
        await clock.pass(30_000);
        equal(sockets.length, 3);
        deepEqual(sockets.map(socket => socket.isClosed), [true, true, false]);
        values.end();
    } finally {
        clock.end();
    }
});

test("a name that is wanted while others are tried is tried after them", async () => {
    const companions = new FakeCompanions();
    const { values } = companions;
    companions.onAsked = () => {
        if (companions.asked.length === 3) values.want(["b"]); // "a" is being tried
    };
    values.want(["a"]);
    await moment();
    values.end();
    deepEqual(["a", "b"].map(name => values.stateOf(name)), ["pushed", "pushed"]);
});
