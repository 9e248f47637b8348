// Counts what two readers of others see in a report: node count_cases.mjs REPORT. One line of JSON each. Stands beside
// the readers while it runs, since that is where they are found.

import fs from "node:fs";
import { parse } from "junit2json";
import view from "xunit-viewer/src/cli/parse.js";

// Readers of files take the declared encoding; these two take text.
const text = fs.readFileSync(process.argv[2], "latin1");

function print(reader, cases, failures, errors) {
    console.log(JSON.stringify({ reader, cases, failures, errors }));
}

const suite = await parse(text);
const cases = suite.testcase;
print("junit2json", cases.length, cases.filter((one) => one.failure).length, cases.filter((one) => one.error).length);

const tests = Object.values((await view(text)).suites).flatMap((one) => Object.values(one.tests));
const withStatus = (status) => tests.filter((one) => one.status === status).length;
print("xunit-viewer", tests.length, withStatus("failure"), withStatus("error"));
