// Prints, as one line of JSON each, what third-party readers find in a report for build servers: node count_junit.mjs
// REPORT. Must be copied beside the readers' packages, where Node finds them.

import fs from "node:fs";
import { parse } from "junit2json";
import { convertJUnitToCTRFReport } from "junit-to-ctrf";
import results from "test-results-parser";
import view from "xunit-viewer/src/cli/parse.js";

const path = process.argv[2];
const text = fs.readFileSync(path, "utf8");

const sum = (numbers) => numbers.reduce((total, one) => total + Number(one), 0);

// `red` and `skipped` are predicates; `seconds` and `message` return these values of a case. Prints the message of the
// case "Satz 1 ...", which failed. The name identifies the case, because readers return cases in different orders.
function print(reader, cases, { red, skipped, seconds, message }) {
    console.log(JSON.stringify({
        reader,
        cases: cases.length,
        red: cases.filter(red).length,
        skipped: cases.filter(skipped).length,
        seconds: sum(cases.map(seconds)),
        message: message(cases.find((one) => one.name.startsWith("Satz 1 "))),
    }));
}

print("junit2json", (await parse(text)).testsuite.flatMap((suite) => suite.testcase), {
    red: (one) => one.failure || one.error,
    skipped: (one) => one.skipped,
    seconds: (one) => one.time,
    message: (one) => one.failure[0].message,
});

print("xunit-viewer", Object.values((await view(text)).suites).flatMap((suite) => Object.values(suite.tests)), {
    red: (one) => one.status === "failure" || one.status === "error",
    skipped: (one) => one.status === "skipped",
    seconds: (one) => one.time,
    message: (one) => one.messages[1],
});

print("junit-to-ctrf", (await convertJUnitToCTRFReport(path, { log: false })).results.tests, {
    red: (one) => one.status === "failed",
    skipped: (one) => one.status === "skipped",
    seconds: (one) => one.duration / 1000,
    message: (one) => one.message,
});

print("test-results-parser", results.parse({ type: "junit", files: [path] }).suites.flatMap((suite) => suite.cases), {
    red: (one) => one.status === "FAIL",
    skipped: (one) => one.status === "SKIP",
    seconds: (one) => one.duration / 1000,
    message: (one) => one.failure,
});
