import test from "node:test";
import { deepEqual, equal, ok } from "node:assert/strict";
import own from "../../web/page/failures.json";
import { parseFailures } from "../../web/page/failures";
import { speakerOf } from "../../web/page/texts";

const parse = (failures: unknown[], language: "en" | "de" = "en") =>
    parseFailures(JSON.stringify({ failures }), speakerOf(language), language);
const names = (language: "en" | "de") => parseFailures(own, speakerOf(language), language).failures.map(({ name }) => name);

test("a name is one text, or one for each language", () => {
    const list = [{ name: "Pitot", dataref: "a" }, { name: { en: "Flaps", de: "Klappen" }, dataref: "b", fail: 1, repair: 2 },
        { name: { fr: "Moteur" }, dataref: "c" }];
    deepEqual(parse(list, "de"), { complaints: [], failures: [{ name: "Pitot", dataref: "a", fail: 6, repair: 0 },
        { name: "Klappen", dataref: "b", fail: 1, repair: 2 }, { name: "Moteur", dataref: "c", fail: 6, repair: 0 }] });
    deepEqual(parse(list).failures.map(({ name }) => name), ["Pitot", "Flaps", "Moteur"]);
});

test("an entry that is none is named, and the others stay", () => {
    const { failures, complaints } = parse([{ dataref: "a" }, { name: { en: 1 }, dataref: "a" }, null, "x",
        { name: "No place" }, { name: "Odd", dataref: "a", fail: "6" }, { name: "Odd", dataref: "a", repair: null },
        { name: "Misspelt", dataref: "a", fial: 3 }, { name: "Fine", dataref: "a" }]);
    deepEqual(failures.map(({ name }) => name), ["Fine"]);
    deepEqual(complaints, [
        ...[1, 2, 3, 4].map(place => `entry ${place} is left out: “name” must be a text, or texts by language`),
        "entry 5 is left out: “dataref” of “No place” must be a text",
        "entry 6 is left out: “fail” of “Odd” must be a number",
        "entry 7 is left out: “repair” of “Odd” must be a number",
        "entry 8 is left out: “Misspelt” has “fial”, which means nothing; there are name, dataref, fail, repair"]);
});

test("a file that is no list is told as such", () => {
    for (const [text, wanted] of [["[]", "it has no list “failures”"], ["null", "it has no list “failures”"], ["{", "JSON"]]) {
        let complaint = "";
        try {
            parseFailures(text, speakerOf("en"), "en");
        } catch (error) {
            complaint = (error as Error).message;
        }
        ok(complaint.includes(wanted));
    }
});

test("the companion's own list has a name in both languages for each", () => {
    deepEqual(parseFailures(own, speakerOf("de"), "de").complaints, []);
    equal(new Set(names("de")).size, names("en").length);
    deepEqual(names("de").filter(name => names("en").includes(name)), ["Generator 1"]);
});

test("why the companion has not taken a file is told in its words", () => {
    const problem = "failures.json in the data folder is larger than 256 KiB.";
    deepEqual(parseFailures(JSON.stringify({ failures: [], problem }), speakerOf("en"), "en"),
        { failures: [], complaints: [problem] });
});
