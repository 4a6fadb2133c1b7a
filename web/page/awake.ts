// Keeps the screen on while that is wanted, where the browser does that.

/** Of the Screen Wake Lock API: only pages from https or from this very computer have it. */
interface Lock {
    release(): Promise<void>;
    readonly released: boolean;
}
export interface Locks {
    request(type: "screen"): Promise<Lock>;
}

/** Absent over http from another computer. */
export function screenLocks(): Locks | undefined {
    return (navigator as { wakeLock?: Locks }).wakeLock;
}

export class Awake {
    /** Told when `isAwake` has changed. */
    onChange: () => void = () => {};

    private lock: Lock | undefined;
    private isWanted = false;
    private isAsking = false;

    constructor(private readonly locks: Locks | undefined, private readonly page: Document = document) {
        // Browsers take the lock back when they hide the page, and give another one when it is seen again.
        page.addEventListener("visibilitychange", () => void this.follow());
    }

    /** Or is about to be. */
    get isAwake(): boolean {
        return this.isAsking || this.isHeld;
    }

    private get isHeld(): boolean {
        return this.lock !== undefined && !this.lock.released;
    }

    want(isWanted: boolean): void {
        if (isWanted === this.isWanted) return;
        this.isWanted = isWanted;
        void this.follow();
    }

    private async follow(): Promise<void> {
        if (this.isAsking || this.locks === undefined) return;
        this.isAsking = true;
        try {
            if (this.isWanted && !this.isHeld && this.page.visibilityState === "visible") {
                this.lock = await this.locks.request("screen");
            }
            if (!this.isWanted && this.lock !== undefined) {
                await this.lock.release();
                this.lock = undefined;
            }
        } catch {
            // A battery that is low: the screen then goes off as it does.
        } finally {
            this.isAsking = false;
        }
        this.onChange();
    }
}
