"""Mistakes that pipelines.py finds in the recipes of the documents."""

import pathlib
import sys
import unittest

import yaml

sys.dont_write_bytecode = True

import documentparts as parts  # noqa: E402
import pipelines  # noqa: E402

TEXT = (pathlib.Path(__file__).resolve().parents[2] / "docs" / "runner.md").read_text(encoding="utf-8")
GITLAB, GITHUB, CACHED = parts.snippets_of(TEXT, "yaml")


class Recipes(unittest.TestCase):
    def test_have_the_jobs_that_the_text_describes(self):
        jobs = {job.name: job for job in pipelines.jobs_of(GITLAB)}

        self.assertEqual(list(jobs), ["build", "tests", "whole-run"])
        self.assertEqual(jobs["tests"].parallel, 4)
        self.assertEqual(jobs["tests"].reports, ["results-*/junit.xml"])
        self.assertEqual(jobs["whole-run"].artifacts, ["results"])
        self.assertEqual(len(jobs["build"].commands), 2)
        (job,) = pipelines.jobs_of(GITHUB)
        self.assertEqual(job.artifacts, ["results"])
        self.assertEqual(len(job.commands), 5)
        self.assertTrue(job.commands[4].startswith("jq -r "), job.commands[4])
        (job,) = pipelines.jobs_of(CACHED)
        self.assertEqual(len(job.commands), 4)

    def refuse(self, text, before, after):
        with self.subTest(after=after):
            self.assertEqual(text.count(before), 1)
            with self.assertRaises((ValueError, yaml.YAMLError)):
                pipelines.jobs_of(text.replace(before, after))

    def test_are_refused_with_mistakes_for_gitlab(self):
        for before, after in (
                ("    reports:\n      junit:", "  reports:\n    junit:"),
                ("    reports:\n      junit:", "    junit:"),
                ("    reports:\n      junit:", "    reports:\n      xunit:"),
                ('"results-*"', '"results-*'),
                ("stage: report\n", "stage: reports\n"),
                ("  parallel: 4\n  script:", "  parallel: 4\n  scripts:"),
                ("    - cmake --build build\n", "    - cmake: --build build\n"),
                ("    - cmake --build build\n", "    cmake --build build\n"),
                ("  artifacts:\n    paths:", "  script: true\n  artifacts:\n    paths:"),
                ("stages: [build, test, report]", "stages: build"),
                ("parallel: 4", "parallel: four")):
            self.refuse(GITLAB, before, after)

    def test_are_refused_with_mistakes_about_a_cache(self):
        for before, after in (("    paths: [last]\n", "    path: [last]\n"), ("    paths: [last]\n", ""),
                              ("  after_script:\n", "  afterscript:\n")):
            self.refuse(CACHED, before, after)

    def test_are_refused_with_mistakes_for_github(self):
        for before, after in (
                ("on: push\n", ""),
                ("    steps:\n", "    script:\n"),
                ("      - run: cmake --build build\n", "      - runs: cmake --build build\n"),
                ("      - run: cmake --build build\n", "      - run: [cmake, --build, build]\n"),
                ("      - run: cmake --build build\n", "    - run: cmake --build build\n"),
                ("          path: results\n", "        path: results\n"),
                ("actions/checkout@v4", "actions/checkout"),
                ("        run: |\n", "        run:\n")):
            self.refuse(GITHUB, before, after)


if __name__ == "__main__":
    unittest.main(verbosity=2)
