// The Screen Wake Lock API, which this release of TypeScript does not know.
interface WakeLockSentinel {
    release(): Promise<void>;
}
interface Navigator {
    readonly wakeLock: { request(type: "screen"): Promise<WakeLockSentinel> };
}
