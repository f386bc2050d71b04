"""Mutants of C++ sources: swapped operators, constants one too large, negated conditions, statements left
out. All of them are compiled at once and wait to be chosen (mutant.h). Of all places those are taken that
a hash with the seed puts first, so that a change of the sources leaves the others as they are.
"""

import hashlib
import json
import multiprocessing
import re
import shlex
import sys
from collections import Counter
from pathlib import Path

from clang.cindex import CursorKind as Kind
from clang.cindex import Index, TranslationUnit, TypeKind

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
LOGIC = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "&": "|", "|": "&", "^": "&",
              "<<": ">>", ">>": "<<"}
ASSIGNMENTS = {"+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "*=": "+=", "<<=": ">>=", ">>=": "<<="}
FUNCTIONS = (Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR,
             Kind.FUNCTION_TEMPLATE, Kind.CONVERSION_FUNCTION)
CONTAINERS = (Kind.NAMESPACE, Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE,
              Kind.UNEXPOSED_DECL, Kind.LINKAGE_SPEC)
STATEMENTS = (Kind.CALL_EXPR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.BINARY_OPERATOR,
              Kind.UNARY_OPERATOR, Kind.CXX_DELETE_EXPR, Kind.UNEXPOSED_EXPR)
NUMBERS = (TypeKind.CHAR_U, TypeKind.UCHAR, TypeKind.USHORT, TypeKind.UINT, TypeKind.ULONG,
           TypeKind.ULONGLONG, TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.SHORT, TypeKind.INT,
           TypeKind.LONG, TypeKind.LONGLONG, TypeKind.FLOAT, TypeKind.DOUBLE, TypeKind.DEPENDENT)


class Places:
    """The places of one translation unit where a mutant can be."""

    def __init__(self, unit, tree, pattern):
        self.tree = tree
        self.pattern = pattern
        self.names = {}
        self.texts = {}
        self.function = ""
        self.found = []
        cursors = list(unit.cursor.get_children())
        # What a macro makes has no text of its own that could be changed.
        self.macros = {}
        for cursor in cursors:
            if cursor.kind == Kind.MACRO_INSTANTIATION and (name := self.ours(cursor)):
                self.macros.setdefault(name, []).append((cursor.extent.start.offset,
                                                         cursor.extent.end.offset))
        for cursor in cursors:
            if cursor.kind != Kind.MACRO_INSTANTIATION and self.ours(cursor):
                self.declaration(cursor)

    def ours(self, cursor):
        file = cursor.location.file
        if file is None:
            return None
        if file.name not in self.names:
            path = Path(file.name).resolve()
            inside = path.is_relative_to(self.tree) and not path.is_relative_to(self.tree / "build")
            name = path.relative_to(self.tree).as_posix() if inside else ""
            self.names[file.name] = name if inside and re.search(self.pattern, name) else None
        return self.names[file.name]

    def text(self, name, start, end):
        if name not in self.texts:
            self.texts[name] = (self.tree / name).read_bytes()
        return self.texts[name][start:end].decode()

    def declaration(self, cursor):
        if cursor.kind in FUNCTIONS:
            children = list(cursor.get_children())
            body = children[-1] if children else None
            if body is None or body.kind != Kind.COMPOUND_STMT:
                return
            head = self.text(self.ours(cursor), cursor.extent.start.offset, body.extent.start.offset)
            if not re.search(r"\b(constexpr|consteval)\b", head):
                self.function = cursor.spelling
                for child in children:
                    if child.kind.is_expression() or child == body:
                        self.statement(child)
        elif cursor.kind == Kind.LAMBDA_EXPR:
            self.statement(cursor)
        elif cursor.kind in CONTAINERS or cursor.kind == Kind.VAR_DECL or cursor.kind.is_expression():
            if cursor.kind == Kind.VAR_DECL:
                self.function = cursor.spelling
            for child in cursor.get_children():
                self.declaration(child)

    def add(self, cursor, changed, code):
        """A mutant in place of a cursor's text: what it says, and the code with "$N" for its number."""
        name = self.ours(cursor)
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if not name or start >= end or cursor.extent.end.file.name != cursor.extent.start.file.name:
            return
        if any(start < last and first < end for first, last in self.macros.get(name, [])):
            return
        self.found.append({"file": name, "line": cursor.extent.start.line, "start": start, "end": end,
                           "function": self.function, "original": self.text(name, start, end),
                           "changed": changed, "code": code})

    def swap(self, cursor, left, right, table):
        """An operator between two operands."""
        name = self.ours(cursor)
        if not name:
            return
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        inner, outer = left.extent.end.offset, right.extent.start.offset
        if not start < inner < outer < end:
            return
        operator = self.text(name, inner, outer).strip()
        if operator in table:
            first, second = self.text(name, start, inner), self.text(name, outer, end)
            changed = f"{first} {table[operator]} {second}"
            both = f"({first}) {table[operator]} ({second})" if table in (LOGIC, ARITHMETIC) else changed
            self.add(cursor, changed,
                     f"(::mutation::On($N) ? {both} : {self.text(name, start, end)})")

    def condition(self, cursor):
        if cursor.kind.is_expression() and (name := self.ours(cursor)):
            text = self.text(name, cursor.extent.start.offset, cursor.extent.end.offset)
            self.add(cursor, f"!({text})", f"(static_cast<bool>({text}) != ::mutation::On($N))")

    def literal(self, cursor):
        name = self.ours(cursor)
        if not name:
            return
        text = self.text(name, cursor.extent.start.offset, cursor.extent.end.offset)
        if cursor.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            changed = {"true": "false", "false": "true"}.get(text)
        else:
            changed = f"{text} + 1" if re.match(r"[0-9]", text) else None
        if changed:
            self.add(cursor, changed, f"(::mutation::On($N) ? {changed} : {text})")

    def statement(self, cursor):
        children = list(cursor.get_children())
        kind = cursor.kind
        if kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR) and len(children) == 2:
            if kind == Kind.COMPOUND_ASSIGNMENT_OPERATOR:
                tables = [ASSIGNMENTS]
            else:
                number = cursor.type.get_canonical().kind in NUMBERS
                tables = [COMPARISONS, LOGIC] + ([ARITHMETIC] if number else [])
            for table in tables:
                self.swap(cursor, *children, table)
        elif kind == Kind.CALL_EXPR and len(children) == 3 and cursor.spelling.startswith("operator"):
            self.swap(cursor, children[0], children[2], COMPARISONS)
        elif kind in (Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR):
            self.literal(cursor)
        elif kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR) and children:
            head = self.text(self.ours(cursor), cursor.extent.start.offset,
                             cursor.extent.start.offset + 20) if self.ours(cursor) else ""
            if re.match(r"if\s+constexpr", head):
                children = children[1:]
            else:
                self.condition(children[0])
        elif kind == Kind.COMPOUND_STMT:
            for child in children:
                # Room that is taken at once costs time alone, which no test looks at.
                if child.kind in STATEMENTS and child.spelling != "reserve" and (name := self.ours(child)):
                    text = self.text(name, child.extent.start.offset, child.extent.end.offset)
                    self.add(child, "", f"if (!::mutation::On($N)) {text}")
        elif kind == Kind.CASE_STMT:
            children = children[1:]
        elif kind == Kind.VAR_DECL:
            if any(token.spelling == "constexpr" for token in cursor.get_tokens()):
                return
            arrays = (TypeKind.CONSTANTARRAY, TypeKind.INCOMPLETEARRAY)
            if cursor.type.kind in arrays:
                children = [child for child in children if child.kind != Kind.INTEGER_LITERAL]
        # Template arguments, sizes and types are known when the file is compiled.
        if kind in (Kind.DECL_REF_EXPR, Kind.CXX_UNARY_EXPR, Kind.STATIC_ASSERT, Kind.TYPE_REF,
                    Kind.TEMPLATE_REF):
            return
        if kind == Kind.MEMBER_REF_EXPR:
            children = [child for child in children if child.kind != Kind.INTEGER_LITERAL]
        for child in children:
            self.statement(child)


