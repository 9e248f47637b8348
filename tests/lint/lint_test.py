#!/usr/bin/env python3
"""Runs scripts/lint on small trees, good and bad, and checks its output."""

import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "lint"


class Lint(unittest.TestCase):
    def breaches(self, check, files):
        """The lines that the check prints for a tree of these files; if it prints no line, the status must be 0."""
        with tempfile.TemporaryDirectory() as folder:
            for name, content in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(content if isinstance(content, bytes) else content.encode())
            result = subprocess.run(
                [sys.executable, str(SCRIPT), "--root", folder, check], capture_output=True, text=True, check=False
            )
        self.assertEqual("", result.stderr)
        lines = [line for line in result.stdout.splitlines() if not line.startswith("lint:")]
        self.assertEqual(1 if lines else 0, result.returncode)
        return lines

    def assert_breach(self, check, files, *words):
        lines = self.breaches(check, files)
        self.assertEqual(1, len(lines), lines)
        for word in words:
            self.assertIn(word, lines[0])

    def assert_clean(self, check, files):
        self.assertEqual([], self.breaches(check, files))


class Platform(Lint):
    def test_platform_switch_above_the_platform_layer_is_a_breach(self):
        self.assert_breach("platform", {"base/a.cpp": "\n#ifdef _WIN32\n#endif\n"}, "base/a.cpp:2", "_WIN32")
        self.assert_breach("platform", {"testing/a.cpp": "#if defined(__linux__)\n#endif\n"}, "__linux__")
        self.assert_breach("platform", {"tests/a.cpp": "#ifdef __MINGW32__\n#endif\n"}, "__MINGW32__")

    def test_platform_header_above_the_platform_layer_is_a_breach(self):
        for header in ("windows.h", "Windows.h", "unistd.h", "sys/stat.h", "dlfcn.h", "pthread.h", "tlhelp32.h"):
            self.assert_breach("platform", {"base/a.cpp": f"#include <{header}>\n"}, header)

    def test_platform_code_in_the_platform_layer_is_clean(self):
        self.assert_clean("platform", {"base/os/a_linux.cpp": "#include <unistd.h>\n#ifdef __linux__\n#endif\n"})

    def test_words_in_comments_and_texts_are_clean(self):
        self.assert_clean("platform", {"base/a.cpp": '// not _WIN32\n/* __linux__\n */ auto a = "_WIN32";\n'})

    def test_only_one_header_may_include_windows_h(self):
        header = "#include <windows.h>\n"
        self.assert_clean("platform", {"base/os/a.h": header})
        self.assert_breach("platform", {"base/os/a.h": header, "base/os/b.h": header}, "more than one")
        self.assert_breach("platform", {"base/os/a_windows.cpp": header}, "a_windows.cpp:1")

    def test_latch_of_the_standard_library_is_a_breach(self):
        self.assert_breach("platform", {"tests/a.cpp": "std::latch end(1);\n"}, "std::latch")


