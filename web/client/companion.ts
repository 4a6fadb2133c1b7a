// A companion, over as many connections as it takes.
import { Connection, type Socket, type Values } from "./connection";
import { ConnectionLost, Refusal } from "./failure";
import type { Messages } from "./messages";

/**
 * looking: there is no connection, and there will be another attempt. refused: the password was wrong or is missing;
 * `pairWith` goes on. paired: requests are answered.
 */
export type Link = "looking" | "refused" | "paired" | "ended";

export interface CompanionOptions {
    /** As in "ws://192.168.1.20:28086/". */
    url: string;
    password?: string;
    /** What opens a connection; the browser's own where it is left out. */
    open?: (url: string) => Socket;
    /** Milliseconds: until the first further attempt, and at most. */
    pauses?: [shortest: number, longest: number];
    /** Milliseconds without a word, after which the companion is asked whether it is there, and for its answer. */
    patience?: number;
}

/** A command's answer may take a minute, and those behind it wait as long. */
const LONGEST_ANSWER = 75_000;

/**
 * Keeps a connection to a companion: pairs, subscribes again to what was subscribed to, and begins anew when the
 * connection breaks. What was asked when it broke throws `ConnectionLost`, and is not asked again: it may have been
 * done.
 */
export class Companion {
    /** Told whenever `link` changes, and of each push. */
    onLink: (link: Link) => void = () => {};
    onValues: (values: Values) => void = () => {};

    private readonly open: (url: string) => Socket;
    private readonly pauses: [number, number];
    private readonly patience: number;
    private readonly names = new Set<string>();
    private connection: Connection | undefined;
    private password: string | undefined;
    private state: Link = "looking";
    private lastWord = 0;
    private isAsking = false;
    private cutShort: () => void = () => {};

    constructor(private readonly options: CompanionOptions) {
        this.open = options.open ?? (url => new WebSocket(url));
        this.pauses = options.pauses ?? [500, 5_000];
        this.patience = options.patience ?? 5_000;
        this.password = options.password;
    }

    get link(): Link {
        return this.state;
    }

    /** Connects, and goes on until `end`. To be called once. */
    async run(): Promise<void> {
        const [shortest, longest] = this.pauses;
        let pause = shortest;
        while (this.link !== "ended") {
            const outcome = await this.talk();
            if (outcome === "refused") {
                // Not to be tried again: companions make those wait who guess.
                this.become("refused");
                while (this.link === "refused") await this.rest();
                continue;
            }
            this.become("looking");
            if (outcome === "paired") pause = shortest;
            if (this.link === "looking") await this.rest(pause);
            pause = Math.min(2 * pause, longest);
        }
    }

    end(): void {
        this.become("ended");
        this.connection?.close();
        this.cutShort();
    }

    /** Pairs with this password from now on: at once, where another one was refused. */
    pairWith(password: string): void {
        this.password = password;
        if (this.state === "refused") this.become("looking");
        this.cutShort();
    }

    /** Looks for the companion now: the device has woken up, or has a network again. */
    lookNow(): void {
        if (this.state === "looking") this.cutShort();
        else if (this.state === "paired") void this.lookAfter(this.connection!, true);
    }

    /** Gives the connection up and pairs again, to learn whether the password is still the right one. */
    connectAnew(): void {
        this.connection?.close();
    }

    /** Throws `Refusal`, and `ConnectionLost` also while there is no connection. */
    async request<T extends keyof Messages>(type: T, params: Messages[T]["params"]): Promise<Messages[T]["data"]> {
        if (this.state !== "paired" || this.connection === undefined) throw new ConnectionLost();
        const answer = await this.connection.request(type, params);
        this.lastWord = Date.now();
        return answer;
    }

    /**
     * Has the values of datarefs pushed from now on, over all connections to come. Throws as `request` does; what is
     * subscribed to stays so. While one name has no value none is pushed: doubtful ones want a companion of their own.
     */
    subscribe(names: readonly string[]): Promise<Values> {
        for (const name of names) this.names.add(name);
        return this.request("dataref_subscribe_values", { datarefs: names.map(name => ({ name })) });
    }

    /** One connection, from its opening to its end, and how far it came. */
    private async talk(): Promise<"lost" | "refused" | "paired"> {
        const connection = new Connection(this.open(this.options.url));
        this.connection = connection;
        const ended = new Promise<void>(resolve => {
            connection.onEnd = resolve;
        });
        connection.onPush = values => {
            this.lastWord = Date.now();
            this.onValues(values);
        };
        const { password } = this;
        const pair = async () => {
            await connection.opened;
            return await connection.request("pair", { password });
        };
        try {
            const reply = await connection.within(3 * this.patience, pair());
            if (!reply.accepted) {
                connection.close();
                return this.password === password ? "refused" : "lost"; // there has come another one meanwhile
            }
        } catch (error) {
            if (error instanceof ConnectionLost) return "lost";
            throw error;
        } finally {
            if (this.link === "ended") connection.close();
        }
        this.lastWord = Date.now();
        this.become("paired");
        void this.subscribeAgain(connection);
        const watch = setInterval(() => void this.lookAfter(connection), this.patience);
        await ended;
        clearInterval(watch);
        return "paired";
    }

    private async subscribeAgain(connection: Connection): Promise<void> {
        if (this.names.size === 0) return;
        const datarefs = [...this.names].map(name => ({ name }));
        try {
            await connection.request("dataref_subscribe_values", { datarefs });
        } catch (error) {
            // A simulator that is away refuses; values come when it is back.
            if (!(error instanceof Refusal) && !(error instanceof ConnectionLost)) throw error;
        }
    }

    /**
     * Networks go without a word: asks what is cheap, and gives the connection up when no answer comes. Where answers are
     * waited for that may take their time, only after that, unless the device has just woken up.
     */
    private async lookAfter(connection: Connection, hasWoken = false): Promise<void> {
        const silence = Date.now() - this.lastWord;
        if (silence < this.patience || this.isAsking) return;
        if (connection.isWaiting && !hasWoken) {
            if (silence > LONGEST_ANSWER) connection.close();
            return;
        }
        this.isAsking = true;
        try {
            await connection.within(this.patience, connection.request("sim_info", undefined));
            this.lastWord = Date.now();
        } catch {
            // The connection has ended, which `talk` finds.
        } finally {
            this.isAsking = false;
        }
    }

    /** Until `cutShort`, or for so many milliseconds. */
    private async rest(milliseconds?: number): Promise<void> {
        let timer: ReturnType<typeof setTimeout> | undefined;
        await new Promise<void>(resolve => {
            this.cutShort = resolve;
            if (milliseconds !== undefined) timer = setTimeout(resolve, milliseconds);
        });
        clearTimeout(timer);
    }

    private become(link: Link): void {
        if (this.state === link || this.state === "ended") return;
        this.state = link;
        this.onLink(link);
    }
}
