import type { Socket } from "../../web/client/connection";

/** A socket whose other side is the test. */
export class FakeSocket implements Socket {
    onopen: ((event: never) => void) | null = null;
    onmessage: ((event: never) => void) | null = null;
    onclose: ((event: never) => void) | null = null;
    onerror: ((event: never) => void) | null = null;
    readonly sent: unknown[] = [];
    isClosed = false;

    /** What is done with each message that is sent. */
    onSent: (message: { type: string; req_id: number; params?: unknown }) => void = () => {};

    send(text: string): void {
        const message = JSON.parse(text) as { type: string; req_id: number };
        this.sent.push(message);
        this.onSent(message);
    }

    close(): void {
        this.isClosed = true;
    }

    open(): void {
        this.onopen?.({} as never);
    }

    say(message: unknown): void {
        this.onmessage?.({ data: JSON.stringify(message) } as never);
    }

    end(): void {
        this.onclose?.({} as never);
    }
}
