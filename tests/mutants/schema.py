"""Many changes compiled into one program, of which the environment chooses one.

Where a slot (slots.py) holds a change, the text chooses between the changed slot and the slot as it is,
by number: `TESSARY_MUTANT=17 program` runs with change 17 alone. What the compiler evaluates is always
that of the source, so that a change which no test notices here is tried by itself as well.
"""

import re
from bisect import bisect_right

from slots import STATEMENT, STEP, slots_of

VARIABLE = "TESSARY_MUTANT"
# Included before everything else.
CHOICE = f"""#pragma once
#include <cstdlib>
namespace mutants {{
static const int number = std::getenv("{VARIABLE}") ? std::atoi(std::getenv("{VARIABLE}")) : 0;
inline bool chosen(int which) {{ return number == which; }}
// In what the compiler may evaluate, where the source alone counts.
constexpr bool chosenNow(int which) {{ return !__builtin_is_constant_evaluated() && chosen(which); }}
}}
"""


class Text:
    """What is written, and which change each of its lines belongs to."""

    def __init__(self):
        self.pieces, self.line, self.owners = [], 1, [(1, 0)]

    def add(self, text):
        self.pieces.append(text)
        self.line += text.count("\n")

    def belongs_to(self, number):
        """What follows, from this line on."""
        self.owners.append((self.line, number))

    def owner(self):
        return self.owners[-1][1]

    def owner_of(self, line):
        return self.owners[bisect_right(self.owners, (line, float("inf"))) - 1][1]


class Schema:
    """The text of one file with those changes that have a slot; {number: mutant} go in."""

    def __init__(self, text, mutants):
        self.source, self.slots = text, slots_of(text)
        self.mutants = mutants
        self.unfit = set()
        self.place = {number: self._slot_of(mutant) for number, mutant in mutants.items()}

    def _slot_of(self, mutant):
        """The smallest slot around a change."""
        around = [s for s in self.slots if s.start <= mutant.start and mutant.end <= s.end]
        return min(around, key=lambda s: s.end - s.start, default=None)

    def numbers(self):
        """Those that can be chosen."""
        return [n for n, slot in self.place.items() if slot and n not in self.unfit]

    def written(self):
        """The text, and whose change stands in each line."""
        inside = {}
        for number in self.numbers():
            inside.setdefault(self.place[number], []).append(number)
        out = Text()
        self._write(out, 0, len(self.source), sorted(inside, key=lambda s: (s.start, -s.end)), inside)
        return out

    def _write(self, out, start, end, slots, inside):
        """Writes a range of the source whose slots are these."""
        while slots:
            slot = slots[0]
            within = [s for s in slots[1:] if s.start < slot.end]
            slots = [s for s in slots[1:] if s.start >= slot.end]
            out.add(self.source[start:slot.start])
            self._choose(out, slot, within, inside)
            start = slot.end
        out.add(self.source[start:end])

    def _choose(self, out, slot, within, inside):
        around, numbers = out.owner(), inside[slot]
        opening, otherwise, closing = BRACKETS[slot.kind]
        chosen = "chosenNow" if slot.constant else "chosen"
        out.belongs_to(numbers[0])
        out.add("{\n" if slot.kind == STATEMENT else "(\n")
        for number in numbers:
            out.belongs_to(number)
            out.add(opening.format(f"{chosen}({number})") + self._changed(slot, number) + otherwise)
        # What does not fit together is laid to the first change.
        out.belongs_to(numbers[0])
        out.add(OPEN[slot.kind])
        self._write(out, slot.start, slot.end, within, inside)
        out.add(closing)
        out.belongs_to(around)

    def _changed(self, slot, number):
        mutant = self.mutants[number]
        return self.source[slot.start:mutant.start] + mutant.new + self.source[mutant.end:slot.end]

    def drop(self, lines):
        """Leaves out the changes that these lines belong to; false where they belong to none."""
        out = self.written()
        found = {out.owner_of(line) for line in lines} - {0}
        self.unfit |= found
        return bool(found)

    def drop_all(self):
        self.unfit = set(self.mutants)


# Around what is chosen, by kind of slot; the first line of a choice belongs to its change.
BRACKETS = {
    "expression": ("::mutants::{} ? (\n", "\n) :\n", "\n)\n)"),
    STEP: ("::mutants::{} ? (void)(\n", "\n) :\n", "\n)\n)"),
    STATEMENT: ("if (::mutants::{}) {{\n", "\n} else\n", "\n}\n}"),
}
OPEN = {"expression": "(\n", STEP: "(void)(\n", STATEMENT: "{\n"}


def errors_in(output, path):
    """The lines of a file that a compiler complains of, or has on its way to a complaint."""
    name = re.escape(str(path))
    return {int(line) for line in re.findall(rf"(?m)^{name}:(\d+):\d+: (?:fatal )?error: ", output)}


def errors_on_the_way(output, path):
    """The lines of a file that a compiler names at all."""
    return {int(line) for line in re.findall(rf"{re.escape(str(path))}:(\d+)[:,]", output)}
