// Asks the person before something that cannot be taken back.
import { html } from "../plot/svg";
import { button } from "./parts";
import type { Say } from "./texts";

/** Whether the person says yes. One question at a time: a further one takes its place, unanswered. */
export class Question {
    private readonly text = html("p", { id: "question-text" });
    private readonly yes: HTMLButtonElement;
    readonly element: HTMLDialogElement;
    private answer: (isYes: boolean) => void = () => {};

    constructor(say: Say) {
        this.yes = button(say("yes"), () => this.close(true), { class: "grave" });
        this.element = html("dialog", { "aria-labelledby": "question-text" }, this.text,
            html("p", { class: "row" }, button(say("no"), () => this.close(false)), this.yes));
        this.element.addEventListener("cancel", () => this.close(false));
    }

    ask(text: string): Promise<boolean> {
        this.close(false);
        this.text.textContent = text;
        this.element.showModal();
        return new Promise(resolve => {
            this.answer = resolve;
        });
    }

    private close(isYes: boolean): void {
        if (this.element.open) this.element.close();
        this.answer(isYes);
        this.answer = () => {};
    }
}
