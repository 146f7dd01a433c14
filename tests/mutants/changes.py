"""The changes of one token that mutants.py makes to a C++ source.

The sources are expected in the format of this project, which puts spaces around binary operators
and around no other.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<string>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
      | (?P<number>(?:0[xX][0-9a-fA-F.']+(?:[pP][+-]?\d+)?|\d[\d']*\.?\d*(?:[eE][+-]?\d+)?)[a-zA-Z]*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<operator><<=|>>=|<=>|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|[-+*/%&|^~!<>=?:;,.(){}\[\]])
      | (?P<space>\s+)""",
    re.VERBOSE | re.MULTILINE | re.DOTALL)

# What stands in for what. Templates' angle brackets turned round do not compile.
OPERATORS = {
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"], "!": [""],
    "++": ["--"], "--": ["++"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "&=": ["|="], "|=": ["&="],
}
NAMES = {
    "Le": ["Lt", "Gt"], "Lt": ["Le", "Ge"], "Ge": ["Gt", "Lt"], "Gt": ["Ge", "Le"],
    "Eq": ["Ne"], "Ne": ["Eq"], "Add": ["Sub"], "Sub": ["Add"], "Mul": ["Add"],
    "And": ["Or"], "Or": ["And"], "AndNot": ["And"], "AllTrue": ["AllFalse"],
    "AllFalse": ["AllTrue"], "min": ["max"], "max": ["min"], "true": ["false"],
    "false": ["true"], "LowerHalf": ["UpperHalf"], "UpperHalf": ["LowerHalf"],
    "ShiftLeft": ["ShiftRight"], "ShiftRight": ["ShiftLeft"], "sin": ["cos"], "cos": ["sin"],
    "sinh": ["cosh"], "cosh": ["sinh"], "continue": ["break"], "break": ["continue"],
}
UNARY = {"!", "++", "--"}
FOR_SPEED_ALONE = {"HWY_UNROLL", "HWY_ALIGN"}
COMMUTATIVE = {"And", "Or", "Xor", "Add", "Mul", "Eq", "Ne", "min", "max", "length"}
PRODUCT_AND_SUM = {"multiplyAdd", "MulAdd"}  # which take their first two in either order
TAGS = {"d", "dd", "dh", "di", "du", "D()"}  # of vector types: swapped they never compile
OPENING, CLOSING = "([{", ")]}"
ENDS_A_TERM = {"+", "-", "?", ":", "<", ">", "<=", ">=", "==", "!=", "&&", "||", "="}


@dataclass(frozen=True)
class Mutant:
    path: str
    start: int
    end: int
    new: str
    line: int
    before: str  # the whole line
    after: str

    def __str__(self):
        return f"{self.path}:{self.line}: {in_one_line(self.before)}  ==>  {in_one_line(self.after)}"


def in_one_line(text):
    return " ".join(text.split())


def tokens_of(text):
    """(kind, token, start, end) of all that is compiled."""
    found = []
    for match in TOKEN.finditer(text):
        if match.lastgroup not in ("comment", "directive", "space"):
            found.append((match.lastgroup, match.group(), match.start(), match.end()))
    return found


def changed_numbers(text):
    """Half, double, one more and one less."""
    suffix = re.search(r"[uUlLfF]*$", text).group() if not text.lower().startswith("0x") else ""
    body = text[:len(text) - len(suffix)] if suffix else text
    if re.fullmatch(r"[\d']+", body):
        value = int(body.replace("'", ""))
        return [str(n) + suffix for n in dict.fromkeys([value // 2, 2 * value, value + 1, value - 1])
                if n != value]
    nought = re.fullmatch(r"0?\.?0*", body)
    return [f"({body} {change})" for change in ("/ 2", "* 2", "+ 1", "- 1")
            if not (nought and change[0] in "/*")]


def skip_bracket(tokens, at):
    """The index behind the bracket that opens at `at`."""
    depth = 0
    while at < len(tokens):
        depth += tokens[at][1] in OPENING
        depth -= tokens[at][1] in CLOSING
        at += 1
        if depth == 0:
            return at
    return at


def is_binary(text, token):
    """The format of the house puts spaces around binary operators and nothing else."""
    return text[token[2] - 1] in " \n" and text[token[3]] in " \n"


def is_call(tokens, at):
    """Whether the bracket at `at` holds arguments, rather than parameters or a condition."""
    if tokens[at][1] not in "({" or at < 2 or tokens[at - 1][0] != "name":
        return False
    if tokens[at - 1][1] in ("for", "if", "while", "switch", "sizeof", "namespace"):
        return False
    kind, text = tokens[at - 2][:2]
    return not (kind == "name" and text not in ("return", "else") or text in (">", "&", "*"))


def end_of_term(text, tokens, at):
    """The index behind the product that begins at `at`."""
    while at < len(tokens) and tokens[at][1] not in CLOSING:
        token = tokens[at][1]
        if token in ",;" or token in ENDS_A_TERM and is_binary(text, tokens[at]):
            break
        at = skip_bracket(tokens, at) if tokens[at][1] in OPENING else at + 1
    return at


def arguments_of(tokens, at):
    """The ranges of text between the commas of a call whose bracket opens at `at`."""
    end, found = skip_bracket(tokens, at) - 1, []
    first = at = at + 1
    while at < end:
        if tokens[at][1] == ",":
            found.append((tokens[first][2], tokens[at - 1][3]))
            first = at + 1
        at = skip_bracket(tokens, at) if tokens[at][1] in OPENING else at + 1
    if first < end:
        found.append((tokens[first][2], tokens[end - 1][3]))
    return found


def swapped_arguments(text, tokens, at):
    """Neighbours among the arguments of the call whose bracket opens at `at` change places."""
    name = tokens[at - 1][1]
    arguments = arguments_of(tokens, at)
    for n, ((a, b), (c, d)) in enumerate(zip(arguments, arguments[1:])):
        same = text[a:b] == text[c:d] or name in COMMUTATIVE or name in PRODUCT_AND_SUM and n == 0
        if not same and not TAGS & {text[a:b], text[c:d]}:
            yield a, d, text[c:d] + text[b:c] + text[a:b]


def changes_of(text):
    """(start, end, new text) of every change to a source."""
    tokens = tokens_of(text)
    for at, (kind, token, start, end) in enumerate(tokens):
        if kind == "number" and not (at > 1 and tokens[at - 2][1] in FOR_SPEED_ALONE):
            yield from ((start, end, new) for new in changed_numbers(token))
        binary = is_binary(text, tokens[at])
        if kind == "name":
            yield from ((start, end, new) for new in NAMES.get(token, []))
        if binary or token in UNARY:
            yield from ((start, end, new) for new in OPERATORS.get(token, []))
        if token in ("+", "-") and binary:
            last = end_of_term(text, tokens, at + 1) - 1
            if last > at:
                yield start, tokens[last][3], ""
        if is_call(tokens, at):
            yield from swapped_arguments(text, tokens, at)


def mutants_of(text, path):
    """All changes to the text of this file."""
    for start, end, new in changes_of(text):
        line_start = text.rfind("\n", 0, start) + 1
        line_end = text.find("\n", end)
        changed = text[line_start:start] + new + text[end:line_end]
        yield Mutant(path, start, end, new, text.count("\n", 0, start) + 1,
                     text[line_start:line_end], changed)