class Layers(Lint):
    def test_upward_include_is_a_breach(self):
        pairs = [
            ("base/a.cpp", "testing/lutestsuite/lutestsuiteout.h"),
            ("base/os/a.h", "base/b.h"),
            ("testing/lutestsuite/lutestsuitesetup.h", "testing/lutestsuite/settings/a.h"),
            ("testing/lutestsuite/settings/a.cpp", "testing/lutestsuite/selection/a.h"),
            ("testing/lutestsuite/selection/a.cpp", "testing/lutestsuite/run/a.h"),
            ("testing/lutestsuite/report/a.cpp", "testing/lutestsuite/run/a.h"),
            ("testing/lutestsuite/run/children/a.cpp", "testing/lutestsuite/run/a.h"),
            ("testing/lutestsuite/modes/a.cpp", "testing/lutestsuitecli/a.h"),
        ]
        for upper, lower in pairs:
            with self.subTest(upper):
                files = {upper: f'#include "{lower}"\n', lower: "#pragma once\n"}
                self.assert_breach("layers", files, upper, lower)
                self.assert_clean("layers", {lower: f'#include "{upper}"\n', upper: "#pragma once\n"})

    def test_circle_of_sources_with_their_headers_is_a_breach(self):
        files = {
            "base/a.h": "#pragma once\n",
            "base/a_linux.cpp": '#include "base/a.h"\n#include "base/b.h"\n',
            "base/b.h": '#include "base/a.h"\n',
        }
        self.assert_breach("layers", files, "base/a, base/b", "in a circle")
        self.assert_clean("layers", {**files, "base/b.h": "#pragma once\n"})

    def test_include_of_tests_is_a_breach(self):
        self.assert_breach("layers", {"base/a.cpp": '#include "tests/b.h"\n'}, "tests/b.h")

    def test_missing_header_is_a_breach(self):
        self.assert_breach("layers", {"base/a.cpp": '#include "base/b.h"\n'}, "does not exist")

    def test_unknown_folder_is_a_breach(self):
        self.assert_breach("layers", {"testing/lutestsuite/cellar/a.h": "#pragma once\n"}, "no layer")


