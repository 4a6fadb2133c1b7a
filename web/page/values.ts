// The datarefs that are on the page, pushed over connections of their own.
import { Companion, type Link } from "../client/companion";
import { Connection, type Socket, type Values } from "../client/connection";
import { ConnectionLost, Refusal } from "../client/failure";
import { simulatorAfter, type SimulatorNews } from "./simulator";

/** What a name has come to: it is pushed, the simulator has none of that name, or it has no value now. */
export type NameState = "pushed" | "unknown" | "none" | "waiting";

const PROBE = "sim/flightmodel/position/latitude";
const QUIET_MS = 3_000;
/** Longer than a companion takes for what is tried; guesses at the password are answered late. */
const LATE_MS = 20_000;

export interface PushedValuesOptions {
    url: string;
    /** Whether the companion has accepted that password. Nothing is asked of it before: each guess would make it wait. */
    isPaired: () => boolean;
    password: () => string | undefined;
    /** What opens a connection; the browser's own where it is left out. */
    open?: (url: string) => Socket;
}

/**
 * Has values pushed, and knows by them whether the simulator flies. One name without a value would keep all others of
 * its connection from coming: they are tried on a connection that is given up again, and only those that have a value are
 * subscribed to. When pushes stay away, all are tried again.
 */
export class PushedValues {
    onValues: (values: Values) => void = () => {};
    onSimulator: (news: SimulatorNews) => void = () => {};
    onNames: () => void = () => {};
    /** Told once of each password that the companion has taken before and takes no more. */
    onRefused: () => void = () => {};

    private readonly wanted = new Set<string>();
    private readonly states = new Map<string, NameState>();
    private companion: Companion | undefined;
    private latest: Values = {};
    private lastPush = 0;
    private isTrying = false;
    /** Further names are wanted since the trial that is under way. */
    private hasFurther = false;
    /** One that the companion takes no more, as it has another one now. */
    private refused: { password: string | undefined } | undefined;
    private hasEnded = false;
    private readonly open: (url: string) => Socket;
    private readonly timer: ReturnType<typeof setInterval>;

    constructor(private readonly options: PushedValuesOptions) {
        this.open = options.open ?? (url => new WebSocket(url));
        this.timer = setInterval(() => void this.look(), 1_000);
    }

    want(names: readonly string[]): void {
        for (const name of names) this.wanted.add(name);
        this.hasFurther = this.isTrying;
        void this.tryNames();
    }

    /** From the next connection on. */
    unwant(name: string): void {
        this.wanted.delete(name);
        this.states.delete(name);
        delete this.latest[name];
        this.onNames();
    }

    stateOf(name: string): NameState {
        return this.states.get(name) ?? "waiting";
    }

    get values(): Values {
        return this.latest;
    }

    /** None have come for so long that those there are may not be true any more. */
    get isQuiet(): boolean {
        return this.lastPush > 0 && Date.now() - this.lastPush > QUIET_MS;
    }

    /** The device has woken up or has a network again. */
    lookNow(): void {
        this.companion?.lookNow();
        void this.look();
    }

    end(): void {
        this.hasEnded = true;
        clearInterval(this.timer);
        this.companion?.end();
    }

    /** Tries all names on a connection for that alone, and subscribes to those that have a value. */
    private async tryNames(): Promise<void> {
        const password = this.options.password();
        const isRefused = this.refused !== undefined && this.refused.password === password;
        if (this.isTrying || this.hasEnded || isRefused || !this.options.isPaired()) return;
        this.isTrying = true;
        const connection = new Connection(this.open(this.options.url));
        try {
            await connection.within(LATE_MS, connection.opened);
            const { accepted } = await connection.within(LATE_MS, connection.request("pair", { password }));
            this.refused = accepted ? undefined : { password };
            if (!accepted) this.onRefused();
            const good = accepted ? await this.goodNames(connection) : undefined;
            if (good !== undefined && !this.hasEnded) this.subscribeTo(good);
        } catch (error) {
            if (!(error instanceof ConnectionLost)) throw error;
            this.onSimulator(simulatorAfter(error));
        } finally {
            connection.close();
            this.isTrying = false;
            this.onNames();
            if (this.hasFurther) {
                this.hasFurther = false;
                void this.tryNames();
            }
        }
    }

    /** Absent where no flight is loaded, so that nobody knows. */
    private async goodNames(connection: Connection): Promise<string[] | undefined> {
        const failureOf = async (name: string) => {
            try {
                await connection.within(LATE_MS, connection.request("dataref_subscribe_values", { datarefs: [{ name }] }));
                return undefined;
            } catch (error) {
                if (error instanceof Refusal) return error;
                throw error;
            }
        };
        const news = simulatorAfter(await failureOf(PROBE));
        this.onSimulator(news);
        if (news.state !== "flight") return undefined;
        const good = [PROBE];
        for (const name of [...this.wanted]) {
            const failure = await failureOf(name);
            this.states.set(name, failure === undefined ? "pushed" : failure.case === "timeout" ? "none" : "unknown");
            if (failure === undefined) good.push(name);
        }
        return good;
    }

    private subscribeTo(names: string[]): void {
        this.companion?.end();
        const companion = new Companion({ ...this.options, password: this.options.password(), open: this.open });
        this.companion = companion;
        companion.onLink = (link: Link) => {
            if (link === "paired") void companion.subscribe(names).catch(() => {});
        };
        companion.onValues = values => {
            if (companion !== this.companion) return;
            this.lastPush = Date.now();
            this.latest = values;
            this.onSimulator({ state: "flight", words: "" });
            this.onValues(values);
        };
        if (this.isQuiet) this.latest = {}; // of a flight that may be another one by now
        this.lastPush = Date.now();
        void companion.run();
    }

    private async look(): Promise<void> {
        if (this.lastPush === 0 || this.isQuiet) await this.tryNames();
    }
}
