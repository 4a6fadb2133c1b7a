// What the tests use of Node, whose packages bring no types.
declare module "node:test" {
    export default function test(name: string, body: () => void): void;
}
declare module "node:assert/strict" {
    export function equal(found: unknown, wanted: unknown): void;
    export function deepEqual(found: unknown, wanted: unknown): void;
    export function ok(value: unknown): asserts value;
}
