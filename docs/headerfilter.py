#!/usr/bin/env python3
"""Prints a public header with its comments as Doxygen reads them.

- The first comment is the file's, and that of the first declaration where this has none. Any other
  belongs to the declaration below it, and to each function, constant, macro, type name and record
  that follows, up to a blank line or the next comment: it speaks of all of them.
- A section, "// ---- Name ----" and what stands below it up to a blank line, is a group. What the
  section says is said of its functions that no other comment speaks of.
- Tables and examples, which are indented, stay as they are.
- A field or a variable needs no comment: its name, its neighbours and the record's say it.
- Left out without a comment of their own: members that copy, move, destroy or by default make an
  object, deleted ones, and specialisations, which say again what their template says.
"""

import re
import sys

OWN_SCOPE = re.compile(r"(?:template <.*> )?(class|struct|union|enum|namespace)\b[^()]*"
                       r"(?:\(\S*\)[^()]*)?\{$")
SHARES = re.compile(r"(?!static_assert|friend ).*\(|(?:static |inline )*constexpr |"
                    r"(?:static const|using|struct|class|enum|typedef) ")
# What stands for the comment of a field that has none, and shows nothing.
SILENT = "/// @latexonly @endlatexonly"
SAYS_ITSELF = re.compile(r"(?:virtual )?~|(?:extern )?template (?:<> |class)|"
                         r".*= (?:delete|default);$|"
                         r"(?:constexpr )?(\w+)(?:& operator=)?\((?:const \1&|\1&&)")


def bare(line):
    """The code of a line: no strings, characters and comment."""
    line = line.replace('extern "C" {', "namespace {")
    line = re.sub(r"\"(?:\\.|[^\"])*\"|'(?:\\.|[^'])*'", "0", line)
    return re.sub(r"\s*//.*", "", line).strip()


def plain(text):
    return re.sub(r'[\\@&<>#%"]', r"\\\g<0>", text)


def as_doxygen(comment):
    """The lines of a comment, which come without their slashes."""
    lines, table = [], False
    for text in comment:
        if text.startswith("   ") and lines and not table:
            lines.append("/// @verbatim")
            table = True
        elif table and re.match(r" \S", text):
            lines.append("/// @endverbatim")
            table = False
        lines.append("///" + (text if table else plain(text)))
    return lines + ["/// @endverbatim"] * table


class Header:
    def __init__(self, text):
        self.lines, self.at = text.splitlines(), 0
        self.scopes = []      # those that are open: their kind, and the comment that they share
        self.section = []     # the comment of the section
        self.group = None     # the number of scopes around it
        self.shared = []      # the comment of the declarations from here on
        self.at_first = True  # no declaration yet

    def printed(self):
        self.shared = as_doxygen(self.comment())
        yield from ("/// @file", *self.shared)
        while self.at < len(self.lines):
            line = self.lines[self.at]
            code = bare(line)
            if re.match(r" *//", line):
                yield from self.comment_and_declaration()
            elif re.match(r"#define (?!\w+_H$)", line):
                yield from self.shared
                yield from self.directive()
            elif not code or line.startswith("#"):
                self.shared = self.shared if self.at_first else []
                yield from self.directive()
            elif code in ("public:", "protected:", "private:"):
                self.shared = []
                yield from self.take(lambda: True)
            elif code.startswith("}"):
                yield from self.end_group()
                _, self.shared = self.scopes.pop()
                yield from self.take(lambda: True)
            else:
                yield from self.declaration([])
        yield from self.end_group()

    def take(self, is_done):
        """Lines up to the one behind which is_done holds."""
        while self.at < len(self.lines):
            self.at += 1
            yield self.lines[self.at - 1]
            if is_done():
                return

    def directive(self):
        return self.take(lambda: not self.lines[self.at - 1].endswith("\\"))

    def comment(self):
        """The comment that begins here, without slashes."""
        found = []
        while self.at < len(self.lines) and (text := re.match(r" *//(.*)", self.lines[self.at])):
            if not text[1].startswith(" clang-format"):
                found.append(text[1])
            self.at += 1
        return found

    def comment_and_declaration(self):
        comment = self.comment()
        name = re.fullmatch(r" ---- (.*) ----", comment[0]) if comment else None
        if name:
            yield from self.end_group()
            self.group, self.section, self.shared = len(self.scopes), as_doxygen(comment[1:]), []
            yield from (f"/// @name {plain(name[1])}", *self.section, "/// @{")
            return
        own = as_doxygen(comment)
        yield from own
        while self.at < len(self.lines) and not self.lines[self.at]:
            yield from self.take(lambda: True)
        if self.lines[self.at].startswith("#define "):
            self.shared = own
            yield from self.directive()
        elif re.match(r" *[^\s#/}]", self.lines[self.at]):
            yield from self.declaration(own)

    def declaration(self, own):
        """One declaration, up to its end or to the '{' of its scope, with the comment above it."""
        text, depth = "", 0

        def is_done():
            nonlocal text, depth
            code = bare(self.lines[self.at - 1])
            text = f"{text} {code}".strip()
            depth += len(re.findall(r"[{(\[]", code)) - len(re.findall(r"[})\]]", code))
            enumerator = self.scopes and self.scopes[-1][0] == "enum"
            return OWN_SCOPE.match(text) or depth == 0 and (
                enumerator or code[-1:] in (";", "}") or re.fullmatch(r"[A-Z_]+\(.*\)", text))

        lines = list(self.take(is_done))
        if SAYS_ITSELF.match(text) and not own:
            return
        scope = OWN_SCOPE.match(text)
        self.at_first = False
        if own:
            self.shared = own
        elif "//" not in lines[-1]:
            variable = self.is_variable(text)
            shared = self.shared if SHARES.match(text) else []
            yield from shared or ([SILENT] if variable else self.section if "(" in text else [])
        for line in lines:
            beside = re.match(r"(.*[;,{}\w]) +//( .*)", line)
            yield f"{beside[1]} ///<{plain(beside[2])}" if beside else line
        if scope:
            self.scopes.append((scope[1], self.shared))
            self.shared = own if scope[1] == "namespace" else []

    def is_variable(self, text):
        kind = self.scopes[-1][0] if self.scopes else "namespace"
        text = re.sub(r" = .*;", ";", text)
        text = re.sub(r" NOMOS_\w+\([^()]*\)|\(\*(\w+)\)\(.*\)", r"\1", text)
        return kind != "enum" and re.match(r"(?!using|typedef|friend|static_assert)[^()]* "
                                           r"\W*\w+[^()]*;", text)

    def end_group(self):
        if self.group == len(self.scopes):
            self.group, self.section = None, []
            yield "/// @}"


with open(sys.argv[1], encoding="ascii") as header:
    print(*Header(header.read()).printed(), sep="\n")
