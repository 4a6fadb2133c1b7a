// What the parts of the page are made of.
import { html } from "../plot/svg";

/** A part with a heading, which screen readers list. */
export function part(id: string, heading: string, ...children: (Node | string)[]): HTMLElement {
    const title = html("h2", { id: `${id}-heading` }, heading);
    return html("section", { id, class: "part", "aria-labelledby": title.id }, title, ...children);
}

export function button(label: string, act: () => void, attributes: Record<string, string> = {}): HTMLButtonElement {
    const result = html("button", { type: "button", ...attributes }, label);
    result.addEventListener("click", act);
    return result;
}

/** A field with its label, for numbers typed with a thumb. */
export function numberField(id: string, label: string, value: string): { row: HTMLElement; input: HTMLInputElement } {
    const input = html("input", { id, type: "text", inputmode: "decimal", autocomplete: "off", value });
    return { row: html("p", { class: "field" }, html("label", { for: id }, label), input), input };
}

/** The number that stands in a field, with a point or a comma; NaN for what is none. */
export function numberIn(input: HTMLInputElement): number {
    const text = input.value.trim().replace(",", ".").replace("−", "-");
    return text === "" ? NaN : Number(text);
}

/** Changes a text only where it is another one, so that screen readers say nothing twice. */
export function setText(element: Element, text: string): void {
    if (element.textContent !== text) element.textContent = text;
}

/** Changes an attribute only where it is another one: browsers lay out anew what is set. */
export function setAttribute(element: Element, name: string, value: string): void {
    if (element.getAttribute(name) !== value) element.setAttribute(name, value);
}

/** "1:02:05" */
export function durationText(seconds: number): string {
    const whole = Math.max(0, Math.floor(seconds));
    const [hours, minutes] = [Math.floor(whole / 3600), Math.floor(whole / 60) % 60];
    const two = (number: number) => String(number).padStart(2, "0");
    return hours > 0 ? `${hours}:${two(minutes)}:${two(whole % 60)}` : `${minutes}:${two(whole % 60)}`;
}
