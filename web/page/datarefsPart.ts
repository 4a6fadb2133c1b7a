// Any dataref by its name: watched, and written.
import { html } from "../plot/svg";
import type { Lesson } from "./lesson";
import { button, numberIn, part, setText } from "./parts";
import type { Say } from "./texts";

export class DatarefsPart {
    private readonly rows = new Map<string, HTMLElement>();
    private readonly list = html("ul", { class: "rows" });
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say, names: string[],
        private readonly keep: (names: string[]) => void) {
        const input = html("input", { id: "dataref", autocapitalize: "none", autocomplete: "off", spellcheck: "false" });
        const form = html("form", { class: "adding" }, html("label", { for: "dataref" }, say("datarefName")), input,
            html("button", { type: "submit" }, say("add")));
        form.addEventListener("submit", event => {
            event.preventDefault();
            const name = input.value.trim();
            if (name === "" || this.rows.has(name)) return;
            this.add(name);
            this.keepNames();
            input.value = "";
        });
        this.element = part("datarefs", say("datarefs"), this.list, form);
        for (const name of names) this.add(name);
    }

    get names(): string[] {
        return [...this.rows.keys()];
    }

    show(): void {
        const { values, present } = this.lesson;
        for (const [name, row] of this.rows) {
            const value = present[name];
            const state = values.stateOf(name);
            setText(row, value !== undefined ? String(Number(value.toPrecision(7)))
                : state === "unknown" ? this.say("unknownName") : state === "none" ? this.say("noValue") : "–");
        }
    }

    private add(name: string): void {
        // Not told at each push by who reads the page aloud.
        const value = html("output", { "aria-live": "off" });
        const written = html("input", { inputmode: "decimal", "aria-label": name, size: 6 });
        const write = () => {
            const number = numberIn(written);
            if (Number.isNaN(number)) return written.focus();
            const [, base, index] = /^(.*?)(?:\[(\d+)\])?$/.exec(name)!;
            void this.lesson.act(`${name} = ${number}`, "dataref_set_values",
                { datarefs: [{ name: base, value: number, ...(index === undefined ? {} : { index: Number(index) }) }] });
        };
        const row = html("li", {}, html("code", {}, name), value, written, button(this.say("write"), write, { "aria-label": `${name}: ${this.say("write")}` }),
            button("×", () => {
                this.rows.delete(name);
                row.remove();
                this.lesson.values.unwant(name);
                this.keepNames();
            }, { "aria-label": this.say("remove", name) }));
        this.rows.set(name, value);
        this.list.append(row);
        this.lesson.values.want([name]);
    }

    private keepNames(): void {
        this.keep(this.names);
    }
}
