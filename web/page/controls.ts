// Switches of an instructor: the simulator's commands, and failures.
import { html } from "../plot/svg";
import type { FailureList } from "./failures";
import type { Lesson } from "./lesson";
import { button, part } from "./parts";
import type { Say, TextKey } from "./texts";

const commands: { key: TextKey; command: string }[] = [
    { key: "gearToggle", command: "sim/flight_controls/landing_gear_toggle" },
    { key: "flapsDown", command: "sim/flight_controls/flaps_down" },
    { key: "flapsUp", command: "sim/flight_controls/flaps_up" },
    { key: "parkingBrake", command: "sim/flight_controls/brakes_toggle_max" },
];

const REPAIR_ALL = "sim/operation/fix_all_systems";

export class Controls {
    private readonly failures = html("ul", { class: "rows" });
    private readonly complaints = html("div", {});
    private shown = "";
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say) {
        const run = (label: string, command: string) => button(label, () => void lesson.act(label, "run_command", { name: command }));
        const switches = html("p", { class: "buttons" }, ...commands.map(({ key, command }) => run(say(key), command)));
        this.element = part("controls", say("controls"), switches,
            html("details", {}, html("summary", {}, say("failures")), this.complaints, this.failures,
                run(say("repairAll"), REPAIR_ALL)));
    }

    showFailures(list: FailureList): void {
        // Rows that stay as they are keep the focus.
        const content = JSON.stringify(list);
        if (content === this.shown) return;
        this.shown = content;
        const { failures, complaints } = list;
        this.complaints.replaceChildren(...complaints.map(one => html("p", { class: "amiss" }, this.say("failuresAmiss", one))));
        this.failures.replaceChildren(...failures.map(({ name, dataref, fail, repair }) => {
            const set = (label: string, value: number) => button(label, () => void this.lesson.act(
                `${name}: ${label}`, "dataref_set_values", { datarefs: [{ name: dataref, value }] }),
                { "aria-label": `${name}: ${label}` });
            return html("li", {}, html("span", {}, name), set(this.say("failNow"), fail), set(this.say("repair"), repair));
        }));
    }
}
