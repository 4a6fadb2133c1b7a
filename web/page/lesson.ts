// What the page knows and does, without a picture of it: the parts show it, and ask it to act.
import { Companion, type Link } from "../client/companion";
import type { Values } from "../client/connection";
import { ConnectionLost } from "../client/failure";
import type { FiredTriggerEvent, FlightListing, LoadScriptRequest, Messages, RecordedFlight } from "../client/messages";
import { catchUp, Recording } from "../client/recording";
import { instrumentNames } from "./readings";
import type { SimulatorNews } from "./simulator";
import { PushedValues } from "./values";

/** What came of something that the person asked for. */
export type Outcome = { done: string } | { failed: string; words: string } | { lost: string } | { unsent: string };

const CATCH_UP_MS = 1_000;
/** A recording that has not grown for so long does not run, as far as the page can see. */
const GROWTH_MS = 3_000;
/** After so long without an answer, what has fired meanwhile was missed: it is shown, and not spoken any more. */
export const MISSED_MS = 10_000;

export class Lesson {
    /** Told of each change, with what has changed. */
    onLink: (link: Link) => void = () => {};
    onSimulator: (news: SimulatorNews) => void = () => {};
    onValues: () => void = () => {};
    onRecording: (isAnother: boolean) => void = () => {};
    onOutcome: (outcome: Outcome) => void = () => {};

    readonly values: PushedValues;
    recording = new Recording();
    /** The one before, of this page's time: what was flown is not lost because somebody began another one. */
    earlier: { recorded: RecordedFlight; began: Date } | undefined;
    script: LoadScriptRequest | undefined;
    /** Of this page's own doing: others may start and stop the one recording as well. */
    isRecording = false;
    began: Date | undefined;
    /** What has just come was caught up with after a longer absence: nobody is to be told of it as news. */
    isLate = true;
    simulator: SimulatorNews = { state: "unknown", words: "" };
    private readonly companion: Companion;
    private password: string | undefined;
    private following: Promise<void> | undefined;
    /** How many had fired when the script was loaded: they are of the one before. */
    private firedBefore = 0;
    private wasRunning = false;
    /** When the companion was last asked, and when that brought more of the recording. */
    private lastFollow = -Infinity;
    private lastGrowth = -Infinity;

    constructor(url: string, password: string | undefined) {
        this.password = password;
        this.companion = new Companion({ url, password });
        this.values = new PushedValues({ url, password: () => this.password, isPaired: () => this.link === "paired" });
        this.companion.onLink = link => {
            if (link === "paired") this.values.want(instrumentNames);
            this.onLink(link);
        };
        this.values.onValues = () => this.onValues();
        // The password has been changed: who is in stays in, but nobody else of this page comes in.
        this.values.onRefused = () => this.companion.connectAnew();
        this.values.onSimulator = news => {
            if (news.state === "unknown") return;
            const hasChanged = news.state !== this.simulator.state || news.words !== this.simulator.words;
            this.simulator = news;
            if (hasChanged) this.onSimulator(news);
        };
        setInterval(() => {
            void this.follow();
            this.lookWhetherItRuns();
        }, CATCH_UP_MS);
    }

    start(): void {
        void this.companion.run();
    }

    get link(): Link {
        return this.companion.link;
    }

    /** Of this page's doing or another's. */
    get isRunning(): boolean {
        return this.isRecording || Date.now() - this.lastGrowth < GROWTH_MS;
    }

    /** Those of this moment: none where nobody knows. */
    get present(): Values {
        return this.link === "paired" && this.simulator.state === "flight" && !this.values.isQuiet ? this.values.values : {};
    }

    pairWith(password: string): void {
        this.password = password;
        this.companion.pairWith(password);
    }

    /** The device has woken up or has a network again. */
    lookNow(): void {
        this.companion.lookNow();
        this.values.lookNow();
    }

