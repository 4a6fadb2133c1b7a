// One connection to a companion, from its opening to its end.
import { ConnectionLost, Refusal } from "./failure";
import type { Messages } from "./messages";

/** As much of a browser's WebSocket as is needed, so that other ones will do. */
export interface Socket {
    onopen: ((event: never) => void) | null;
    onmessage: ((event: never) => void) | null;
    onclose: ((event: never) => void) | null;
    onerror: ((event: never) => void) | null;
    send(text: string): void;
    close(): void;
}

export type Values = Record<string, number>;

interface Message {
    type: string;
    req_id?: number;
    data: unknown;
}

interface Waiting {
    id: number;
    answered(data: unknown): void;
    failed(error: Error): void;
}

/**
 * Sends requests, and hands each its answer. The companion answers them in the order in which they were sent; pushes
 * come between. Nothing is sent before the connection is open.
 */
export class Connection {
    /** Told of each push, and once of the end; no request is waiting then. */
    onPush: (values: Values) => void = () => {};
    onEnd: () => void = () => {};
    /** Fulfilled when requests may be sent, rejected when that never comes. */
    readonly opened: Promise<void>;

    private readonly waiting: Waiting[] = [];
    private lastId = 0;
    private isEnded = false;
    private neverOpens: (error: Error) => void = () => {};

    constructor(private readonly socket: Socket) {
        this.opened = new Promise((resolve, reject) => {
            socket.onopen = () => resolve();
            this.neverOpens = reject;
        });
        this.opened.catch(() => {}); // whoever wants to know asks
        socket.onclose = () => this.end();
        socket.onerror = () => {}; // a close follows; Node's sockets want to be heard all the same
        socket.onmessage = (event: { data: unknown }) => this.take(JSON.parse(String(event.data)) as Message);
    }

    /** Throws `Refusal` and `ConnectionLost`. */
    request<T extends keyof Messages>(type: T, params: Messages[T]["params"]): Promise<Messages[T]["data"]> {
        if (this.isEnded) return Promise.reject(new ConnectionLost());
        const id = ++this.lastId;
        return new Promise((resolve, reject) => {
            this.waiting.push({ id, answered: data => resolve(data as Messages[T]["data"]), failed: reject });
            this.socket.send(JSON.stringify({ type, req_id: id, params }));
        });
    }

    /** Waits for what is under way here, and closes the connection where that takes longer. */
    async within<T>(milliseconds: number, underWay: Promise<T>): Promise<T> {
        const late = setTimeout(() => this.close(), milliseconds);
        try {
            return await underWay;
        } finally {
            clearTimeout(late);
        }
    }

    get isWaiting(): boolean {
        return this.waiting.length > 0;
    }

    close(): void {
        this.socket.close();
        this.end(); // the socket's own word may be long in coming, where the network is gone
    }

    private take(message: Message): void {
        if (message.req_id === undefined && message.type !== "error") {
            this.onPush(message.data as Values);
            return;
        }
        // An error without an id is about the oldest request.
        const place = message.req_id === undefined ? 0 : this.waiting.findIndex(one => one.id === message.req_id);
        const [request] = place < 0 ? [] : this.waiting.splice(place, 1);
        if (message.type === "error") {
            request?.failed(new Refusal((message.data as { message: string }).message));
        } else {
            request?.answered(message.data);
        }
    }

    private end(): void {
        if (this.isEnded) return;
        this.isEnded = true;
        this.neverOpens(new ConnectionLost());
        for (const request of this.waiting.splice(0)) request.failed(new ConnectionLost());
        this.onEnd();
    }
}