class Links(Lint):
    """Trees with a build: each source is compiled to where the build of linux-debug leaves its object."""

    FOLDERS = {"base/": "LbBase", "testing/lutestsuite/": "lutestsuite_objects"}

    def lint(self, files, touched=(), uncompiled=(), options=()):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, content in files.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(content)
                if name.endswith(".cpp") and name not in uncompiled:
                    self.compile(root, name)
            for name in touched:
                later = time.time() + 10
                os.utime(root / name, (later, later))
            result = subprocess.run(
                [sys.executable, str(SCRIPT), "--root", folder, *options, "links"],
                capture_output=True, text=True, check=False,
            )
        self.assertEqual("", result.stderr)
        lines = result.stdout.splitlines()
        breaches = [line for line in lines if not line.startswith("lint:")]
        self.assertEqual(1 if breaches else 0, result.returncode)
        return breaches, [line for line in lines if "linux-debug" in line and line.startswith("lint:")]

    def compile(self, root, name):
        folder = next(folder for folder in self.FOLDERS if name.startswith(folder))
        target = root / "build/linux-debug" / folder / "CMakeFiles" / f"{self.FOLDERS[folder]}.dir"
        target = target / (name.removeprefix(folder) + ".o")
        target.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["g++", "-c", "-I", str(root), str(root / name), "-o", str(target)], check=True)

    def assert_links(self, files, *expected):
        breaches, notes = self.lint(files)
        self.assertEqual([], notes)
        self.assertEqual(len(expected), len(breaches), breaches)
        for words, line in zip(expected, breaches):
            for word in words:
                self.assertIn(word, line)

    @staticmethod
    def calls(own, other):
        return f"void {other}();\nvoid {own}() {{ {other}(); }}\n"

    def test_upward_call_without_an_include_is_a_breach(self):
        files = {
            "testing/lutestsuite/settings/a.cpp": self.calls("a", "b"),
            "testing/lutestsuite/run/b.cpp": "void b() {}\n",
        }
        self.assert_links(files, ("settings/a.cpp", "calls b()", "run/b.cpp"))

    def test_downward_call_is_clean(self):
        files = {
            "testing/lutestsuite/settings/a.cpp": "void a() {}\n",
            "testing/lutestsuite/run/b.cpp": self.calls("b", "a"),
        }
        self.assert_links(files)

    def test_circle_of_folders_of_one_layer_is_a_breach(self):
        files = {
            "testing/lutestsuite/settings/a.cpp": self.calls("a", "b") + "void c() {}\n",
            "testing/lutestsuite/heap/b.cpp": "void b() {}\n",
            "testing/lutestsuite/heap/d.cpp": self.calls("d", "c"),
        }
        self.assert_links(files, ("folders in a circle", "heap", "settings"))

    def test_circle_of_an_include_and_a_call_is_a_breach(self):
        files = {
            "testing/lutestsuite/settings/a.cpp": self.calls("a", "b"),
            "testing/lutestsuite/settings/a.h": "#pragma once\n",
            "testing/lutestsuite/heap/b.cpp": '#include "testing/lutestsuite/settings/a.h"\nvoid b() {}\n',
        }
        self.assert_links(files, ("folders in a circle", "heap", "settings"))

    def test_circle_of_files_of_one_folder_is_a_breach(self):
        files = {
            "testing/lutestsuite/heap/a.cpp": self.calls("a", "b"),
            "testing/lutestsuite/heap/b.cpp": self.calls("b", "c"),
            "testing/lutestsuite/heap/c.cpp": self.calls("c", "a"),
        }
        self.assert_links(files, ("files that call each other", "heap/a.cpp", "heap/b.cpp", "heap/c.cpp"))

    def test_circle_of_files_of_base_is_a_breach(self):
        files = {"base/a.cpp": self.calls("a", "b"), "base/b.cpp": self.calls("b", "a")}
        self.assert_links(files, ("files that call each other", "base/a.cpp", "base/b.cpp"))

    def test_call_of_the_platform_layer_by_the_text_layer_is_a_breach(self):
        files = {"base/lbencoding.cpp": self.calls("a", "b"), "base/os/files_linux.cpp": "void b() {}\n"}
        self.assert_links(files, ("base/lbencoding.cpp", "calls b()", "base/os/files_linux.cpp"))

    def test_calls_of_the_text_layer_are_clean(self):
        files = {
            "base/lbencoding.cpp": "void a() {}\n",
            "base/os/linux/keeper.cpp": self.calls("b", "a"),
            "base/os/files_linux.cpp": self.calls("c", "b"),
            "base/lbfilesystem.cpp": self.calls("d", "c"),
        }
        self.assert_links(files)

    def test_inline_functions_of_many_objects_are_not_calls(self):
        files = {
            "testing/lutestsuite/settings/a.cpp": "inline int b() { return 1; }\nint a() { return b(); }\n",
            "testing/lutestsuite/run/b.cpp": "inline int b() { return 1; }\nint c() { return b(); }\n",
        }
        self.assert_links(files)

    def test_missing_build_is_noted(self):
        source = "testing/lutestsuite/settings/a.cpp"
        breaches, notes = self.lint({source: "void a() {}\n"}, uncompiled=[source])
        self.assertEqual([], breaches)
        self.assertIn("skipped, nothing is built", notes[0])

    def test_build_older_than_a_source_is_noted(self):
        source = "testing/lutestsuite/settings/a.cpp"
        breaches, notes = self.lint({source: "void a() {}\n"}, touched=[source])
        self.assertEqual([], breaches)
        self.assertIn("older than " + source, notes[0])

    def test_build_older_than_a_header_is_noted(self):
        inner = "testing/lutestsuite/settings/b.h"
        files = {
            inner: "",
            "testing/lutestsuite/settings/a.h": f'#include "{inner}"\n',
            "testing/lutestsuite/settings/a.cpp": '#include "testing/lutestsuite/settings/a.h"\nvoid a() {}\n',
        }
        _, notes = self.lint(files, touched=[inner])
        self.assertIn("older than " + inner, notes[0])

    def test_outdated_build_is_a_breach_if_it_must_be_current(self):
        source = "testing/lutestsuite/settings/a.cpp"
        files = {source: "void a() {}\n"}
        breaches, _ = self.lint(files, touched=[source], options=["--built=linux-debug"])
        self.assertEqual([f"build/linux-debug is older than {source} [links]"], breaches)
        breaches, notes = self.lint(files, touched=[source], options=["--built=linux-asan"])
        self.assertEqual([], breaches)
        self.assertIn("older than " + source, notes[0])

    def test_source_that_was_not_compiled_is_noted(self):
        files = {name: "" for name in ("testing/lutestsuite/settings/a.cpp", "testing/lutestsuite/settings/b.cpp")}
        _, notes = self.lint(files, uncompiled=["testing/lutestsuite/settings/b.cpp"])
        self.assertIn("older than testing/lutestsuite/settings/b.cpp", notes[0])


