// Switches of an instructor: the simulator's commands, and failures.
import { html } from "../plot/svg";
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
/** What the simulator's failure datarefs take: fails now, works. */
const FAILED = 6;
const WORKS = 0;

/** An entry of the list of failures, a file that people may edit. */
export interface Failure {
    name: string;
    dataref: string;
    fail?: number;
    repair?: number;
}

/** What of a file is a list of failures; throws an Error for what is none. */
export function parseFailures(text: string): Failure[] {
    const content = JSON.parse(text) as unknown;
    const list = (content as { failures?: unknown } | null)?.failures;
    if (!Array.isArray(list)) throw new Error('no "failures"');
    return list.filter((one): one is Failure => typeof one?.name === "string" && typeof one?.dataref === "string");
}

export class Controls {
    private readonly failures = html("ul", { class: "rows" });
    readonly element: HTMLElement;

    constructor(private readonly lesson: Lesson, private readonly say: Say) {
        const run = (label: string, command: string) => button(label, () => void lesson.act(label, "run_command", { name: command }));
        const switches = html("p", { class: "buttons" }, ...commands.map(({ key, command }) => run(say(key), command)));
        this.element = part("controls", say("controls"), switches,
            html("details", {}, html("summary", {}, say("failures")), this.failures, run(say("repairAll"), REPAIR_ALL)));
    }

    showFailures(failures: Failure[]): void {
        this.failures.replaceChildren(...failures.map(failure => {
            const set = (label: string, value: number) => button(label, () => void this.lesson.act(
                `${failure.name}: ${label}`, "dataref_set_values", { datarefs: [{ name: failure.dataref, value }] }),
                { "aria-label": `${failure.name}: ${label}` });
            return html("li", {}, html("span", {}, failure.name), set(this.say("failNow"), failure.fail ?? FAILED),
                set(this.say("repair"), failure.repair ?? WORKS));
        }));
    }
}
