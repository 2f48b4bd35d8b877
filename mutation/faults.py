"""Finds the places of a C++ source where a small fault can be made, and writes the source with all of them.

A fault is a value: where it is, what stood there, what stands there instead. All faults of a file are woven into
one text, in which each is there only when it is asked for (Fault.h), so that one build serves them all.
"""

import dataclasses
import os
import re

from clang.cindex import CursorKind, Index, TypeKind

TURNED = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
          "&&": "||", "||": "&&", "+": "-", "-": "+", "+=": "-=", "-=": "+="}
COMPARISONS = {"<", "<=", ">", ">=", "==", "!="}
COMPARING_CALLS = {"operator" + sign for sign in COMPARISONS | {"<=>"}}
WHOLE_NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9][0-9']*)([uU]?[lL]{0,2}|[lL]{0,2}[uU])$")
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
             CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE}
LOOPS = {CursorKind.WHILE_STMT, CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT, CursorKind.DO_STMT}
NAMESPACES = {CursorKind.NAMESPACE, CursorKind.UNEXPOSED_DECL, CursorKind.LINKAGE_SPEC}
RECORDS = {CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL, CursorKind.CLASS_TEMPLATE,
           CursorKind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION}


@dataclasses.dataclass
class Fault:
    file: str
    start: int
    end: int
    kind: str
    function: str
    # The text that stands for the range where the fault is there.
    mutated: str
    # In a function that the compiler may call.
    constant: bool = False
    line: int = 0
    before: str = ""
    after: str = ""
    occurrence: int = 1
    number: int = 0

    @property
    def folder(self):
        return self.file.split("/")[1]

    @property
    def identity(self):
        """What stays the same when lines move: found again by content."""
        return (self.file, self.function, self.before, self.after, self.occurrence)


