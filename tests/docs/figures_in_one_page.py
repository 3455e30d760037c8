"""figures_in_one_page.py <repository>: checks that absolute times and speeds, which hold for one processor
only, are given only in docs/performance.md, which names the processor. Other pages, help texts and headers
link to it."""

import re
import sys
from pathlib import Path

NUMBER = r"\d[\d.,^\u2070-\u2079\u00b9\u00b2\u00b3·]*\s*(?:to\s+\d[\d.,]*\s*)?"
FIGURE = re.compile(
    NUMBER + r"(?:[num\u00b5\u03bc]s|(?:nano|micro|milli)seconds?)\b"
    r"|" + NUMBER + r"(?:(?:k|M|G|million|billion)\s+)?(?:points?|nodes?|values)(?:/s\b|\s+(?:a|per)\s+second)")


def figures(text):
    for number, line in enumerate(text.split("\n"), 1):
        for figure in FIGURE.finditer(line):
            yield number, figure[0]


def main(repository):
    files = [repository / "README.md", repository / "CONTRIBUTING.md", *(repository / "docs").glob("*.md"),
             *(repository / "src").glob("**/*.m"), *(repository / "src").glob("**/*.h")]
    page = repository / "docs/performance.md"
    problems = [f"{file.relative_to(repository)}:{number}: {figure}" for file in sorted(files) if file != page
                for number, figure in figures(file.read_text(encoding="utf-8"))]
    there = sum(1 for _ in figures(page.read_text(encoding="utf-8")))
    print("\n".join([*problems, f"{there} figures in {page.name}, {len(problems)} elsewhere"]))
    return 1 if problems or there < 5 else 0


sys.exit(main(Path(sys.argv[1]).resolve()))
