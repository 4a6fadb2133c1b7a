const real = { setTimeout, setInterval, clearTimeout, clearInterval, now: Date.now };

interface Timer {
    due: number;
    every: number | undefined;
    ring(): void;
}

/** Time that passes when the test says so, for all timers and `Date.now`, until `end`. */
export class FakeClock {
    private now = 0;
    private lastId = 0;
    private readonly timers = new Map<number, Timer>();

    constructor() {
        const set = (ring: () => void, after: number, every?: number) => {
            this.timers.set(++this.lastId, { due: this.now + after, every, ring });
            return this.lastId;
        };
        const clear = (id: number) => this.timers.delete(id);
        Object.assign(globalThis, {
            setTimeout: (ring: () => void, after = 0) => set(ring, after),
            setInterval: (ring: () => void, every: number) => set(ring, every, every),
            clearTimeout: clear,
            clearInterval: clear,
        });
        Date.now = () => this.now;
    }

    get timerCount(): number {
        return this.timers.size;
    }

    async pass(milliseconds: number): Promise<void> {
        const end = this.now + milliseconds;
        for (;;) {
            const next = [...this.timers].filter(([, { due }]) => due <= end).sort(([, a], [, b]) => a.due - b.due)[0];
            if (next === undefined) break;
            const [id, timer] = next;
            this.now = Math.max(this.now, timer.due);
            if (timer.every === undefined) this.timers.delete(id);
            else timer.due = this.now + timer.every;
            timer.ring();
            await settled();
        }
        this.now = end;
    }

    /** A device that sleeps: no timer rings, and what came due rings once, when it has woken up. */
    sleep(milliseconds: number): void {
        this.now += milliseconds;
    }

    end(): void {
        Object.assign(globalThis, real);
        Date.now = real.now;
    }
}

/** Until all that waits for nothing else has been done. */
export const settled = () => new Promise<void>(done => setImmediate(done));