def without_words(text):
    """The text with comments and what is in quotes blanked out: offsets stay, punctuation is the code's own."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^(]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
        r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'", re.DOTALL)
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def closing(code, opening):
    """Where the bracket is that closes the one at `opening`."""
    depth = 0
    for at in range(opening, len(code)):
        if code[at] in "([{":
            depth += 1
        elif code[at] in ")]}":
            depth -= 1
            if depth == 0:
                return at
    return -1


def macros_in(code):
    """The ranges of what looks like a macro, with its arguments."""
    ranges = []
    for match in re.finditer(r"\b[A-Z][A-Z0-9]*_[A-Z0-9_]+\b", code):
        end = match.end()
        if code[end:end + 1] == "(":
            end = closing(code, end) + 1
        ranges.append((match.start(), end))
    return ranges


def next_number(words):
    """The text of the number that is greater by one, written as this one is."""
    digits, suffix = WHOLE_NUMBER.match(words).groups()
    value = int(digits.replace("'", ""), 0)
    if digits[:2] in ("0x", "0X"):
        return f"0x{value + 1:X}{suffix}"
    return f"{value + 1}{suffix}"


class Finder:
    """Walks through one translation unit and collects the faults of the files asked for."""

    def __init__(self, texts):
        # By real path: (name in the repository, text).
        self.texts = texts
        self.codes = {path: without_words(text) for path, (_, text) in texts.items()}
        self.macros = {path: macros_in(code) for path, code in self.codes.items()}
        self.found = {}
        self.paths = {}

    def read(self, source, arguments):
        unit = Index.create().parse(source, args=arguments)
        errors = [str(note) for note in unit.diagnostics if note.severity >= 3]
        if errors:
            raise RuntimeError(f"{source} was not understood: " + "; ".join(errors[:3]))
        for cursor in unit.cursor.get_children():
            if cursor.location.file:
                self.enter(cursor, cursor.location.file.name)

    def real_path(self, name):
        if name not in self.paths:
            self.paths[name] = os.path.realpath(name)
        return self.paths[name]

    def enter(self, cursor, name):
        path = self.real_path(name)
        if path not in self.texts:
            return
        self.file, self.text = self.texts[path]
        self.code = self.codes[path]
        self.here = self.macros[path]
        self.declaration(cursor)

    # Declarations

    def declaration(self, cursor):
        if cursor.kind in NAMESPACES | RECORDS:
            for child in cursor.get_children():
                self.declaration(child)
        elif cursor.kind in FUNCTIONS:
            self.function(cursor)
        elif cursor.kind in (CursorKind.VAR_DECL, CursorKind.FIELD_DECL):
            self.name = self.qualified(cursor)
            self.constant = False
            self.variable(cursor)

    @staticmethod
    def qualified(cursor):
        parent = cursor.semantic_parent
        if parent is not None and parent.kind in RECORDS:
            return f"{parent.spelling}::{cursor.spelling}"
        return cursor.spelling

    def function(self, cursor):
        self.name = self.qualified(cursor)
        self.constant = "constexpr" in self.code[cursor.extent.start.offset:cursor.location.offset]
        goes_on = cursor.result_type.kind == TypeKind.VOID or cursor.kind == CursorKind.CONSTRUCTOR
        for child in cursor.get_children():
            if child.kind == CursorKind.COMPOUND_STMT:
                self.statement(child, goes_on)
            elif child.kind == CursorKind.UNEXPOSED_STMT:
                self.coroutine(child)
            elif child.kind == CursorKind.PARM_DECL:
                self.variable(child)
            elif cursor.kind == CursorKind.CONSTRUCTOR and child.kind.is_expression():
                self.expression(child)

    def coroutine(self, cursor):
        # What was written comes first; behind it is what the language adds.
        for child in cursor.get_children():
            if child.kind == CursorKind.COMPOUND_STMT:
                self.statement(child, False)
                return

    def variable(self, cursor):
        start = cursor.extent.start.offset
        named = cursor.location.offset
        if "constexpr" in self.code[start:named]:
            return
        for child in cursor.get_children():
            at = child.extent.start.offset
            before = self.code[:at].rstrip()[-1:]
            if child.kind.is_expression() and at > named and before != "[" and before != ":":
                self.expression(child)

    # Statements; `goes_on` tells whether there is something valid to do after the statement.

    def statement(self, cursor, goes_on):
        kind = cursor.kind
        children = list(cursor.get_children())
        if kind == CursorKind.COMPOUND_STMT:
            for index, child in enumerate(children):
                self.statement(child, goes_on or index + 1 < len(children))
        elif kind == CursorKind.DECL_STMT:
            for child in children:
                if child.kind == CursorKind.VAR_DECL:
                    self.variable(child)
        elif kind == CursorKind.IF_STMT:
            self.condition(cursor, children, goes_on)
        elif kind in LOOPS:
            self.loop(cursor, children)
        elif kind in (CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT):
            self.statement(children[-1], goes_on)
        elif kind == CursorKind.SWITCH_STMT:
            for child in children[:-1]:
                self.part(child)
            self.statement(children[-1], goes_on)
        elif kind in (CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT):
            self.drop(cursor)
        elif kind == CursorKind.RETURN_STMT or self.words(cursor).startswith("co_return"):
            if goes_on:
                self.drop(cursor)
            for child in children:
                self.expression(child)
        elif kind.is_expression():
            self.drop(cursor)
            self.expression(cursor)

    def part(self, cursor):
        """What is in the brackets of a statement: an expression, or a declaration."""
        if cursor.kind == CursorKind.DECL_STMT:
            self.statement(cursor, True)
        elif cursor.kind == CursorKind.VAR_DECL:
            self.variable(cursor)
        elif cursor.kind.is_expression():
            self.expression(cursor)

    def condition(self, cursor, children, goes_on):
        start = cursor.extent.start.offset
        opening = self.code.find("(", start)
        if "constexpr" in self.code[start:opening]:
            for child in children:
                if child.extent.start.offset > closing(self.code, opening):
                    self.statement(child, goes_on)
            return
        end = closing(self.code, opening)
        parts = [child for child in children if opening < child.extent.start.offset < end]
        variable = next((child for child in parts if child.kind == CursorKind.VAR_DECL), None)
        for child in parts:
            # Behind a variable comes the question that the language asks of it.
            if variable is None or child.kind in (CursorKind.VAR_DECL, CursorKind.DECL_STMT):
                self.part(child)
        if variable is not None:
            self.negate(variable, parts[0] == variable)
        elif parts:
            self.negate(parts[-1], False)
        for child in children[len(parts):]:
            self.statement(child, goes_on)

    def loop(self, cursor, children):
        start = cursor.extent.start.offset
        if cursor.kind == CursorKind.CXX_FOR_RANGE_STMT:
            for child in children[1:-1]:
                self.part(child)
            self.statement(children[-1], True)
            return
        if cursor.kind == CursorKind.DO_STMT:
            self.statement(children[0], True)
            self.part(children[1])
            return
        opening = self.code.find("(", start)
        end = closing(self.code, opening)
        parts = [child for child in children if opening < child.extent.start.offset < end]
        for child in parts:
            self.part(child)
            # Of a for statement's three parts the one between the semicolons.
            first = self.code.find(";", opening)
            between = (cursor.kind == CursorKind.WHILE_STMT
                       or first <= child.extent.start.offset < self.code.find(";", first + 1))
            if between and self.words(child) != "true":
                self.negate(child, False)
        self.statement(children[-1], True)

    # Expressions

    def expression(self, cursor):
        kind = cursor.kind
        children = list(cursor.get_children())
        if kind == CursorKind.LAMBDA_EXPR:
            for child in children:
                if child.kind == CursorKind.COMPOUND_STMT:
                    self.statement(child, False)
                elif child.kind == CursorKind.UNEXPOSED_STMT:
                    self.coroutine(child)
            return
        # The zero that an ordering is compared with is no number.
        if kind == CursorKind.DECL_REF_EXPR or cursor.spelling == "__unspec":
            return
        if kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.turn(cursor, children)
        elif kind == CursorKind.CALL_EXPR and cursor.spelling in COMPARING_CALLS:
            self.turn(cursor, children)
        elif kind == CursorKind.CONDITIONAL_OPERATOR and len(children) == 3:
            self.negate(children[0], False)
        elif kind == CursorKind.UNARY_OPERATOR and re.match("!(?!=)", self.words(cursor)):
            inner = self.range(children[0])
            if inner:
                self.add(self.range(cursor), "not taken back", self.text[inner[0]:inner[1]])
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            words = self.words(cursor)
            if words in ("true", "false"):
                self.add(self.range(cursor), "turned truth", "false" if words == "true" else "true")
        elif kind == CursorKind.INTEGER_LITERAL and WHOLE_NUMBER.match(self.words(cursor)):
            self.add(self.range(cursor), "off by one", next_number(self.words(cursor)))
        for child in children:
            if not child.kind.is_expression() or self.is_template_argument(child, children):
                continue
            self.expression(child)

    def is_template_argument(self, cursor, siblings):
        for other in siblings:
            end = other.extent.end.offset
            if other.kind == CursorKind.TEMPLATE_REF and self.code[end:end + 1] == "<":
                depth = 0
                for at in range(end, len(self.code)):
                    depth += {"<": 1, ">": -1}.get(self.code[at], 0)
                    if depth == 0:
                        break
                if end < cursor.extent.start.offset < at:
                    return True
        return False

    def turn(self, cursor, children):
        ranges = [self.range(child) for child in children if child.kind.is_expression()]
        ranges = sorted(range_ for range_ in ranges if range_)
        if len(ranges) < 2:
            return
        left, right = ranges[0], ranges[-1]
        sign = self.code[left[1]:right[0]].strip()
        if sign not in TURNED or "co_await" in self.code[left[0]:right[1]]:
            return
        if sign in ("+", "-", "+=", "-=") and not self.is_arithmetic(cursor, children):
            return
        mutated = f"{self.text[left[0]:left[1]]} {TURNED[sign]} {self.text[right[0]:right[1]]}"
        self.add((left[0], right[1]), "turned " + sign, mutated)

    @staticmethod
    def is_arithmetic(cursor, children):
        numbers = (TypeKind.BOOL.value, TypeKind.LONGDOUBLE.value)

        def is_number(type_):
            kind = type_.get_canonical().kind
            return numbers[0] <= kind.value <= numbers[1] or kind in (TypeKind.INT128, TypeKind.DEPENDENT)

        return is_number(cursor.type) and all(
            is_number(child.type) for child in children if child.kind.is_expression())

    # What is added

    def range(self, cursor):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if start >= end or cursor.location.file is None:
            return None
        if any(first <= start and end <= last for first, last in self.here):
            return None
        return (start, end)

    def words(self, cursor):
        range_ = self.range(cursor)
        return self.text[range_[0]:range_[1]] if range_ else ""

    def negate(self, cursor, alone):
        range_ = self.range(cursor)
        if range_ is None:
            return
        if cursor.kind == CursorKind.VAR_DECL or cursor.kind == CursorKind.DECL_STMT:
            if not alone:
                return
            words = self.text[range_[0]:range_[1]].rstrip(";")
            variable = cursor if cursor.kind == CursorKind.VAR_DECL else next(cursor.get_children())
            self.add(range_, "negated declaration", f"{words}; !{variable.spelling}")
        else:
            self.add(range_, "negated", f"!({self.text[range_[0]:range_[1]]})")

    def drop(self, cursor):
        range_ = self.range(cursor)
        if range_ is None:
            return
        start, end = range_
        if self.code[end - 1] != ";":
            rest = re.match(r"\s*;", self.code[end:])
            if rest is None:
                return
            end += rest.end()
        self.add((start, end), "dropped", "")

    def add(self, range_, kind, mutated):
        if range_ is None:
            return
        key = (self.file, *range_, kind)
        if key in self.found:
            return
        self.found[key] = Fault(self.file, *range_, kind, self.name, mutated, self.constant)


def without_twins(faults):
    """A condition that is negated by its own operator is not negated as a whole, too."""
    own = {(fault.file, fault.start, fault.end) for fault in faults
           if fault.kind in ("not taken back", "turned ==", "turned !=", "turned truth")}
    return [fault for fault in faults
            if fault.kind != "negated" or (fault.file, fault.start, fault.end) not in own]


def describe(faults, texts_by_file):
    """Numbers the faults, and gives each the words by which it is found again."""
    faults.sort(key=lambda fault: (fault.file, fault.start, -fault.end, fault.kind))
    seen = {}
    for number, fault in enumerate(faults, 1):
        text = texts_by_file[fault.file]
        first = text.rfind("\n", 0, fault.start) + 1
        last = text.find("\n", fault.end)
        fault.number = number
        fault.line = text.count("\n", 0, fault.start) + 1
        fault.before = " ".join(text[first:last].split())
        fault.after = " ".join((text[first:fault.start] + fault.mutated + text[fault.end:last]).split())
        if not fault.after:
            fault.after = "(nothing)"
        same = (fault.file, fault.function, fault.before, fault.after)
        seen[same] = seen.get(same, 0) + 1
        fault.occurrence = seen[same]


class Woven:
    """A file's text with all its faults, and by which faults each part of it is surrounded."""

    def __init__(self, text, faults, head):
        self.pieces = [(head, ())]
        self.source = text
        ordered = sorted(faults, key=lambda fault: (fault.start, -fault.end, fault.number))
        at = self.inner(0, len(text), ordered, ())
        assert at == len(ordered), "faults must lie within each other or apart"
        self.text = "".join(piece for piece, _ in self.pieces)

    def put(self, piece, around):
        self.pieces.append((piece, around))

    def inner(self, start, end, ordered, around):
        """Writes the text from start to end, with those of the faults that lie in it; tells how many did."""
        index = 0
        position = start
        while index < len(ordered) and ordered[index].end <= end:
            fault = ordered[index]
            if fault.start < position:
                raise RuntimeError(f"{fault.file}: {fault.before!r} overlaps with another fault")
            self.put(self.source[position:fault.start], around)
            index += 1 + self.one(fault, ordered[index + 1:], around)
            position = fault.end
        self.put(self.source[position:end], around)
        return index

    def one(self, fault, others, around):
        around = (*around, fault.number)
        asked = f"::mutation::is({fault.number})"
        start, end = fault.start, fault.end
        if fault.kind == "dropped":
            before, after = f"{{ if (!{asked}) {{ ", " } }"
        elif fault.kind == "negated declaration":
            variable = fault.mutated.rsplit("!", 1)[1]
            before, after = "", f"; ({asked} != static_cast<bool>({variable}))"
            if self.source[end - 1] == ";":
                end -= 1
        elif fault.kind in ("negated", "turned truth"):
            before, after = f"({asked} != static_cast<bool>(", "))"
        elif fault.kind == "not taken back":
            before, after = f"({asked} != ", ")"
        else:
            before, after = f"({asked} ? ({fault.mutated}) : (", "))"
        self.put(before, around)
        inside = self.inner(start, end, others, around)
        self.put(after, around)
        return inside

    def near(self, line, column):
        """The fault that is the innermost one around a place, or else those of its line: columns count bytes."""
        around = self.around(line, column)
        if around:
            return {around[-1]}
        words = self.text.split("\n")[line - 1]
        return {int(number) for number in re.findall(r"::mutation::is\((\d+)\)", words)}

    def around(self, line, column):
        """The faults that surround a place, from outside to inside. Lines and columns count from one."""
        lines = self.text.split("\n")
        wanted = sum(len(text) + 1 for text in lines[:line - 1]) + column - 1
        passed = 0
        for piece, around in self.pieces:
            passed += len(piece)
            if passed > wanted:
                return around
        return ()
