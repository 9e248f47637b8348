// Prints, as one line of JSON each, how many cases two third-party readers find in a report: node count_cases.mjs
// REPORT. Must be copied beside the readers' packages, where Node finds them.

import fs from "node:fs";
import { parse } from "junit2json";
import view from "xunit-viewer/src/cli/parse.js";

// These two readers take text, so this script decodes the file as its XML declaration says.
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
