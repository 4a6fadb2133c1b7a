// How the connection stands, and what came of what was asked for.
import { html } from "../plot/svg";
import type { Lesson, Outcome } from "./lesson";
import { button, setText } from "./parts";
import { PAUSED } from "./readings";
import type { Say } from "./texts";

const DONE_MS = 4_000;

export class Header {
    private readonly state = html("p", { id: "state", role: "status" });
    private readonly words = html("p", { id: "words", role: "status" });
    private readonly outcome = html("p", { id: "outcome", role: "status" });
    private readonly password = html("input", { id: "password", type: "password", autocomplete: "current-password" });
    private readonly keep = html("input", { id: "keep", type: "checkbox" });
    /** In place of the lesson, as long as the companion does not know who is there. */
    readonly pairing: HTMLElement;
    readonly element: HTMLElement;
    /** For when it no longer is to be kept; hidden where none is. */
    readonly forget: HTMLButtonElement;
    /** To be kept once the companion has taken it. */
    private untried: string | undefined;
    private hasTried = false;
    private wasAway = false;
    private fading: ReturnType<typeof setTimeout> | undefined;

    constructor(private readonly lesson: Lesson, private readonly say: Say, isKept: boolean,
        private readonly keepPassword: (password?: string) => void, beside: readonly HTMLElement[]) {
        const form = html("form", { id: "pairing" },
            // For managers of passwords, which want a name.
            html("input", { type: "text", autocomplete: "username", value: "tarnly", hidden: "" }),
            html("label", { for: "password" }, say("password")), this.password,
            html("label", { for: "keep", class: "switch" }, this.keep, " ", say("keepPassword")),
            html("button", { type: "submit" }, say("pair")));
        form.addEventListener("submit", event => {
            event.preventDefault();
            this.hasTried = true;
            this.untried = this.keep.checked ? this.password.value : undefined;
            if (!this.keep.checked) this.keepNone();
            lesson.pairWith(this.password.value);
        });
        this.element = html("header", {}, html("h1", {}, say("title")), this.state, ...beside, this.words, this.outcome);
        this.keep.checked = isKept;
        this.forget = button(say("forgetPassword"), () => {
            this.keep.checked = false;
            this.keepNone();
            this.tell({ done: say("forgetPassword") });
        });
        this.forget.hidden = !isKept;
        this.pairing = html("div", { role: "main", hidden: "" }, form);
    }

    show(): void {
        const { say } = this;
        const { link } = this.lesson;
        const { state, words } = this.lesson.simulator;
        this.pairing.hidden = link !== "refused";
        if (link !== "paired") {
            this.be(link === "refused" ? "refused" : "looking", say(link === "refused" ? "refused" : "looking"),
                link === "refused" && this.hasTried ? say("wrongPassword") : "");
            return;
        }
        if (this.untried !== undefined) {
            this.keepPassword(this.untried);
            this.forget.hidden = false;
            this.untried = undefined;
        }
        const isPaused = this.lesson.present[PAUSED] === 1;
        if (state === "flight" && this.lesson.values.isQuiet) {
            this.be("waiting", say("quiet"), "");
            return;
        }
        if (state === "flight") {
            const isBack = this.wasAway;
            this.wasAway = false;
            this.be("flight", say(isPaused ? "paused" : "flight"), isBack ? say("back") : "");
            return;
        }
        this.wasAway ||= state === "away" || state === "silent";
        // "Load a flight" is all that the companion's own words would add.
        this.be(state, say(state === "unknown" ? "paired" : state), state === "menu" ? "" : words);
    }

    /** For some seconds; what was not done stays until something else is asked for. */
    tell(outcome: Outcome): void {
        const text = "done" in outcome ? this.say("done", outcome.done)
            : "lost" in outcome ? this.say("lost", outcome.lost)
            : "unsent" in outcome ? this.say("unsent", outcome.unsent) : `${this.say("failed", outcome.failed)} – ${outcome.words}`;
        this.outcome.className = "done" in outcome ? "fine" : "amiss";
        setText(this.outcome, text);
        clearTimeout(this.fading);
        if ("done" in outcome) this.fading = setTimeout(() => setText(this.outcome, ""), DONE_MS);
    }

    private keepNone(): void {
        this.untried = undefined;
        this.keepPassword(undefined);
        this.forget.hidden = true;
    }

    private be(name: string, text: string, words: string): void {
        this.element.dataset.state = name;
        setText(this.state, text);
        // What the simulator's return was told with stays for as long as it flies.
        if (words !== "" || name !== "flight") setText(this.words, words);
    }
}
