import test from "node:test";
import { deepEqual, equal, ok, rejects } from "node:assert/strict";
import { FakeSocket } from "./fakeSocket";
import { Connection } from "../../web/client/connection";
import { ConnectionLost, Refusal } from "../../web/client/failure";

function opened(): { socket: FakeSocket; connection: Connection } {
    const socket = new FakeSocket();
    const connection = new Connection(socket);
    socket.open();
    return { socket, connection };
}

test("each answer goes to its request", async () => {
    const { socket, connection } = opened();
    const first = connection.request("sim_info", undefined);
    const second = connection.request("list_flights", undefined);
    deepEqual(socket.sent, [{ type: "sim_info", req_id: 1 }, { type: "list_flights", req_id: 2 }]);
    socket.say({ type: "sim_info", req_id: 1, data: { sim: "xplane", version: "12.4.0" } });
    socket.say({ type: "list_flights", req_id: 2, data: { flights: [] } });
    deepEqual(await first, { sim: "xplane", version: "12.4.0" });
    deepEqual(await second, { flights: [] });
    ok(!connection.isWaiting);
});

test("pushes come between answers", async () => {
    const { socket, connection } = opened();
    const pushes: unknown[] = [];
    connection.onPush = values => pushes.push(values);
    const answer = connection.request("dataref_subscribe_values", { datarefs: [{ name: "a" }] });
    socket.say({ type: "dataref_subscribe_values", data: { b: 1 } });
    socket.say({ type: "dataref_subscribe_values", req_id: 1, data: { a: 2 } });
    deepEqual(await answer, { a: 2 });
    deepEqual(pushes, [{ b: 1 }]);
});

test("a refusal has its case and what it is about", async () => {
    const { socket, connection } = opened();
    const answer = connection.request("load_flight", { path: "/a\"b\n.sit" });
    socket.say({ type: "error", req_id: 1, data: { message: String.raw`flightNotFound("/a\"b\n.sit\u{1B}")` } });
    await rejects(answer, { case: "flightNotFound", about: "/a\"b\n.sit\u001b" });
    equal(new Refusal("situationsDirectoryNotConfigured").case, "situationsDirectoryNotConfigured");
    equal(new Refusal("situationsDirectoryNotConfigured").about, "");
    equal(new Refusal("malformed message").case, "malformed message");
});

test("an error without an id is the oldest request's", async () => {
    const { socket, connection } = opened();
    const first = connection.request("catch_up", {});
    const second = connection.request("sim_info", undefined);
    socket.say({ type: "error", data: { message: "failed to encode response" } });
    await rejects(first, { case: "failed to encode response" });
    socket.say({ type: "sim_info", req_id: 2, data: { sim: "xplane", version: "unknown" } });
    equal((await second).version, "unknown");
});

test("what waits when the connection ends is lost, and so is what is asked later", async () => {
    const { socket, connection } = opened();
    let ends = 0;
    connection.onEnd = () => ++ends;
    const answer = connection.request("recording_start", undefined);
    socket.end();
    await rejects(answer, ConnectionLost);
    await rejects(connection.request("sim_info", undefined), ConnectionLost);
    connection.close();
    equal(ends, 1);
});

test("a connection that never opens says so", async () => {
    const socket = new FakeSocket();
    const connection = new Connection(socket);
    socket.end();
    await rejects(connection.opened, ConnectionLost);
    const other = new Connection(new FakeSocket());
    other.close();
    await rejects(other.opened, ConnectionLost);
});
