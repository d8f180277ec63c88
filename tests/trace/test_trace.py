# SPDX-License-Identifier: MIT
"""The trace from requirements to tests: what it takes, what it finds, and where. Its argument is the script."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = sys.argv.pop()

REQUIREMENTS = """\
# Requirements

- **LOG-1** A line names
  its step.
  - tst_log: keepsALine, namesTheStep
- **ENG-2** A failure ends the run.
  - tst_engine: stops
  - tst_log: namesTheStep
"""

LOG = """\
class TestLog : public QObject {
    Q_OBJECT

private slots:
    void init();
    void namesTheStep_data();
    void namesTheStep();
    // in one file:
    /// Shows: LOG-1
    void keepsALine() { verify(1); }

private:
    void help();
};

void TestLog::namesTheStep_data()
{
}

/// Shows: ENG-2, LOG-1
void TestLog::namesTheStep()
{
}

void TestLog::init()
{
}

void TestLog::help()
{
}
"""

ENGINE = """\
class TestEngine : public QObject {
private slots:
    void stops();
};

/// Shows: ENG-2
void TestEngine::stops()
{
}
"""

STALE = "the tests' names are not those of the tags: run scripts/trace --write"
MISPLACED = "this tag does not stand above the definition of a test function"
UNREADABLE = "this tag cannot be read: it is written '/// Shows: ABC-1, ABC-2'"


class TraceTest(unittest.TestCase):
    """Each test changes a small project in which nothing is wrong."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.write("docs/requirements.md", REQUIREMENTS)
        self.write("tests/engine/tst_engine.cpp", ENGINE)
        self.write("tests/tool/tst_log.cpp", LOG)
        self.write("tests/engine/CMakeLists.txt", "vardo_add_test(tst_engine SQLite::SQLite3)\n")
        self.write("tests/tool/CMakeLists.txt", "foreach(name\n        tst_log)\n    vardo_add_test(${name})\n")

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def change(self, path, old, new):
        text = (self.root / path).read_text(encoding="utf-8")
        self.assertEqual(text.count(old), 1)
        self.write(path, text.replace(old, new))

    def trace(self, *options):
        """Returns the exit code and the findings."""
        run = subprocess.run([sys.executable, SCRIPT, "--root", self.root, *options], capture_output=True,
                             text=True, encoding="utf-8", check=False)
        self.assertEqual(run.stdout, "")
        return run.returncode, run.stderr.splitlines()

    def assert_found(self, *findings):
        self.assertEqual(self.trace(), (1, list(findings)))

    def test_is_silent_if_nothing_is_wrong(self):
        self.assertEqual(self.trace(), (0, []))

    def test_finds_a_requirement_without_a_test(self):
        self.change("docs/requirements.md", "- **ENG-2**", "- **ENG-1** Steps run in order.\n- **ENG-2**")
        self.assert_found("docs/requirements.md:6: no test shows ENG-1")

    def test_finds_a_tag_without_a_requirement(self):
        self.change("tests/tool/tst_log.cpp", "ENG-2, LOG-1", "ENG-2, LOG-1, LOG-7")
        self.assert_found("tests/tool/tst_log.cpp:20: LOG-7 is no requirement of docs/requirements.md")

    def test_finds_a_requirement_that_stands_twice_in_a_tag(self):
        self.change("tests/engine/tst_engine.cpp", "ENG-2", "ENG-2, ENG-2")
        self.assert_found("tests/engine/tst_engine.cpp:6: ENG-2 stands twice in this tag")

    def test_finds_a_requirement_that_stands_twice_in_the_document(self):
        self.change("docs/requirements.md", "- **ENG-2**", "- **LOG-1** Lines are whole.\n- **ENG-2**")
        self.assert_found("docs/requirements.md:6: LOG-1 is there already, in line 3")

    def test_finds_a_requirement_that_has_no_number(self):
        self.change("docs/requirements.md", "- **ENG-2**", "- **ENG** Steps run in order.\n- **ENG-2**")
        self.assert_found(
            "docs/requirements.md:6: this is no requirement: it begins '- **ABC-1** ', and a sentence follows")

    def test_finds_a_tag_that_it_cannot_read(self):
        for tag in ("// Shows: ENG-2", "/// Shows: ENG-2 LOG-1", "/// Shows: ENG-2,", "/// Shows: eng-2",
                    "/// Shows:", "/// Shows: ENG-2 too", "/// It Shows: ENG-2"):
            with self.subTest(tag):
                self.write("tests/engine/tst_engine.cpp", ENGINE.replace("/// Shows: ENG-2", tag))
                self.assert_found(f"tests/engine/tst_engine.cpp:6: {UNREADABLE}")

    def test_finds_a_tag_above_something_else(self):
        tag = "/// Shows: LOG-1\n"
        for line in ("void TestLog::namesTheStep_data()", "void TestLog::init()", "void TestLog::help()",
                     "    void namesTheStep();", "    void help();", "class TestLog : public QObject {", "{\n}"):
            with self.subTest(line):
                place, _, _ = LOG.partition(line)
                self.write("tests/tool/tst_log.cpp", LOG.replace(line, tag + line, 1))
                number = place.count("\n") + 1
                self.assert_found(f"tests/tool/tst_log.cpp:{number}: {MISPLACED}")

    def test_finds_a_tag_apart_from_its_function(self):
        self.change("tests/engine/tst_engine.cpp", "ENG-2\n", "ENG-2\n\n")
        self.assert_found(f"tests/engine/tst_engine.cpp:6: {MISPLACED}")

    def test_finds_a_tag_of_another_program_s_function(self):
        self.change("tests/engine/tst_engine.cpp", "TestEngine::stops", "TestLog::namesTheStep")
        self.assert_found(f"tests/engine/tst_engine.cpp:6: {MISPLACED}")

    def test_finds_a_tag_at_the_end_of_a_file(self):
        self.write("tests/engine/tst_engine.cpp", ENGINE + "/// Shows: ENG-2")
        self.assert_found(f"tests/engine/tst_engine.cpp:10: {MISPLACED}")

    def test_finds_a_tag_in_a_file_without_tests(self):
        self.write("tests/support/engine.h", ENGINE)
        self.assert_found(f"tests/support/engine.h:6: {MISPLACED}")

    def test_finds_a_program_that_is_not_built(self):
        for lists in ("", "# vardo_add_test(tst_engine)\n", "vardo_add_test(tst_engine_memory)\n"):
            with self.subTest(lists):
                self.write("tests/engine/CMakeLists.txt", lists)
                self.assert_found("tests/engine/tst_engine.cpp:1: CMakeLists.txt of this folder does not name this"
                                  " program: its tests never run")

    def test_tells_all_findings(self):
        self.write("tests/engine/tst_engine.cpp", "// Shows: ENG-2\n")
        self.write("tests/tool/tst_log.cpp", LOG.replace("LOG-1", "LOG-7"))
        self.assert_found(f"tests/engine/tst_engine.cpp:1: {UNREADABLE}",
                          "tests/tool/tst_log.cpp:9: LOG-7 is no requirement of docs/requirements.md",
                          "tests/tool/tst_log.cpp:20: LOG-7 is no requirement of docs/requirements.md",
                          "docs/requirements.md:3: no test shows LOG-1")

    def test_finds_names_that_are_not_true(self):
        for old, new, line in (("stops", "stopsAtOnce", 7), ("  - tst_engine: stops\n", "", 7),
                               ("keepsALine", "keepsALine, help", 5), ("keepsALine, ", "", 5),
                               ("- **ENG-2**", "  - tst_none: nothing\n- **ENG-2**", 6)):
            with self.subTest(new):
                self.assertEqual(REQUIREMENTS.count(old), 1)
                self.write("docs/requirements.md", REQUIREMENTS.replace(old, new))
                self.assert_found(f"docs/requirements.md:{line}: {STALE}")

    def test_finds_names_that_are_missing_at_the_end(self):
        self.change("docs/requirements.md", "  - tst_engine: stops\n  - tst_log: namesTheStep\n", "")
        self.assert_found(f"docs/requirements.md:7: {STALE}")

    def test_writes_the_names(self):
        names = [line for line in REQUIREMENTS.splitlines(True) if line.startswith("  - ")]
        text = REQUIREMENTS
        for name in names:
            text = text.replace(name, "", 1)
        for before in (text, REQUIREMENTS.replace("stops", "stopsAtOnce"), REQUIREMENTS):
            with self.subTest(before):
                self.write("docs/requirements.md", before)
                self.assertEqual(self.trace("--write"), (0, []))
                self.assertEqual((self.root / "docs/requirements.md").read_text(encoding="utf-8"), REQUIREMENTS)

    def test_writes_the_names_beside_other_findings(self):
        self.change("docs/requirements.md", "- **ENG-2**", "- **ENG-1** Steps run in order.\n- **ENG-2**")
        self.change("docs/requirements.md", "  - tst_engine: stops\n", "")
        self.assertEqual(self.trace("--write"), (1, ["docs/requirements.md:6: no test shows ENG-1"]))
        self.assertIn("  - tst_engine: stops\n", (self.root / "docs/requirements.md").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
