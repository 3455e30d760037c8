"""reference.py <repository> <folder>: writes the pages of the reference.

It contains the help text of every function for users, and every header that the C++ library installs.
"""

import re
import sys
from pathlib import Path

INTERNAL = {"pistonfield_quiet", "pistonfield_about", "pistonfield_pressure"}


def help_text(source):
    """Returns the lines of the first block of comments, without the comment characters."""
    lines = []
    for line in source.splitlines():
        if not line.startswith("%"):
            break
        lines.append(re.sub("^% ?", "", line))
    return lines


def escaped(text):
    return re.sub(r"([\\`*_\[\]<>$#])", r"\\\1", text)


def linked(line, names):
    return re.sub(r"\bpiston\w+", lambda name: f"[`{name[0]}`]({name[0]}.md)"
                  if name[0] in names else name[0], line)


def paragraph(lines, names):
    if lines[0].startswith("See also:"):
        return [linked(line, names) for line in lines]
    return [escaped(line) for line in lines]


def block(lines, language):
    shift = min(len(line) - len(line.lstrip()) for line in lines if line.strip())
    return [f"```{language}", *[line[shift:] for line in lines], "```"]


def grouped(lines):
    """Yields runs of lines that are all indented or all unindented; an indented run may contain empty lines."""
    runs = []
    for line in lines:
        indented = line.startswith(" ") or (not line and bool(runs) and runs[-1][0])
        if not line and not indented:
            runs.append((False, []))
        elif runs and runs[-1][0] == indented and (indented or runs[-1][1]):
            runs[-1][1].append(line)
        else:
            runs.append((indented, [line]))
    for indented, run in runs:
        while run and not run[-1]:
            run.pop()
        if run:
            yield indented, run


def function_page(lines, names):
    name, summary = lines[0].split(None, 1)
    page = [f"# {name.lower()}", "", summary, ""]
    language = "octave"  # the first block shows the calls
    for indented, run in grouped(lines[1:]):
        if indented:
            page += block(run, language)
            language = "text"
        elif match := re.match(r"(Arguments|Result|Example|Errors)\b(?:: | \((.*)\)$)?(.*)", run[0]):
            said = (match[2] or "") + match[3]
            page += [f"## {match[1]}", ""]
            if said:
                said = said[0].upper() + said[1:] + ("" if said[-1] in ".," or run[1:] else ".")
                page += paragraph([said, *run[1:]], names)
            language = "octave" if match[1] == "Example" else "text"
        else:
            page += paragraph(run, names)
            language = "text"
        page += [""]
    return "\n".join(page), summary


def header_summary(text):
    """Returns the first sentence of the comment at the top if it shows code, else of that on the first class, or
    else of the first comment."""
    comment = r"^((?:///?(?: .*)?\n)+)"
    found = (re.search(r"^((?:// .*\n)+)//\n//     #include ", text, re.M)
             or re.search(comment + r"(?:template <.*>\n)?class ", text, re.M) or re.search(comment, text, re.M))
    if not found:
        return ""
    words = re.sub(r"^///? ?", "", found[1], flags=re.M).strip().replace("\n", " ")
    return re.match(r".*?(?=[.:;](?: |$))|.*", words)[0].strip().replace("`", "") + "."


def public_headers(repository):
    """Returns the installed headers, as programs include them, with their sources; those of field first."""
    lists = (repository / "src/CMakeLists.txt").read_text()

    def listed(name):
        return re.search(rf"set\({name}\s+(.*?)\)", lists, re.S)[1].split()

    rooms = sorted(listed("public_headers"), key=lambda file: (not file.startswith("Fast"), file.lower()))
    return {**{file: f"field/{file}" for file in sorted(listed("field_headers"), reverse=True)},
            **{file: file for file in rooms}}


def contents(pages):
    return ["", "```{toctree}", ":hidden:", "", *pages, "```", ""]


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")


def main(repository, folder):
    sources = [repository / "src/matlab/pistonfield.m",
               *sorted((repository / "src/matlab/functions").glob("*.m"))]
    sources = {file.stem: help_text(file.read_text(encoding="utf-8")) for file in sources
               if file.stem not in INTERNAL}
    index = ["# Functions", "",
             "The functions for Octave and MATLAB. `help pistonfield` and so on show the same texts.",
             "", "| | |", "| --- | --- |"]
    for name, lines in sources.items():
        page, summary = function_page(lines, sources)
        write(folder / f"{name}.md", page)
        index.append(f"| [`{name}`]({name}.md) | {escaped(summary)} |")
    write(folder / "functions.md", "\n".join([*index, *contents(sources)]))

    headers = public_headers(repository)
    index = ["# C++ headers", "",
             "The headers of the library that `find_package(pistonfield)` provides.", "",
             "| | |", "| --- | --- |"]
    for header, source in headers.items():
        text = (repository / "src" / source).read_text(encoding="utf-8")
        page = f"# {Path(header).name}\n\n`#include <pistonfield/{header}>`\n\n````cpp\n{text}````\n"
        write(folder / f"{header}.md", page)
        index.append(f"| [`pistonfield/{header}`]({header}.md) | {escaped(header_summary(text))} |")
    write(folder / "headers.md", "\n".join([*index, *contents(headers)]))


main(Path(sys.argv[1]), Path(sys.argv[2]))
