"""Where a C++ source holds expressions and statements that can be chosen at run time.

A slot is a range of the text that a conditional expression may stand for (EXPRESSION, STEP: the last
part of a for loop's head) or an if statement (STATEMENT). No parser of C++: brackets and a few words
tell enough, and what is taken wrongly does not compile and is left to the slow way. No slot is made of
what the compiler itself evaluates: constants, static assertions, labels, conditions of `if constexpr`.
"""

from dataclasses import dataclass

from changes import is_binary, tokens_of

EXPRESSION, STEP, STATEMENT = "expression", "step", "statement"
PAIRS = {"(": ")", "[": "]", "{": "}", "<": ">"}
CONSTANT = {"constexpr", "constinit", "consteval", "using", "static_assert", "typedef", "enum", "friend"}
HOLDS_STATEMENTS = {"namespace", "struct", "class", "union", "extern"}
BEFORE_A_BODY = {")", "]", "}", "const", "noexcept", "override", "final", "mutable", "HWY_ATTR"}
ASSIGNS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}


@dataclass(frozen=True)
class Slot:
    start: int
    end: int
    kind: str
    constant: bool  # in a function that the compiler may evaluate


class Finder:
    """Walks through the tokens of a text, statement by statement."""

    def __init__(self, text):
        self.text, self.tokens, self.slots, self.constant = text, tokens_of(text), [], False
        self.words = [token[1] for token in self.tokens]
        self.ends = self._matching_brackets()

    def _is_angle(self, at):
        return self.words[at] in ("<", ">", ">>") and not is_binary(self.text, self.tokens[at])

    def _matching_brackets(self):
        """The index of each bracket's other half. Angle brackets count where nothing else fits."""
        ends, opened = {}, []
        for at, word in enumerate(self.words):
            if word in "([{" or word == "<" and self._is_angle(at):
                opened.append(at)
            elif word in ")]}":
                while opened and self.words[opened[-1]] == "<":
                    opened.pop()
                if opened:
                    ends[opened.pop()] = at
            elif self._is_angle(at):
                for _ in word:
                    if opened and self.words[opened[-1]] == "<":
                        ends[opened.pop()] = at
        return ends

    def _behind(self, at):
        """The index behind a token, or behind all that it opens."""
        return max(self.ends.get(at, at), at) + 1

    def _find(self, wanted, at, end):
        """The first of these words outside brackets, or the end."""
        while at < end and self.words[at] not in wanted:
            at = self._behind(at)
        return min(at, end)

    def _split(self, mark, at, end):
        """Ranges between the marks outside brackets."""
        while at <= end:
            stop = self._find({mark}, at, end)
            yield at, stop
            at = stop + 1

    def _slot(self, at, end, kind=EXPRESSION):
        if at < end and self.words[at] != "{":
            self.slots.append(Slot(self.tokens[at][2], self.tokens[end - 1][3], kind, self.constant))

    def _value(self, at, end):
        """An expression, and what its brackets hold."""
        self._slot(at, end)
        self._brackets(at, end)

    def _brackets(self, at, end):
        while at < end:
            if at in self.ends:
                self._inside(at)
            at = self._behind(at)

    def _inside(self, opening):
        """What stands between brackets: statements of a lambda, or values between commas."""
        at, end = opening + 1, self.ends[opening]
        if self.words[opening] == "<":
            return
        if self.words[opening] == "{" and self.words[opening - 1] in BEFORE_A_BODY:
            self.statements(at, end)
            return
        for first, last in self._split(",", at, end):
            self._initial(first, last)

    def _initial(self, at, end):
        """A value, or the one behind the name it is given to."""
        given = self._find({"="}, at, end)
        self._value(given + 1 if given < end else at, end)

    def statements(self, at, end):
        while at < end:
            at = max(self._statement(at, end), at + 1)

    def _statement(self, at, end):
        """Takes one statement and tells the index behind it."""
        word = self.words[at]
        if word == "{":
            self.statements(at + 1, self.ends.get(at, end))
            return self._behind(at)
        if word in ("if", "while", "switch", "for", "catch"):
            return self._head(at, word)
        if word in ("else", "do", "try", ";"):
            return at + 1
        if word in ("case", "default", "public", "private", "protected"):
            return self._find({":", ";"}, at, end) + 1
        if word == "template":
            return self._behind(at + 1)
        if word in HOLDS_STATEMENTS:
            return self._scope(at, end)
        return self._simple(at, end)

    def _head(self, at, word):
        bracket = at + 1
        if self.words[bracket] == "constexpr":
            return self._behind(bracket + 1)
        end = self.ends.get(bracket, bracket)
        parts = list(self._split(";", bracket + 1, end))
        colon = self._find({":", "?"}, bracket + 1, end)
        if word == "for" and len(parts) == 1 and colon < end:
            self._value(colon + 1, end)
        elif word == "for" and len(parts) == 3:
            for first, last in self._split(",", *parts[0]):
                self._assigned(first, last)
            self._value(*parts[1])
            self._slot(*parts[2], STEP)
        elif word != "catch":
            for part in parts:
                self._initial(*part)
        return end + 1

    def _scope(self, at, end):
        """Statements of a namespace or a class; a name of either alone is part of a declaration."""
        stop = self._find({"{", ";", "=", "("}, at, end)
        if stop < end and self.words[stop] == "{":
            self.statements(stop + 1, self.ends.get(stop, end))
            return self._behind(stop)
        return self._simple(at, end)

    def _simple(self, at, end):
        """A declaration, the definition of a function, or an expression."""
        stop = body = at
        while stop < end and self.words[stop] != ";":
            body = stop
            stop = self._behind(stop)
            if self._is_body(at, body):
                self._function(at, body)
                return stop
        if not CONSTANT & set(self.words[at:self._find({"=", "{", "("}, at, stop)]):
            self._plain(at, stop)
        return stop + 1

    def _function(self, at, body):
        around = self.constant
        self.constant = around or bool({"constexpr", "consteval"} & set(self.words[at:body]))
        self._brackets(at, body)
        self.statements(body + 1, self.ends[body])
        self.constant = around

    def _is_body(self, first, at):
        """Whether the bracket opens the body of a function, rather than a lambda's or a value."""
        return (self.words[at] == "{" and at in self.ends and self.words[at - 1] in BEFORE_A_BODY
                and self._find({"="}, first, at) == at and self.words[first] != "return")

    def _plain(self, at, stop):
        word = self.words[at]
        if word in ("return", "throw"):
            self._value(at + 1, stop)
            return
        if word in ("break", "continue") or not self._declares(at, stop):
            if stop < len(self.tokens):
                self._slot(at, stop + 1, STATEMENT)
        for first, last in self._split(",", at, stop):
            self._assigned(first, last)

    def _assigned(self, at, stop):
        given = self._find(ASSIGNS, at, stop)
        self._brackets(at, given)
        if given < stop:
            self._value(given + 1, stop)

    def _declares(self, at, stop):
        """A type and a name stand side by side before the value, if there is one."""
        while at + 1 < self._find(ASSIGNS, at, stop):
            behind = self._behind(at)
            if behind < stop and self.tokens[behind][0] == "name":
                if self.tokens[at][0] == "name" or self.words[at] == "<" and at in self.ends:
                    return True
                if self.words[at] in ("&", "*", "&&") and self.text[self.tokens[at][2] - 1] not in " \n(":
                    return True
            at = behind
        return "auto" in self.words[at:stop]


def slots_of(text):
    """All slots; two of them are apart or one holds the other."""
    finder = Finder(text)
    finder.statements(0, len(finder.tokens))
    return sorted(set(finder.slots), key=lambda slot: (slot.start, -slot.end, slot.kind != STATEMENT))
