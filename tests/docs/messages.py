"""messages.py <repository> [--list]: docs/troubleshooting.md quotes every message that users can meet, and
none that no source has.

A message is a line of a block marked `text` on the page; what varies in it stands as <words>.
Blocks of other kinds quote other programs.
"""

import re
import sys
from pathlib import Path

VARIES = "<>"
LITERAL = r'"(?:[^"\\]|\\.)*"'

# What hands a message on, and where its text comes from then.
FORWARDERS = {
    ("src/core/CudaCheck.cpp", "text"): "the runtime's reasons",
    ("src/core/CudaCheck.cpp", "message.c_str()"): "callCheck's calls",
    ("src/core/ErrorHandler.cpp", "condition"): "fail's conditions",
    ("src/matlab/MatlabErrorHandler.cpp", "text.c_str()"): "writeErrorReport",
}


def unescaped(literal):
    return literal.replace("\\n", "\n").replace('\\"', '"').replace("\\\\", "\\")


def closed(text, start):
    """Where the bracket that is open at start closes, past literals."""
    depth = 1
    for token in re.finditer(LITERAL + r"|[(){}\[\]]", text[start:]):
        if token[0][0] != '"':
            depth += 1 if token[0] in "([{" else -1
        if depth == 0:
            return start + token.start()
    raise ValueError("unbalanced")


def split(text, separators):
    """The pieces between separators that stand in no bracket and no literal."""
    pieces, depth, start = [], 0, 0
    for token in re.finditer(LITERAL + r"|[(){}\[\]]|" + separators, text):
        if token[0] in "([{":
            depth += 1
        elif token[0] in ")]}":
            depth -= 1
        elif token[0][0] != '"' and depth == 0:
            pieces.append(text[start:token.start()])
            start = token.end()
    return [piece.strip() for piece in [*pieces, text[start:]]]


def told(expression, operators):
    """The text of literals and other values that operators join, and whether it has a literal."""
    text, literal = "", False
    for piece in split(expression, operators):
        string = re.match(r'^(?:std::string\()?((?:"(?:[^"\\]|\\.)*"\s*|PRI\w+\s*)+)\)?$', piece)
        if string:
            text += "".join(unescaped(part) for part in re.findall(r'"((?:[^"\\]|\\.)*)"', piece))
            literal = True
        elif piece in ("std::endl", "std::flush"):
            text += "\n"
        elif not re.match(r"^std::set", piece):
            text += VARIES
    return text, literal


def formatted(text):
    """A format of printf with <> for what varies."""
    return re.sub(r"%[-0-9.]*[a-z]", VARIES, text).replace("%%", "%")


def strings(text):
    """The texts between single quotes."""
    return [string.replace("''", "'") for string in re.findall(r"'((?:[^'\n]|'')*)'", text)]


