// Rows of buttons.
import { html } from "./svg";

export interface Tool {
    label: string;
    /** What it does, for those who listen, and as a hint. */
    name: string;
    act: () => void;
}

export function toolbarOf(name: string, tools: Tool[]): HTMLElement {
    return html("div", { class: "toolbar", role: "toolbar", "aria-label": name }, ...tools.map((tool) => {
        const button = html("button", { type: "button", "aria-label": tool.name, title: tool.name }, tool.label);
        button.addEventListener("click", tool.act);
        return button;
    }));
}
