"""links.py <repository>: checks that everything the pages refer to exists: files and headings that they link
to, and files of the repository, presets and scripts that they name."""

import json
import re
import sys
from pathlib import Path

# Files that a build creates, and files outside the repository.
MADE = re.compile(r"build/|~/|/usr/|/work")


def without_code(text):
    return re.sub(r"^(```+).*?^\1$", "", text, flags=re.S | re.M)


def anchors(page):
    """The anchors of the headings, on GitHub and on the site."""
    names = set()
    for heading in re.findall(r"^#+ (.*)$", without_code(page.read_text(encoding="utf-8")), re.M):
        heading = re.sub(r"[`*]|\]\([^)]*\)|\[", "", heading).strip().lower()
        names.add(re.sub(r"[^\w\- ]", "", heading).replace(" ", "-"))
    return names


def links(page, text, _repository):
    for target in re.findall(r"\]\(([^)\s]+)\)", without_code(text)):
        if re.match(r"[a-z]+:", target):
            continue
        file, _, anchor = target.partition("#")
        there = (page.parent / file) if file else page
        if not there.exists():
            yield f"there is no {target}"
        elif anchor and anchor not in anchors(there):
            yield f"there is no heading #{anchor} in {there.name}"


def paths(_page, text, repository):
    """Texts between backticks that look like paths: they begin with a folder of the repository."""
    folders = {folder.name for folder in repository.iterdir() if folder.is_dir()} - {"build"}
    for name in re.findall(r"`([\w.*/-]+)`", without_code(text)):
        if MADE.match(name) or "/" not in name and not re.search(r"\.(sh|cmake|txt)$", name):
            continue
        first = name.split("/")[0]
        known = first in folders or any((repository / folder / first).is_dir()
                                        for folder in ("src", "tests"))
        if known and not any(list(place.glob(name.rstrip("/"))) for place in
                             (repository, repository / "src", repository / "tests")):
            yield f"there is no file {name}"


def commands(_page, text, repository):
    for script in set(re.findall(r"(?<![\w/.])(?:scripts|\.ci)/[\w.-]*\w", text)):
        if not (repository / script).exists():
            yield f"there is no {script}"
    presets = {preset["name"] for preset in
               json.loads((repository / "CMakePresets.json").read_text())["configurePresets"]}
    for preset in set(re.findall(r"--preset (\w+)", text)) - presets:
        yield f"there is no preset {preset}"
    for program in set(re.findall(r"^ {4}(?:python3|octave-cli|bash) (\w[\w/.-]*)", text, re.M)):
        if not (repository / program).exists():
            yield f"there is no {program}"


def main(repository):
    pages = [*(repository / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md")),
             *sorted((repository / "docs").glob("*.md")),
             *sorted((repository / ".github").glob("**/*.md"))]
    problems = [f"{page.relative_to(repository)}: {problem}" for page in pages
                for check in (links, paths, commands)
                for problem in check(page, page.read_text(encoding="utf-8"), repository)]
    print("\n".join([*problems, f"{len(pages)} pages, {len(problems)} problems"]))
    return 1 if problems or len(pages) < 10 else 0


sys.exit(main(Path(sys.argv[1]).resolve()))
