// What a companion says when it refuses.

/** A request that was refused: `name` is the case, as in docs/protocol.md, and the rest is for people. */
export class Refusal extends Error {
    readonly case: string;

    constructor(message: string) {
        super(message);
        this.case = /^[A-Za-z]+(?=\(|$)/.exec(message)?.[0] ?? message;
    }

    /** What the case is about, without its quotation marks and backslashes; empty where it says nothing. */
    get about(): string {
        const quoted = /^[A-Za-z]+\("(.*)"\)$/s.exec(this.message)?.[1] ?? "";
        return quoted.replace(/\\(?:u\{([0-9A-F]+)\}|(.))/gs, (_, code: string | undefined, one: string) =>
            code !== undefined ? String.fromCodePoint(parseInt(code, 16)) : (escapes[one] ?? one));
    }
}

const escapes: Record<string, string> = { n: "\n", r: "\r", t: "\t", "0": "\0" };

/** The connection ended before the answer came: nobody knows what became of the request. */
export class ConnectionLost extends Error {
    constructor() {
        super("the connection to the companion was lost");
    }
}
