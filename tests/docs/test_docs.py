#!/usr/bin/env python3
"""What the documents say must agree with the code, and their links must lead somewhere."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md")])

LITERAL = r'"(?:[^"\\]|\\.)*"'


def joined(literals):
    """The text of adjacent C++ string literals."""
    return "".join(part[1:-1] for part in re.findall(LITERAL, literals)).replace(r"\"", '"')


class Documents(unittest.TestCase):
    def rows(self, heading):
        """Rows of the table under a heading of errors.md, cells stripped."""
        text = (ROOT / "docs/errors.md").read_text(encoding="utf-8")
        section = re.split(r"^## ", text.split(f"## {heading}\n")[1], flags=re.MULTILINE)[0]
        lines = [line for line in section.splitlines() if re.match(r"\| \d", line)]
        return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]

    def test_the_table_of_codes_is_that_of_the_code(self):
        source = (ROOT / "hexmire/support/ModErrorMsg.cpp").read_text(encoding="utf-8")
        entries = re.findall(rf"\{{(\d{{4}}),\s*((?:{LITERAL}\s*)+)\}}", source)
        in_code = {code: joined(texts) for code, texts in entries}
        in_document = {
            row[0]: row[1] for row in self.rows("Codes of the object model and of the control")
        }
        self.assertEqual(53, len(in_code))
        self.assertEqual(in_code, in_document)

    def test_the_table_of_faults_is_that_of_the_code(self):
        header = (ROOT / "hexmire/support/Fault.h").read_text(encoding="utf-8")
        numbers = set(re.findall(r"^    [A-Z]\w+ = (\d+),", header, re.MULTILINE))
        in_document = {row[0] for row in self.rows("Numbers of run-time faults")}
        self.assertEqual(10, len(numbers))
        self.assertEqual(numbers, in_document)

    def test_the_examples_of_links_are_those_of_a_program(self):
        source = (ROOT / "examples/any_link.cpp").read_text(encoding="utf-8")
        lines = {line.strip() for line in source.splitlines()}
        text = (ROOT / "docs/links.md").read_text(encoding="utf-8")
        section = re.split(r"^## ", text, flags=re.MULTILINE)
        examples = next(part for part in section if part.startswith("One example"))
        fragments = re.findall(r"```cpp\n(.*?)```", examples, re.DOTALL)
        self.assertEqual(4, len(fragments))
        for line in "".join(fragments).splitlines():
            self.assertIn(line, lines)

    def test_the_codes_to_check_are_known(self):
        text = (ROOT / "docs/links.md").read_text(encoding="utf-8")
        known = (ROOT / "docs/errors.md").read_text(encoding="utf-8")
        codes = set(re.findall(r"\b[23]0\d\d\b", text.split("## What to check first")[1]))
        self.assertGreater(len(codes), 30)
        for code in codes:
            self.assertRegex(known, rf"(?m)^\| {code} ")

    def test_every_option_for_logs_is_documented(self):
        source = (ROOT / "apps/hexmire/commands/LogCommand.cpp").read_text(encoding="utf-8")
        text = (ROOT / "docs/reading-logs.md").read_text(encoding="utf-8")
        options = set(re.findall(r'\.(?:Option|Flag)\(\s*"(--[a-z-]+)"', source))
        self.assertEqual(16, len(options))
        self.assertEqual(options, set(re.findall(r"(?<![a-z-])--[a-z][a-z-]*", text)) - {"--log"})

    def test_every_link_between_documents_leads_somewhere(self):
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            text = re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
            for target in re.findall(r"\]\(([^)#]+)(?:#[^)]*)?\)", text):
                if "://" not in target:
                    path = document.parent / target
                    self.assertTrue(path.exists(), f"{document.name} links to {target}")


if __name__ == "__main__":
    unittest.main()