class Sizes(Lint):
    @staticmethod
    def function(lines, head="int f()"):
        return head + "\n{\n" + "    g();\n" * (lines - 2) + "}\n"

    def test_file_length_is_limited(self):
        self.assert_clean("sizes", {"base/a.h": "//\n" * 499})
        self.assert_breach("sizes", {"base/a.h": "//\n" * 500}, "500 lines")
        self.assert_clean("sizes", {"base/a.h": "// long because it is one table\n" + "//\n" * 500})

    def test_function_length_is_limited(self):
        heads = [
            "int f()",
            "auto C::f(int a) const noexcept -> std::vector<int>",
            "C::C(int a)\n    : m_a(a)\n    , m_b{a}",
            "TEST(Suite, Name)",
            "namespace a\n{\nclass C : public B\n{\npublic:\n    void f() override",
        ]
        for head in heads:
            with self.subTest(head):
                self.assert_clean("sizes", {"base/a.cpp": self.function(60, head)})
                self.assert_breach("sizes", {"base/a.cpp": self.function(61, head)}, "function of 61 lines")

    def test_long_function_with_a_reason_is_clean(self):
        reason = "// long because the steps share all of their state\n"
        self.assert_clean("sizes", {"base/a.cpp": reason + self.function(80)})

    def test_tables_and_types_are_not_functions(self):
        self.assert_clean("sizes", {"base/a.cpp": "const S c_Table[] = {\n" + "    {f(1), 2},\n" * 80 + "};\n"})
        self.assert_clean("sizes", {"base/a.h": "class C\n{\n" + "    void f();\n" * 80 + "};\n"})

    def test_braces_in_texts_and_preprocessor_lines_do_not_count(self):
        body = 'int f()\n{\n    g("}", \'{\', R"(}})");\n#define A {\n' + "    g();\n" * 70 + "}\n"
        self.assert_breach("sizes", {"base/a.cpp": body}, "function of 74 lines")

    def test_line_length_is_limited(self):
        self.assert_clean("sizes", {"scripts/a": "# " + "a" * 118 + "\n", "base/a.h": "//" + "a" * 130 + "\n"})
        self.assert_breach("sizes", {"scripts/a": "# " + "a" * 119 + "\n"}, "121 characters")


class Text(Lint):
    def test_encoding_must_be_utf8_without_byte_order_mark(self):
        self.assert_clean("text", {"base/a.h": "// äöü\n"})
        self.assert_breach("text", {"base/a.h": b"// \xe4\n"}, "not UTF-8")
        self.assert_breach("text", {"base/a.h": b"\xef\xbb\xbf//\n"}, "byte order mark")

    def test_wrong_blanks_and_line_ends_are_breaches(self):
        self.assert_breach("text", {"base/a.h": "//\r\n"}, "carriage return")
        self.assert_breach("text", {"base/a.h": "// \n"}, "blanks")
        self.assert_breach("text", {"base/a.h": "\t//\n"}, "tab")
        self.assert_breach("text", {"base/a.h": "//"}, "line feed")
        self.assert_breach("text", {"base/a.h": "//\n\n"}, "line feed")

    def test_wrong_line_ends_of_embedded_texts_are_breaches(self):
        style = "testing/lutestsuite/resources/a.css"
        self.assert_clean("text", {style: "a\r\nb\r\n"})
        self.assert_breach("text", {style: "a\r\nb\n"}, style, "carriage return and line feed")
        self.assert_breach("text", {style: "a\r\rb\r\n"}, style, "carriage return and line feed")

    def test_data_files_are_not_checked(self):
        self.assert_clean("text", {"tests/golden/a.txt": b"\t\xe4 \r\n\n", "examples/data/C/a.txt": b"\xe4"})

    def test_forbidden_words_are_breaches(self):
        # Split, so that this file does not contain the words itself.
        for text in ("see /home/me/a", "as the specifi" "cation says", "Part " "3.1", "// TO" "DO"):
            with self.subTest(text):
                self.assert_breach("text", {"README.md": text + "\n"}, "README.md:1")
        self.assert_clean("text", {"README.md": "particular parts, todo, homework/a\n"})