def arguments_of(command):
    """What the parser must know of a compiler's command."""
    words = shlex.split(command)[1:]
    kept = []
    while words:
        word = words.pop(0)
        if word in ("-o", "-MF", "-MT", "-include", "-c"):
            words.pop(0)
        elif word.startswith(("-I", "-D", "-std")):
            kept.append(word)
        elif word == "-isystem":
            kept += [word, words.pop(0)]
    return kept


def places(job):
    entry, tree, pattern = job
    unit = Index.create().parse(entry["file"], arguments_of(entry["command"]),
                                options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    errors = [d for d in unit.diagnostics if d.severity >= 3]
    if errors:
        sys.exit(f"generate: {errors[0]}")
    return Places(unit, tree, pattern).found


def find(tree, texts, pattern):
    """All places of what tree/build, which is configured, compiles for the programs, in files of the tree
    whose path matches. A place has a file, a line, the bytes that it starts and ends with, the function that
    it is in, what it says, and what it would say as a mutant. Where no file of the programs has changed since,
    it is what was found the last time."""
    state = hashlib.sha256(repr([pattern, Path(__file__).read_bytes(), *(
        (name, texts[name]) for name in sorted(texts) if not name.startswith(("tests/", "docs/"))
    )]).encode()).hexdigest()
    kept = tree / "build/places.json"
    if kept.exists() and (old := json.loads(kept.read_text()))["state"] == state:
        return old["places"]
    found = parsed(tree, pattern)
    kept.write_text(json.dumps({"state": state, "places": found}))
    return found


def parsed(tree, pattern):
    commands = [entry for entry in json.loads((tree / "build/compile_commands.json").read_text())
                if not re.search(r"/(tests|benchmark)/|cmake_pch|page_css", entry["file"])]
    # Headers come with the files beside them, but for those of the suite's rows.
    own = [entry for entry in commands
           if re.search(pattern, Path(entry["file"]).relative_to(tree).as_posix())]
    jobs = {entry["file"]: (entry, tree, pattern) for entry in own or commands}
    found = {}
    with multiprocessing.Pool(2) as pool:
        for some in pool.imap_unordered(places, jobs.values()):
            for mutant in some:
                found[mutant["file"], mutant["start"], mutant["end"], mutant["changed"]] = mutant
    # Of equal ones in one function, which of them it is.
    seen = Counter()
    for mutant in sorted(found.values(), key=lambda mutant: (mutant["file"], mutant["start"])):
        same = tuple(mutant[name] for name in ("file", "function", "original", "changed"))
        mutant["ordinal"] = seen[same]
        seen[same] += 1
    return list(found.values())


def key(mutant):
    return [mutant[name] for name in ("file", "function", "original", "changed", "ordinal")]


def draw(found, seed, count, pattern, rejected):
    """`count` of the places whose path matches, none inside of another; none whose key is rejected."""
    order = sorted((mutant for mutant in found if re.search(pattern, mutant["file"])),
                   key=lambda mutant: hashlib.sha256(json.dumps([seed, *key(mutant)]).encode()).digest())
    taken = []
    for mutant in order:
        inside = any(other["file"] == mutant["file"] and other["start"] < mutant["end"]
                     and mutant["start"] < other["end"] for other in taken)
        if len(taken) < count and not inside and key(mutant) not in rejected:
            taken.append(mutant)
    return taken


def write(texts, tree, taken):
    """Writes the mutants into the tree, of whose files texts has the bytes, and gives them their numbers."""
    taken.sort(key=lambda mutant: (mutant["file"], mutant["start"]))
    for number, mutant in enumerate(taken, 1):
        mutant["number"] = number
    for name in {mutant["file"] for mutant in taken}:
        text = texts[name]
        for mutant in reversed([mutant for mutant in taken if mutant["file"] == name]):
            code = mutant["code"].replace("$N", str(mutant["number"])).encode()
            text = text[:mutant["start"]] + code + text[mutant["end"]:]
        (tree / name).write_bytes(text)
