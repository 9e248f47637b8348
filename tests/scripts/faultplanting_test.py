"""Which faults scripts/plant-faults draws from a small checkout, and which tests it runs first."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from faultplanting import changes, trial  # noqa: E402
from lintchecks.tree import Tree  # noqa: E402


class Draw(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def write(self, text, name="base/a.cpp"):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def draw(self, patterns=(), seed=1):
        return changes.draw(Tree(self.root), patterns, seed)

    def changed(self, statement):
        """The changes that are drawn for one statement of a function."""
        self.write(f"void f()\n{{\n    {statement}\n}}\n")
        return sorted(change.changed_line().strip() for change in self.draw())

    def test_inverts_comparisons_and_conditions(self):
        self.assertEqual(self.changed("if (a == b)"), ["if (!(a == b))", "if (a != b)"])
        self.assertEqual(self.changed("return a < b;"), ["return a <= b;", "return a >= b;"])

    def test_swaps_logic_and_drops_negations(self):
        self.assertEqual(self.changed("return a && !b;"), ["return a && b;", "return a || !b;"])

    def test_inverts_flags_and_moves_constants_by_one(self):
        self.assertEqual(self.changed("return true;"), ["return false;"])
        self.assertEqual(self.changed("return 15U;"), ["return 16U;"])

    def test_leaves_out_calls_and_assignments(self):
        self.assertEqual(self.changed("m_file.Close(name);"), [";"])
        self.assertEqual(self.changed("m_name = name;"), [";"])

    def test_leaves_declarations_templates_and_literals_alone(self):
        for statement in ("const std::vector<int> values(other);", "f(L\"a == b && 1\");".replace("f(", "return g("),
                          "return 'a'; // not true", "return 1.5;", "static_assert(a == 1);", "auto&& x = y;"):
            self.assertEqual(self.changed(statement), [], statement)

    def test_changes_one_line_and_nothing_else(self):
        self.write("int f(int a)\n{\n    if (a == 1 && a > 0)\n    {\n        g(a);\n    }\n    return a + 1;\n}\n")
        lines = (self.root / "base/a.cpp").read_text(encoding="utf-8").splitlines()
        drawn = self.draw()
        self.assertGreater(len(drawn), 8)
        for change in drawn:
            self.assertEqual(change.line, lines[change.number - 1])
            self.assertNotEqual(change.changed_line(), change.line)
            self.assertNotIn("\n", change.changed_line())

    def test_takes_the_sources_of_the_product_for_this_platform(self):
        for name in ("base/a.cpp", "testing/b.cpp", "tests/c.cpp", "base/os/d_windows.cpp", "base/os/windows/e.cpp"):
            self.write("bool f()\n{\n    return true;\n}\n", name)
        self.assertEqual({change.name for change in self.draw()}, {"base/a.cpp", "testing/b.cpp"})
        self.assertEqual({change.name for change in self.draw(["testing/*"])}, {"testing/b.cpp"})

    def test_takes_only_headers_with_logic(self):
        for name in ("base/lbformat.h", "testing/lutestsuite/googletest.h", "base/other.h"):
            self.write("class C\n{\n    bool f()\n    {\n        return true;\n    }\n};\n", name)
        self.assertEqual({change.name for change in self.draw()},
                         {"base/lbformat.h", "testing/lutestsuite/googletest.h"})

    def test_is_determined_by_the_seed(self):
        self.write("int f()\n{\n" + "    return 1;\n" * 20 + "}\n")
        self.assertEqual(self.draw(seed=3), self.draw(seed=3))
        self.assertNotEqual(self.draw(seed=3), self.draw(seed=4))


class NearTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.ground = trial.Ground(pathlib.Path(folder.name), pathlib.Path(folder.name), True)

    def write(self, name, suite):
        path = self.ground.copy / "tests" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"TEST({suite}, Name)\n", encoding="utf-8")

    def find(self, name):
        return self.ground._suites_near(name)

    def test_are_in_the_folder_that_mirrors_the_file(self):
        self.write("base/os/files_test.cpp", "Files")
        self.write("base/os/clock_test.cpp", "Clock")
        self.write("base/files_test.cpp", "Others")
        self.assertEqual(self.find("base/os/files_linux.cpp"), ["Files.*:*/Files.*", "Clock.*:*/Clock.*"])

    def test_of_commands_include_those_that_start_the_host(self):
        self.write("lutestsuiterunner/commands/merge_test.cpp", "Merge")
        self.write("lutestsuiterunner/cli/list_test.cpp", "List")
        self.assertEqual(self.find("testing/lutestsuiterunner/commands/list.cpp"),
                         ["List.*:*/List.*", "Merge.*:*/Merge.*"])


if __name__ == "__main__":
    unittest.main()
