"""Finds the places of a source at which one small change makes another program: a mutant.

A place is a tuple (file, first byte, byte behind the last, replacement, kind). The sources are read
with libclang, so that "<" is a comparison and not a template's bracket, and "*" a product.
"""

import json
import os
import re
import shlex

import clang.cindex as cindex
from clang.cindex import CursorKind as Kind
from clang.cindex import TypeKind

RELATIONS = {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
             "==": ["!="], "!=": ["=="]}
LOGIC = {"&&": ["||"], "||": ["&&"]}
ARITHMETIC = {"+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "<<": [">>"],
              ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"]}
ASSIGNMENTS = {"+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "%=": ["*="],
               "<<=": [">>="], ">>=": ["<<="], "&=": ["|="], "|=": ["&="], "^=": ["&="]}
OPERATORS = {**RELATIONS, **LOGIC, **ARITHMETIC, **ASSIGNMENTS}

# Types of which "!" or "+ 1" makes another value.
INTEGERS = {TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.UCHAR, TypeKind.SHORT, TypeKind.USHORT,
            TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG,
            TypeKind.ULONGLONG}

EXPRESSIONS = {Kind.CALL_EXPR, Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR,
               Kind.UNARY_OPERATOR}
BODIES = {Kind.COMPOUND_STMT, Kind.IF_STMT, Kind.FOR_STMT, Kind.WHILE_STMT, Kind.CXX_FOR_RANGE_STMT,
          Kind.CASE_STMT, Kind.DEFAULT_STMT}


class Finder:
    """Collects the places of the files below some folders, from all that a compiler reads."""

    def __init__(self, root, folders):
        self.folders = [os.path.join(root, folder) + "/" for folder in folders]
        self.places = set()
        self.texts = {}

    def text(self, path):
        if path not in self.texts:
            with open(path, "rb") as file:
                self.texts[path] = file.read()
        return self.texts[path]

    def read(self, path, arguments):
        unit = cindex.Index.create().parse(path, args=arguments)
        errors = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if errors:
            raise SystemExit(f"{path} cannot be read: {errors[0]}")
        self.walk(unit.cursor, None)

    def walk(self, node, parent):
        for child in node.get_children():
            location = child.location.file
            if location is not None and not any(
                    os.path.realpath(location.name).startswith(f) for f in self.folders):
                continue
            if child.kind == Kind.STATIC_ASSERT:
                continue
            self.look_at(child, node)
            self.walk(child, node)

    def add(self, start, end, replacement, kind):
        path = os.path.realpath(start.file.name)
        if any(path.startswith(f) for f in self.folders) and start.offset < end.offset:
            self.places.add((path, start.offset, end.offset, replacement, kind))

    def source(self, node):
        extent = node.extent
        if extent.start.file is None or extent.end.file is None:
            return None
        if extent.start.file.name != extent.end.file.name:
            return None
        text = self.text(extent.start.file.name)[extent.start.offset:extent.end.offset]
        return text.decode("utf-8", "replace")

    def look_at(self, node, parent):
        children = list(node.get_children())
        if node.kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(node, children)
        elif node.kind == Kind.UNARY_OPERATOR:
            self.unary(node)
        elif node.kind == Kind.CALL_EXPR and node.spelling.startswith("operator"):
            self.operator(node, children[::2])
        elif node.kind == Kind.INTEGER_LITERAL:
            self.number(node)
        elif node.kind == Kind.CHARACTER_LITERAL:
            self.character(node)
        elif node.kind == Kind.STRING_LITERAL:
            self.string(node)
        elif node.kind == Kind.RETURN_STMT and len(children) == 1:
            self.result(children[0])
        elif node.kind == Kind.FOR_STMT:
            self.loop(children)
        elif node.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            flipped = {"true": "false", "false": "true"}.get(self.source(node))
            if flipped:
                self.add(node.extent.start, node.extent.end, flipped, "constant")
        elif node.kind == Kind.IF_STMT and children and children[0].kind.is_expression():
            self.condition(children[0], ["true", "false"])
        elif node.kind == Kind.WHILE_STMT and children and children[0].kind.is_expression():
            self.condition(children[0], ["false"])
        elif node.kind == Kind.CONDITIONAL_OPERATOR and children:
            self.condition(children[0], ["true", "false"])
        elif node.kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT):
            self.add(node.extent.start, node.extent.end, "(void)0", "statement")
        if node.kind in EXPRESSIONS and parent.kind in BODIES and self.is_statement(node, parent):
            self.add(node.extent.start, node.extent.end, "(void)0", "statement")

    def is_statement(self, node, parent):
        """True for an expression with a semicolon behind it, which is no condition or step."""
        if parent.kind != Kind.COMPOUND_STMT:
            children = list(parent.get_children())
            if not children or children[-1] != node:
                return False
        text = self.text(node.extent.end.file.name)
        return text[node.extent.end.offset:node.extent.end.offset + 20].lstrip().startswith(b";")

    def operator(self, node, children):
        if len(children) != 2:
            return
        start, end = children[0].extent.end, children[1].extent.start
        if start.file is None or end.file is None or start.file.name != end.file.name:
            return
        between = self.text(start.file.name)[start.offset:end.offset].decode("utf-8", "replace")
        found = re.fullmatch(r"\s*([-+*/%<>=!&|^]+)\s*", between)
        if not found:
            return
        for other in OPERATORS.get(found.group(1), []):
            first = start.offset + len(between[:found.start(1)].encode())
            path = os.path.realpath(start.file.name)
            if any(path.startswith(f) for f in self.folders):
                self.places.add((path, first, first + len(found.group(1)), other, "operator"))

    def unary(self, node):
        text = self.source(node) or ""
        if text[:2] in ("++", "--"):
            other = "--" if text[:2] == "++" else "++"
            self.replace_first(node, 2, other)
        elif text[-2:] in ("++", "--"):
            other = "--" if text[-2:] == "++" else "++"
            path = os.path.realpath(node.extent.end.file.name)
            if any(path.startswith(f) for f in self.folders):
                end = node.extent.end.offset
                self.places.add((path, end - 2, end, other, "operator"))
        elif text[:1] in ("!", "~", "-"):
            self.replace_first(node, 1, "")

    def replace_first(self, node, count, other):
        path = os.path.realpath(node.extent.start.file.name)
        if any(path.startswith(f) for f in self.folders):
            start = node.extent.start.offset
            self.places.add((path, start, start + count, other, "operator"))

    def number(self, node):
        text = self.source(node) or ""
        found = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[0-9']+)([uUlL]*)", text)
        if not found:
            return  # a macro
        digits = found.group(1).replace("'", "")
        value = int(digits, 16) if digits[:2] in ("0x", "0X") else int(digits)
        for other in (value + 1, value - 1):
            if other >= 0:
                self.add(node.extent.start, node.extent.end, f"{other}{found.group(2)}", "constant")

    def character(self, node):
        """Another character; for one that is spelled by an escape sequence a letter."""
        text = self.source(node) or ""
        if re.fullmatch(r"'[^\\']'", text):
            other = chr(ord(text[1]) + 1)
            self.add(node.extent.start, node.extent.end,
                     "'\\" + other + "'" if other in "\\'" else f"'{other}'", "constant")
        elif re.fullmatch(r"'\\.+'", text):
            self.add(node.extent.start, node.extent.end, "'E'", "constant")

    def string(self, node):
        """One character more at the front."""
        text = self.source(node) or ""
        if text.startswith('"'):
            self.add(node.extent.start, node.extent.end, '"#' + text[1:], "constant")

    def result(self, value):
        """What a function returns."""
        text = self.source(value)
        if text is None or value.type.get_canonical().kind not in INTEGERS | {TypeKind.BOOL}:
            return
        is_bool = value.type.get_canonical().kind == TypeKind.BOOL
        if not re.fullmatch(r"[0-9a-fA-FxXuUlL']+|true|false", text):
            self.add(value.extent.start, value.extent.end,
                     f"!({text})" if is_bool else f"({text}) + 1", "result")

    def loop(self, children):
        """A loop that is never entered. libclang does not say which part of a for is missing, so
        only a comparison that stands in second place is taken for its condition."""
        if len(children) == 4 and children[1].kind == Kind.BINARY_OPERATOR:
            self.condition(children[1], ["false"])

    def condition(self, node, values):
        for value in values:
            if self.source(node) not in ("true", "false", None):
                self.add(node.extent.start, node.extent.end, value, "branch")


def find(root, folders, compile_commands):
    """All places of the folders' sources and headers, in order."""
    finder = Finder(root, folders)
    with open(compile_commands, encoding="utf-8") as file:
        commands = json.load(file)
    seen = set()
    for command in commands:
        path = os.path.realpath(os.path.join(command["directory"], command["file"]))
        if path in seen or not any(path.startswith(f) for f in finder.folders):
            continue
        seen.add(path)
        words = shlex.split(command["command"])[1:]
        arguments = [w for w in words if w.startswith(("-I", "-D", "-std"))]
        arguments += [w for pair in zip(words, words[1:]) if pair[0] == "-isystem" for w in pair]
        finder.read(path, arguments)
    return sorted((os.path.relpath(p[0], root),) + p[1:] for p in finder.places)
