// The page that tarnly-track makes: the flights stand in it.
import type { PackedFlights } from "./flights";
import { unpack } from "./flights";
import { Page } from "./page";

const packed: PackedFlights = JSON.parse(document.getElementById("flights")!.textContent!);
const page = new Page(packed.flights.map(unpack), document.getElementById("page")!);
document.title = page.title;
