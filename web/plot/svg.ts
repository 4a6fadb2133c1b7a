// Elements of the page. Texts that come from a recording go in as text, never as markup.

const SVG = "http://www.w3.org/2000/svg";

export type Attributes = { [name: string]: string | number };

export function html<K extends keyof HTMLElementTagNameMap>(
    tag: K, attributes: Attributes = {}, ...children: (Node | string)[]): HTMLElementTagNameMap[K] {
    const result = document.createElement(tag);
    for (const name of Object.keys(attributes)) result.setAttribute(name, String(attributes[name]));
    result.append(...children);
    return result;
}

export function svg<K extends keyof SVGElementTagNameMap>(
    tag: K, attributes: Attributes = {}, ...children: (Node | string)[]): SVGElementTagNameMap[K] {
    const result = document.createElementNS(SVG, tag);
    for (const name of Object.keys(attributes)) result.setAttribute(name, String(attributes[name]));
    result.append(...children);
    return result;
}

/** A picture whose units are the pixels of the page; on paper it takes the width that there is. */
export function picture(width: number, height: number, ...children: Node[]): SVGSVGElement {
    return svg("svg", { viewBox: `0 0 ${width} ${height}`, width, height, "aria-hidden": "true" }, ...children);
}

export function text(x: number, y: number, label: string, attributes: Attributes = {}): SVGTextElement {
    return svg("text", { x, y, ...attributes }, label);
}

/** A coordinate, to a tenth of a pixel. */
export function px(value: number): number {
    return Math.round(value * 10) / 10;
}