class Messages:
    def __init__(self):
        self.lines, self.unreadable = {}, []

    def add(self, text, place):
        for line in text.split("\n"):
            if re.search(r"[A-Za-z]{2}", line.replace(VARIES, "")):
                self.lines.setdefault(line.strip(), place)

    @staticmethod
    def calls(source, function, place):
        """The arguments of every call of a function, and where it stands."""
        for call in re.finditer(r"(?<![\w>.])(?:pistonfield::|std::)?" + function + r"\(", source):
            inside = source[call.end():closed(source, call.end())]
            if not re.match(r"\s*(?:const char|cudaError_t)", inside):  # no declaration
                yield split(inside, ","), f"{place}:{source.count(chr(10), 0, call.start()) + 1}"

    def cpp(self, source, place):
        source = re.sub(r"^[ \t]*//.*$|(?<=[ ;{])//[^\"\n]*$", "", source, flags=re.M)

        def read(argument, where, shown):
            variable = re.match(r"(\w+)\.c_str\(\)$", argument)
            definition = variable and re.search(
                r"const std::string " + variable[1] + r"\s*=\s*([^;]*);", source)
            text, literal = told(definition[1] if definition else argument, r"\+")
            if literal:
                self.add(shown(text), where)
            elif (place, argument) not in FORWARDERS:
                self.unreadable.append(f"{where}: {argument}")

        for function in ("mexErrMsgTxt", "mexWarnMsgTxt", "stageCheck"):
            for arguments, where in self.calls(source, function, place):
                read(arguments[0], where, lambda text: text)
        for function in ("fail", "failPlainAssertion"):
            for arguments, where in self.calls(source, function, place):
                read(arguments[0], where, lambda text: f"condition failed: ({text}).")
        for arguments, where in self.calls(source, "callCheck", place):
            read(arguments[1], where, lambda text: text)
        for arguments, where in self.calls(source, "fprintf", place):
            if arguments[0] == "stderr":
                read(arguments[1], where, formatted)
        streams = r"std::cerr|progress\(\)"
        if place == "src/core/ErrorReport.h":
            streams = "out"
        elif "Fatal error" in source:  # some of which is said on standard output
            streams += r"|std::cout(?=[^;]*Fatal error)"
        for stream in re.finditer(rf"\b(?:{streams})\s*<<((?:[^;\"]|{LITERAL})*);", source):
            self.add(told(stream[1], "<<")[0], place)
        for printed in re.finditer(r'mexPrintf\("((?:[^"\\]|\\.)*)"', source):
            self.add(formatted(unescaped(printed[1])), place)
        if place == "src/emulation/Errors.cpp":
            for reason in re.findall(r'return "([^"]*)"', source):
                if reason != "no error":
                    self.add(reason, place)
        for device in re.findall(r'std::string\("(none: )"\)', source):
            self.add(device + VARIES, place)

    def octave(self, source, place):
        source = re.sub(r"^\s*%.*$", "", source, flags=re.M).replace("...\n", "\n")
        for call in re.finditer(r"\b(error|warning|fail) \(", source):
            inside = source[call.end():self.end_of_call(source, call.end())]
            if inside.startswith("text,") or "blank, text" in inside:
                continue  # readarray's own fail, and what it hands on
            if call[1] == "fail":
                parts = strings(inside)
                parts[0] = "array" + ("" if parts[0].startswith(".") else " ") + parts[0]
            else:
                text = re.match(r"(?:'[^']*'|\[[^\]]*\]),\s*((?:\[.*?\]|'(?:[^'\n]|'')*'))(?=$|,)",
                                inside, re.S)
                parts = strings(text[1]) if text else []
            if not parts:
                self.unreadable.append(f"{place}: {inside}")
            self.add(formatted("".join(parts).replace("\\n", "\n")), place)

    @staticmethod
    def end_of_call(source, start):
        depth = 1
        for token in re.finditer(r"'(?:[^'\n]|'')*'|[()]", source[start:]):
            depth += {"(": 1, ")": -1}.get(token[0], 0)
            if depth == 0:
                return start + token.start()
        raise ValueError("unbalanced")

    def cmake(self, source, place):
        saying = r"(?:message\((?:STATUS|FATAL_ERROR|WARNING)|set\(device_reason)"
        for text in re.findall(rf"{saying} ({LITERAL})\)", source):
            self.add(re.sub(r"\$\{\w+\}", VARIES, unescaped(text[1:-1])), place)


def messages_of(repository):
    messages = Messages()
    for file in sorted(repository.glob("src/**/*")) + sorted(repository.glob("cmake/*.cmake")):
        place = str(file.relative_to(repository))
        if file.suffix in (".cpp", ".cu", ".h"):
            messages.cpp(file.read_text(encoding="utf-8"), place)
        elif file.suffix == ".m":
            messages.octave(file.read_text(encoding="utf-8"), place)
        elif file.suffix == ".cmake":
            messages.cmake(file.read_text(encoding="utf-8"), place)
    return messages


def quoted(page):
    """The lines of the page's blocks of text."""
    for block in re.findall(r"^```text\n(.*?)^```$", page, re.S | re.M):
        for line in block.splitlines():
            if line.strip():
                yield re.sub(r"<[a-z][a-z ]*>", VARIES, line.strip())


def main(repository, listed):
    messages = messages_of(repository)
    if listed:
        for line, place in messages.lines.items():
            print(f"{place:45} {line}")
    page = set(quoted((repository / "docs/troubleshooting.md").read_text(encoding="utf-8")))
    problems = [f"the page lacks, from {place}: {line}" for line, place in messages.lines.items()
                if line not in page]
    problems += [f"no source has: {line}" for line in sorted(page - set(messages.lines))]
    problems += [f"this test cannot read the message at {place}" for place in messages.unreadable]
    print("\n".join(problems))
    print(f"{len(messages.lines)} messages, {len(page)} quoted, {len(problems)} problems")
    return 1 if problems or len(messages.lines) < 100 else 0


sys.exit(main(Path(sys.argv[1]), "--list" in sys.argv))
