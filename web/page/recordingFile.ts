// A recording as a file that the other tools read: the log's own form, docs/recording-format.md.
import type { RecordedFlight } from "../client/messages";

/** One JSON object a line; a trigger that fired on a sample follows it. */
export function logText(recorded: RecordedFlight): string {
    const lines: string[] = [];
    let next = 0;
    const takeFired = (until: number) => {
        for (; next < recorded.fired.length && recorded.fired[next].elapsed_s <= until; ++next) {
            lines.push(JSON.stringify({ kind: "fired", fired: recorded.fired[next] }));
        }
    };
    for (const sample of recorded.samples) {
        takeFired(sample.elapsed_s - 1e-9);
        lines.push(JSON.stringify({ kind: "sample", sample }));
        takeFired(sample.elapsed_s);
    }
    takeFired(Infinity);
    return lines.map(line => line + "\n").join("");
}

/** As the companion names it: after the moment at which the recording began, in UTC. */
export function logName(began: Date): string {
    return `session-${began.toISOString().slice(0, 19).replaceAll(":", "")}Z.jsonl`;
}
