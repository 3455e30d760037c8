"""messages.py <repository>: checks that docs/troubleshooting.md quotes every message that users can get, and no message
that is not in the sources.

A message is a line of a block marked `text` on the page; its variable parts are written as <words>. In the
sources, every literal of two or more words is a message or a part of one; in Python's, every text of an exception.
"""

import ast
import re
import sys
from pathlib import Path

# Literals that are not messages: options, texts that CMake shows, the heads of rule files, labels, and the frame of a report.
NO_MESSAGES = re.compile(
    r"\s*(?:Sanitizers|The device to build|Device Emulation|Build the modules|-lcudart|Reading the version|Weights W"
    r"|for a Gauss|Standard rule|is to be approx|Creating quad|(?:Root|Weight|Abscissa|Region) file"
    r"|_device transform|SHELL:|no error|multiprocessors|, plane wave|condition failed: \()")

COMMENTS = {".cmake": r"(?m)^\s*#.*$", ".m": r"(?m)^\s*[%#].*$"}
LITERALS = {".m": r"'((?:[^'\n]|'')*)'"}
VARIES = r"<[a-z ]*>|%[-0-9.]*[a-z]|\$\{\w+\}"


def pieces(text):
    """The fixed parts of a text, without the frame of a report."""
    text = re.sub(r"^condition failed: \((.*)\)\.$|^(?:array\b)?\.?", r"\1", text.strip())
    return [piece.strip() for piece in re.split(VARIES, text) if re.search("[A-Za-z]{2}", piece)]


def unescaped(text):
    return text.replace("''", "'").replace('\\"', '"').replace("%%", "%").replace("\\\\", "\\")


def texts_of_exceptions(file):
    """With <> for what varies."""
    raised = [node.exc for node in ast.walk(ast.parse(file.read_text(encoding="utf-8"))) if isinstance(node, ast.Raise)]
    for exception in filter(lambda node: isinstance(node, ast.Call), raised):
        for argument in exception.args:
            parts = argument.values if isinstance(argument, ast.JoinedStr) else [argument]
            yield "".join(part.value if isinstance(part, ast.Constant) else "<>" for part in parts)


def main(repository):
    whole, literals = "", {}
    for file in sorted([*repository.glob("src/**/*"), *repository.glob("cmake/*.cmake")]):
        if file.suffix not in (".cpp", ".cu", ".h", ".m", ".cmake"):
            continue
        source = file.read_text(encoding="utf-8")
        source = re.sub(COMMENTS.get(file.suffix, r'(?m)^\s*//.*$|(?<=[ ;{])//[^"\n]*$|^#.*$'), "", source)
        source = re.sub(r"static_assert\([^;]*;", "", source)
        # Consecutive literals are joined.
        whole += unescaped(re.sub(r"""(["'])(?:, )?(?: ?\.\.\.)?\s*\n\s*\1""", "", source))
        for literal in re.findall(LITERALS.get(file.suffix, r'"((?:[^"\\\n]|\\.)*)"'), source):
            for line in literal.split("\\n"):
                literals.setdefault(unescaped(line), file.relative_to(repository))
    for file in repository.glob("python/pistonfield/*.py"):
        for text in texts_of_exceptions(file):
            whole += text
            literals.setdefault(text, file.relative_to(repository))
    page = (repository / "docs/troubleshooting.md").read_text(encoding="utf-8")
    blocks = re.findall(r"(?ms)^```text\n(.*?)^```$", page)
    quoted = [piece for block in blocks for line in block.splitlines() for piece in pieces(line)]

    problems = [f"no source has: {piece}" for piece in quoted if piece not in whole]
    for literal, file in literals.items():
        for piece in pieces(literal):
            if (re.search(r"[a-z]{2}\S* \S*[A-Za-z]{2}", piece) and not NO_MESSAGES.match(piece)
                    and not any(piece in line for line in quoted)):
                problems.append(f"the page lacks, from {file}: {piece}")
    print("\n".join(problems))
    print(f"{len(quoted)} pieces of messages, {len(problems)} problems")
    return 1 if problems or len(quoted) < 100 else 0


sys.exit(main(Path(sys.argv[1])))
