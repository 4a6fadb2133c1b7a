// A client that does what its standard input says, one JSON object a line, and tells on its standard output what comes.
import { createInterface } from "node:readline";
import { WebSocket } from "ws";
import { Companion } from "../../web/client/companion";
import type { Socket } from "../../web/client/connection";
import type { Messages } from "../../web/client/messages";
import { catchUp, Recording } from "../../web/client/recording";

const tell = (what: object) => process.stdout.write(JSON.stringify(what) + "\n");

const [url, password] = process.argv.slice(2);
const companion = new Companion({ url, password, open: to => new WebSocket(to) as Socket, pauses: [50, 200] });
companion.onLink = link => tell({ link });
companion.onValues = values => tell({ values });
const recording = new Recording();

type Order = { request: keyof Messages; params: never } | { subscribe: string[] } | { catchUp: true } | { pair: string };

async function obey(order: Order): Promise<void> {
    if ("request" in order) tell({ answer: await companion.request(order.request, order.params) });
    if ("subscribe" in order) tell({ answer: await companion.subscribe(order.subscribe) });
    if ("pair" in order) companion.pairWith(order.pair);
    if ("catchUp" in order) {
        const news = await catchUp(companion, recording);
        tell({ isAnew: news === undefined, samples: recording.samples, fired: recording.fired });
    }
}

const lines = createInterface({ input: process.stdin });
lines.on("line", line => {
    obey(JSON.parse(line) as Order).catch((error: Error) => tell({ failed: error.message }));
});
lines.on("close", () => companion.end());
void companion.run();
