"""Parses a PTX file into kernels of instructions. Unsupported text raises an error that quotes it."""

import re
from dataclasses import dataclass, field


class UnknownPtx(Exception):
    pass


@dataclass
class Instruction:
    text: str
    guard: str  # the predicate's register, or ''
    guard_negated: bool
    opcode: str
    operands: list


@dataclass
class Kernel:
    name: str
    parameters: list  # (type, name)
    widths: dict = field(default_factory=dict)  # bits of the registers, by the letters of their names
    local: dict = field(default_factory=dict)  # bytes of the arrays in each thread's local memory
    instructions: list = field(default_factory=list)
    labels: dict = field(default_factory=dict)

    def width(self, register):
        """The width of a register in bits, or 0 if it is not declared."""
        letters = register if register in self.widths else register.rstrip("0123456789")
        return self.widths.get(letters, 0)


@dataclass
class Module:
    constants: dict  # bytes of the arrays in constant memory
    variables: dict  # initial bytes of the arrays in global memory
    kernels: list


BYTES = {"8": 1, "16": 2, "32": 4, "64": 8}
VARIABLE = re.compile(
    r"(?:\.(?:visible|weak)\s+)?\.(const|global)\s+(?:\.align\s+\d+\s+)?\.[bsuf](8|16|32|64)\s+"
    r"([\w$]+)(?:\[(\d+)\])?(?:\s*=\s*\{([^}]*)\})?$"
)
# With limits of its launches, and a body whose braces are those of vectors.
ENTRY = re.compile(r"\s*\.visible\s+\.entry\s+([\w$]+)\s*\(([^)]*)\)\s*(?:\.(?:maxntid|minnctapersm|maxnreg|reqntid)\s+[\d, ]+)*"
                   r"\s*\{((?:[^{}]|\{[^{}]*\})*)\}")
PARAMETER = re.compile(r"\.param\s+\.(\w+)\s+(?:\.ptr\s+)?(?:\.global\s+)?(?:\.align\s+\d+\s+)?([\w$]+)$")
REGISTERS = re.compile(r"\.reg\s+\.(pred|[bsuf](?:16|32|64))\s+(%\w+)(?:<\d+>)?$")
LOCAL = re.compile(r"\.local\s+\.align\s+\d+\s+\.b8\s+([\w$]+)\[(\d+)\]$")
LABEL = re.compile(r"([\w$]+)\s*:")
STATEMENT = re.compile(r"(?:@(!?)(%\w+)\s+)?([a-z][\w.:]*)\s*(.*)$", re.S)
OPERAND = re.compile(r"\{[^}]*\}|\[[^\]]*\]|[^,\s]+")


def read_module(text):
    text = re.sub(r"//[^\n]*|/\*.*?\*/|^\s*\.(?:version|target|address_size)\b[^\n]*\n", "", text, flags=re.S | re.M)
    module, at = Module({}, {}, []), 0
    while text[at:].strip():
        entry = ENTRY.match(text, at)
        if entry:
            module.kernels.append(read_kernel(*entry.groups()))
            at = entry.end()
        else:
            end = text.index(";", at)
            read_variable(module, text[at:end].strip())
            at = end + 1
    return module


def read_variable(module, text):
    found = VARIABLE.match(text)
    if not found:
        raise UnknownPtx(text)
    space, bits, name, count, values = found.groups()
    size = int(count or 1) * BYTES[bits]
    if space == "const" and values is None:
        module.constants[name] = size
    elif space == "global":  # zeros, unless it has values
        numbers = values.split(",") if values else []
        content = b"".join(int(v, 0).to_bytes(BYTES[bits], "little") for v in numbers)
        module.variables[name] = content.ljust(size, b"\0")
    else:
        raise UnknownPtx(text)


def read_kernel(name, parameters, body):
    kernel = Kernel(name, [])
    for parameter in filter(None, map(str.strip, parameters.split(","))):
        found = PARAMETER.match(parameter)
        if not found:
            raise UnknownPtx(parameter)
        kernel.parameters.append(found.groups())
    for statement in body.split(";"):
        read_statement(kernel, statement.strip())
    return kernel


def read_statement(kernel, text):
    label = LABEL.match(text)
    while label:
        kernel.labels[label.group(1)] = len(kernel.instructions)
        text = text[label.end() :].strip()
        label = LABEL.match(text)
    registers, local = REGISTERS.match(text), LOCAL.match(text)
    if registers:
        kernel.widths[registers.group(2)] = {"p": 1}.get(registers.group(1)[0]) or int(
            registers.group(1)[1:]
        )
    elif local:
        kernel.local[local.group(1)] = int(local.group(2))
    elif text and not text.startswith(".pragma"):
        kernel.instructions.append(read_instruction(text))


def read_instruction(text):
    text = " ".join(text.split())
    found = STATEMENT.match(text)
    if not found:
        raise UnknownPtx(text)
    negated, guard, opcode, rest = found.groups()
    return Instruction(text, guard or "", bool(negated), opcode, OPERAND.findall(rest))
