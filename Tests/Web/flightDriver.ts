// What the lesson page makes of a recording. `log FILE` prints the file that it would give people for the recording of
// another file; `compare FILE PAGE` prints how its plot differs from that of tarnly-track, a line each.
import { readFileSync } from "node:fs";
import type { RecordedFlight } from "../../web/client/messages";
import { flightOf } from "../../web/page/flightOf";
import { logText } from "../../web/page/recordingFile";
import type { PackedFlights } from "../../web/plot/flights";
import { differences } from "./sameFlight";

function recordedIn(file: string): RecordedFlight {
    const lines = readFileSync(file, "utf8").split("\n").filter(line => line !== "").map(line => JSON.parse(line));
    return {
        samples: lines.filter(({ kind }) => kind === "sample").map(({ sample }) => sample),
        fired: lines.filter(({ kind }) => kind === "fired").map(({ fired }) => fired),
    };
}

/** The moment that a recording's name tells. */
function beganOf(file: string): Date {
    const [, day, hour, minute, second] = /session-(.{10})T(..)(..)(..)Z\.jsonl$/.exec(file)!;
    return new Date(`${day}T${hour}:${minute}:${second}.25Z`);
}

const [what, file, page] = process.argv.slice(2);
if (what === "log") {
    process.stdout.write(logText(recordedIn(file)));
} else {
    const [, packed] = /<script type="application\/json" id="flights">(.*?)<\/script>/s.exec(readFileSync(page, "utf8"))!;
    const { flights: [flight] } = JSON.parse(packed) as PackedFlights;
    for (const difference of differences(flightOf(recordedIn(file), beganOf(file)), flight)) process.stdout.write(difference + "\n");
}
