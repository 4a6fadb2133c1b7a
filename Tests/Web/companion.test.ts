import test from "node:test";
import { deepEqual, equal, ok, rejects } from "node:assert/strict";
import { FakeSocket } from "./fakeSocket";
import { Companion, type Link } from "../../web/client/companion";
import { ConnectionLost } from "../../web/client/failure";

/** Companions that answer what a connection needs; `password` is what they ask for. */
class FakeCompanions {
    readonly sockets: FakeSocket[] = [];
    password: string | undefined;
    isSilent = false;

    open = (): FakeSocket => {
        const socket = new FakeSocket();
        socket.onSent = request => queueMicrotask(() => this.answer(socket, request));
        this.sockets.push(socket);
        queueMicrotask(() => socket.open());
        return socket;
    };

    get last(): FakeSocket {
        return this.sockets[this.sockets.length - 1];
    }

    private answer(socket: FakeSocket, request: { type: string; req_id: number; params?: unknown }): void {
        if (this.isSilent) return;
        const { type, req_id } = request;
        if (type === "pair") {
            const accepted = (request.params as { password?: string }).password === this.password;
            socket.say({ type, req_id, data: accepted ? { accepted } : { accepted, reason: "incorrect password" } });
        } else if (type === "sim_info") {
            socket.say({ type, req_id, data: { sim: "xplane", version: "12.4.0" } });
        } else {
            socket.say({ type, req_id, data: { a: 1 } });
        }
    }
}

const until = async (condition: () => boolean) => {
    const deadline = Date.now() + 10_000;
    while (!condition()) {
        ok(Date.now() < deadline);
        await new Promise(done => setTimeout(done, 1));
    }
};

function started(companions: FakeCompanions, password?: string, patience = 60_000) {
    const companion = new Companion({ url: "ws://x/", password, open: companions.open, pauses: [1, 4], patience });
    const links: Link[] = [];
    companion.onLink = link => links.push(link);
    const ended = companion.run();
    return { companion, links, ended };
}

test("it pairs, and begins anew when the connection breaks", async () => {
    const companions = new FakeCompanions();
    const { companion, links, ended } = started(companions);
    await until(() => companion.link === "paired");
    companions.last.end();
    await until(() => companions.sockets.length === 2 && companion.link === "paired");
    companion.end();
    await ended;
    deepEqual(links, ["paired", "looking", "paired", "ended"]);
});

test("what was subscribed to is subscribed to again", async () => {
    const companions = new FakeCompanions();
    const { companion, ended } = started(companions);
    await until(() => companion.link === "paired");
    const values: unknown[] = [];
    companion.onValues = pushed => values.push(pushed);
    deepEqual(await companion.subscribe(["a"]), { a: 1 });
    companions.last.end();
    await until(() => companions.sockets.length === 2 && companions.last.sent.length === 2);
    deepEqual(companions.last.sent[1],
        { type: "dataref_subscribe_values", req_id: 2, params: { datarefs: [{ name: "a" }] } });
    companions.last.say({ type: "dataref_subscribe_values", data: { a: 3 } });
    deepEqual(values, [{ a: 3 }]);
    companion.end();
    await ended;
});

test("a wrong password is tried once, and another one at once", async () => {
    const companions = new FakeCompanions();
    companions.password = "right";
    const { companion, links, ended } = started(companions, "wrong");
    await until(() => companion.link === "refused");
    await new Promise(done => setTimeout(done, 30));
    equal(companions.sockets.length, 1);
    ok(companions.last.isClosed);
    companion.pairWith("right");
    await until(() => companion.link === "paired");
    companion.end();
    await ended;
    deepEqual(links, ["refused", "looking", "paired", "ended"]);
});

test("a password that comes while another one is tried is tried as well", async () => {
    const companions = new FakeCompanions();
    companions.password = "right";
    const { companion, links, ended } = started(companions, "wrong");
    await until(() => companions.sockets.length === 1);
    companion.pairWith("right");
    await until(() => companion.link === "paired");
    companion.end();
    await ended;
    deepEqual(links, ["paired", "ended"]);
});

test("it tries again for as long as nobody answers", async () => {
    const sockets: FakeSocket[] = [];
    const open = () => {
        const socket = new FakeSocket();
        sockets.push(socket);
        queueMicrotask(() => socket.end());
        return socket;
    };
    const companion = new Companion({ url: "ws://x/", open, pauses: [1, 2] });
    const ended = companion.run();
    await until(() => sockets.length === 5);
    equal(companion.link, "looking");
    await rejects(companion.request("sim_info", undefined), ConnectionLost);
    companion.end();
    await ended;
});

test("a companion that says nothing any more is given up", async () => {
    const companions = new FakeCompanions();
    const { companion, links, ended } = started(companions, undefined, 20);
    await until(() => companion.link === "paired");
    await until(() => companions.last.sent.length > 3); // it has been asked, and has answered
    equal(companions.sockets.length, 1);
    companions.isSilent = true;
    await until(() => companion.link === "looking");
    companions.isSilent = false;
    await until(() => companion.link === "paired");
    companion.end();
    await ended;
    deepEqual(links, ["paired", "looking", "paired", "ended"]);
});
