// What the tests use of Node, whose packages bring no types.
declare module "node:test" {
    export default function test(name: string, body: () => void | Promise<void>): void;
}
declare module "node:assert/strict" {
    export function equal(found: unknown, wanted: unknown): void;
    export function deepEqual(found: unknown, wanted: unknown): void;
    export function rejects(found: Promise<unknown>, wanted: object): Promise<void>;
    export function ok(value: unknown): asserts value;
}
declare module "node:readline" {
    export function createInterface(options: { input: unknown }): {
        on(event: "line", heard: (line: string) => void): void;
        on(event: "close", heard: () => void): void;
    };
}
declare module "node:fs" {
    export function readFileSync(file: string, coding: "utf8"): string;
}
declare module "ws" {
    export class WebSocket {
        constructor(url: string);
    }
}
// The bundler gives files as texts.
declare module "*.md" {
    const text: string;
    export default text;
}
declare module "*.json" {
    const text: string;
    export default text;
}
declare const process: { argv: string[]; stdin: unknown; stdout: { write(text: string): void } };
declare function setImmediate(done: () => void): void;