    /** Asks for something that is called `what` for the person, who is told what came of it. */
    async act<T extends keyof Messages>(
        what: string, type: T, params: Messages[T]["params"]): Promise<Messages[T]["data"] | undefined> {
        if (this.link !== "paired") {
            this.onOutcome({ unsent: what });
            return undefined;
        }
        try {
            const answer = await this.companion.request(type, params);
            this.onOutcome({ done: what });
            return answer;
        } catch (error) {
            if (error instanceof ConnectionLost) this.onOutcome({ lost: what });
            else this.onOutcome({ failed: what, words: (error as Error).message });
            return undefined;
        }
    }

    /** When the recording began; of one that others have begun, by the age of its last sample. */
    beganAt({ samples }: RecordedFlight = this.recording): Date {
        const age = samples.length === 0 ? 0 : samples[samples.length - 1].elapsed_s;
        return this.began ?? new Date(Date.now() - 1_000 * age);
    }

    /** Undefined where the companion cannot be asked. */
    async situations(): Promise<FlightListing[] | undefined> {
        try {
            const { flights } = await this.companion.request("list_flights", undefined);
            return flights.sort((a, b) => a.name.localeCompare(b.name));
        } catch (error) {
            return error instanceof ConnectionLost ? undefined : []; // the companion says in its status why there are none
        }
    }

    /** Of the recording, those of the script that is loaded. */
    get firedOfScript(): readonly FiredTriggerEvent[] {
        return this.recording.fired.slice(this.firedBefore);
    }

    /** From its beginning, with the script's triggers: what has fired once would not fire again in another recording. */
    async record(what: string): Promise<void> {
        const { script } = this;
        if (script !== undefined && await this.act(what, "load_script", script) === undefined) return;
        if (await this.act(what, "recording_start", undefined) === undefined) return;
        this.keepEarlier(this.recording);
        this.recording = new Recording();
        this.firedBefore = 0;
        this.began = new Date();
        this.isRecording = true;
        this.lastFollow = Date.now();
        this.onRecording(false);
    }

    async stop(what: string): Promise<void> {
        if (await this.act(what, "recording_stop", undefined) === undefined) return;
        this.isRecording = false;
        await this.following; // asked before the end, it may lack the last samples
        await this.follow();
        this.lastGrowth = -Infinity;
        this.onRecording(false);
    }

    /** The fixes that nobody knows; absent where the companion has not taken the script. */
    async load(what: string, script: LoadScriptRequest): Promise<string[] | undefined> {
        await this.following;
        await this.follow();
        const { recording } = this;
        const fired = recording.fired.length;
        const answer = await this.act(what, "load_script", script);
        if (answer === undefined) return undefined;
        this.script = script;
        this.firedBefore = recording === this.recording ? fired : 0;
        this.onRecording(false);
        return answer.unresolved_fixes;
    }

    private keepEarlier({ samples, fired }: RecordedFlight): void {
        const recorded = { samples, fired };
        if (samples.length > 0) this.earlier = { recorded, began: this.beganAt(recorded) };
    }

    private lookWhetherItRuns(): void {
        const { isRunning } = this;
        if (isRunning === this.wasRunning) return;
        this.wasRunning = isRunning;
        this.onRecording(false);
    }

    /** One question at a time. */
    private follow(): Promise<void> {
        this.following ??= this.ask().finally(() => {
            this.following = undefined;
        });
        return this.following;
    }

    private async ask(): Promise<void> {
        if (this.link !== "paired") return;
        const { recording } = this;
        const { samples, fired } = recording;
        let news: RecordedFlight | undefined;
        try {
            news = await catchUp(this.companion, recording);
        } catch (error) {
            if (error instanceof ConnectionLost) return;
            throw error;
        }
        // This page has begun another one meanwhile.
        if (recording !== this.recording) return;
        if (news === undefined) {
            this.keepEarlier({ samples, fired });
            this.began = undefined;
            this.isRecording = false;
            this.firedBefore = 0;
        }
        const now = Date.now();
        this.isLate = now - this.lastFollow > MISSED_MS;
        this.lastFollow = now;
        if (news === undefined) this.lastGrowth = -Infinity;
        else if (news.samples.length > 0 && !this.isLate) this.lastGrowth = now;
        if (news === undefined || news.samples.length + news.fired.length > 0) this.onRecording(news === undefined);
    }
}
