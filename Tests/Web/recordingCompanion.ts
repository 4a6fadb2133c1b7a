import type { FiredTriggerEvent } from "../../web/client/messages";
import { FakeSocket } from "./fakeSocket";

/** A companion that records a flight twice a second of `Date.now`, and can go as networks and simulators do. */
export class RecordingCompanion {
    readonly sockets: FakeSocket[] = [];
    /** Nothing arrives any more on the connections that there are; nobody is told. */
    isUnreachable = false;
    /** The one that it takes; any where there is none. */
    password: string | undefined;
    /** What keeps an answer back, and gives it later. */
    holdBack: ((type: string, answer: () => void) => void) | undefined;
    private readonly dead = new Set<FakeSocket>();
    private begunAt = 0;
    private endedAt: number | undefined;
    private fired: FiredTriggerEvent[] = [];
    private loaded: string[] = [];
    private spent = new Set<string>();

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

    /** As the companion does where a trigger's condition holds: once, and of the script that is loaded. */
    meet(id: string): void {
        if (!this.loaded.includes(id) || this.spent.has(id)) return;
        this.spent.add(id);
        this.fired.push({ trigger_id: id, elapsed_s: (Date.now() - this.begunAt) / 1_000, action_kind: "speak" });
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
        const data = this.dataOf(type, params);
        const say = () => socket.say({ type, req_id, data });
        if (this.holdBack !== undefined) this.holdBack(type, say);
        else say();
    }

    private dataOf(type: string, params: unknown): object {
        if (type === "pair") {
            const { password } = params as { password?: string };
            return { accepted: this.password === undefined || password === this.password };
        }
        if (type === "recording_start") this.start();
        if (type === "recording_stop") this.endedAt = Date.now();
        if (type === "load_script") return this.load((params as { triggers: { id: string }[] }).triggers.map(({ id }) => id));
        return type === "catch_up" ? this.recorded((params as { since_elapsed_s?: number }).since_elapsed_s ?? -1) : { ok: true };
    }

    private start(): void {
        this.begunAt = Date.now();
        this.endedAt = undefined;
        this.fired = [];
    }

    private load(ids: string[]): object {
        this.loaded = ids;
        this.spent = new Set();
        return { unresolved_fixes: [] };
    }

    private recorded(since: number): object {
        const elapsed = (this.endedAt ?? Date.now()) - this.begunAt;
        const from = Math.max(0, Math.floor(since * 2) + 1);
        const samples = Array.from({ length: Math.max(0, Math.floor(elapsed / 500) + 1 - from) }, (_, place) => ({
            elapsed_s: (from + place) / 2, alt_ft: this.begunAt + from + place,
        }));
        return { samples, fired: this.fired.filter(({ elapsed_s }) => elapsed_s > since) };
    }
}