class German(Lint):
    TABLE = "docs/german-texts.md"

    def test_text_that_the_table_lacks_is_a_breach(self):
        self.assert_breach("german", {"base/a.cpp": 'auto a = L"Fehler: kein Platz";\n'}, "base/a.cpp:1", "kein Platz")
        table = {self.TABLE: "| `Fehler: kein Ort` | no place |\nFehler: kein Platz\n"}
        self.assert_breach("german", table | {"testing/a.cpp": '\nf(L"Fehler: kein Platz\\n");\n'}, "testing/a.cpp:2")

    def test_listed_text_with_values_in_parts_is_clean(self):
        table = "| `Datei ... ist zu groß, ... Bytes` | too large |\n"
        source = 'f(L"\\tDatei %s ist "\n  L"zu groß, %5.2f Bytes\\n", a);\n'
        self.assert_clean("german", {self.TABLE: table, "base/a.cpp": source})

    def test_text_in_markup_and_in_scripts_is_checked(self):
        table = "| `Läufe`, `Nächster` | runs, next |\n"
        files = {self.TABLE: table, "testing/a.cpp": 'f("<th id=\\"a\\">Läufe</th>");\n',
                 "testing/a.js": "var a = 'N\\u00E4chster';\n"}
        self.assert_clean("german", files)
        self.assertEqual(2, len(self.breaches("german", files | {self.TABLE: "no row\n"})))

    def test_texts_of_one_german_word_are_checked(self):
        for text in ("Fortsetzen:", "%u. Versuch%s: %s", "... (%u Zeilen)", "<th>Tempo</th>"):
            self.assert_breach("german", {"testing/a.cpp": f'f("{text}");\n'}, "testing/a.cpp:1")

    def test_comments_and_english_texts_are_clean(self):
        self.assert_clean("german", {"base/a.cpp": '// "Fehler"\n#include "für.h"\nauto a = "no error";\n'})


class Headers(Lint):
    def test_header_that_needs_another_first_is_a_breach(self):
        header = {"base/a.h": "#pragma once\ninline std::string f() { return {}; }\n"}
        lines = self.breaches("headers", header)
        self.assertTrue(lines)
        self.assertIn("base/a.h: does not compile alone", lines[0])
        self.assertTrue(self.breaches("headers", {**header, "base/a.cpp": '#include <string>\n#include "base/a.h"\n'}))

    def test_header_that_a_source_includes_first_is_left_to_the_build(self):
        self.assert_clean("headers", {"base/a.h": "#pragma once\nnonsense\n", "base/a.cpp": '#include "base/a.h"\n'})

    def test_header_without_guard_is_a_breach(self):
        self.assertTrue(self.breaches("headers", {"base/a.h": "struct S\n{\n};\n"}))

    def test_header_that_compiles_alone_is_clean(self):
        self.assert_clean("headers", {"base/a.h": "#pragma once\n#include <string>\nstruct S\n{\n};\n"})

    def test_header_of_another_framework_is_left_to_the_build(self):
        header = {"testing/lutestsuite/catch2.h": "#pragma once\n#include <missing>\n"}
        self.assertTrue(self.breaches("headers", header))
        self.assert_clean("headers", {**header, "tests/foreign/catch2/adapter.cpp": "\n"})


if __name__ == "__main__":
    unittest.main()
