// What the page uses of D3, whose packages bring no types: the same in their releases 1 to 3.
declare module "d3-scale" {
    export interface Linear {
        (value: number): number;
        domain(values: [number, number]): this;
        domain(): number[];
        range(values: [number, number]): this;
        nice(count?: number): this;
        ticks(count: number): number[];
    }
    export function scaleLinear(): Linear;
}
declare module "d3-selection" {
    export interface Selection {
        call(f: unknown, ...rest: unknown[]): this;
        style(name: string, value: string): this;
        on(type: string, listener: unknown): this;
    }
    export function select(node: Element): Selection;
}
declare module "d3-zoom" {
    import type { Selection } from "d3-selection";
    export interface Transform {
        readonly k: number;
        readonly x: number;
        readonly y: number;
        invertX(x: number): number;
        applyX(x: number): number;
        applyY(y: number): number;
        translate(x: number, y: number): Transform;
        scale(k: number): Transform;
    }
    export interface Zoom {
        (selection: Selection): void;
        extent(corners: [[number, number], [number, number]]): this;
        translateExtent(corners: [[number, number], [number, number]]): this;
        scaleExtent(limits: [number, number]): this;
        filter(accepts: (this: Element, first: unknown) => boolean): this;
        on(type: string, listener: () => void): this;
        transform: unknown;
    }
    export function zoom(): Zoom;
    export const zoomIdentity: Transform;
    export function zoomTransform(node: Element): Transform;
}
