import { FakeSocket } from "./fakeSocket";

/** A companion that records a flight twice a second of `Date.now`, and can go as networks and simulators do. */
export class RecordingCompanion {
    readonly sockets: FakeSocket[] = [];
    /** Nothing arrives any more on the connections that there are; nobody is told. */
    isUnreachable = false;
    private readonly dead = new Set<FakeSocket>();

    open = (): FakeSocket => {
        const socket = new FakeSocket();
        socket.onSent = request => queueMicrotask(() => this.answer(socket, request));
        this.sockets.push(socket);
        queueMicrotask(() => {
            if (this.isUnreachable) this.dead.add(socket);
            else socket.open();
        });
        return socket;
    };

    get openCount(): number {
        return this.sockets.filter(socket => !socket.isClosed && !this.dead.has(socket)).length;
    }

    /** The network takes the connections along without a word. */
    loseAll(): void {
        for (const socket of this.sockets) this.dead.add(socket);
    }

    /** The connections end, and both sides know. */
    endAll(): void {
        const ending = this.sockets.filter(socket => !socket.isClosed);
        this.loseAll();
        for (const socket of ending) socket.end();
    }

    push(values: Record<string, number>): void {
        for (const socket of this.sockets) {
            const isSubscribed = socket.sent.some(one => (one as { type: string }).type === "dataref_subscribe_values");
            if (isSubscribed && !socket.isClosed && !this.dead.has(socket)) {
                socket.say({ type: "dataref_subscribe_values", data: values });
            }
        }
    }

    private answer(socket: FakeSocket, { type, req_id, params }: { type: string; req_id: number; params?: unknown }): void {
        if (this.dead.has(socket) || socket.isClosed) return;
        socket.say({ type, req_id, data: this.dataOf(type, params) });
    }

    private dataOf(type: string, params: unknown): object {
        if (type === "pair") return { accepted: true };
        if (type !== "catch_up") return { ok: true };
        const since = (params as { since_elapsed_s?: number }).since_elapsed_s ?? -1;
        const from = Math.max(0, Math.floor(since * 2) + 1);
        const samples = Array.from({ length: Math.max(0, Math.floor(Date.now() / 500) + 1 - from) }, (_, place) => ({
            elapsed_s: (from + place) / 2, alt_ft: from + place,
        }));
        return { samples, fired: [] };
    }
}
