"""The program used at random for long: what it holds at rest stays the same, and neither OpenGL nor
the X server ever objects. $TESSARY_SOAK_EVENTS is how many keys and mouse movements that takes,
$TESSARY_SOAK_MINUTES how long instead, $TESSARY_SOAK_SEED another course."""

import os
import statistics
import sys
import time

import harness
import menus
import resources
import visitor

EVENTS = int(os.environ.get("TESSARY_SOAK_EVENTS", "600"))
MINUTES = float(os.environ.get("TESSARY_SOAK_MINUTES", "0"))
SEED = int(os.environ.get("TESSARY_SOAK_SEED", "1138"))

# Events from one rest to the next.
STRETCH = 60

# The other one is an action of its own.
CALM_COMMANDS = [command for command in visitor.CALM_COMMANDS if command != "Cycle"]

RENDER = "Enqueuing 65536"

# A glide and some more.
MOST_FRAMES_OWED = 30

# The size in which it rests: memory for the window's pixels comes and goes with it.
AT_REST = (1152, 921)

# What the allocator, the driver and the desktop toolkit take now and then, once for all, and the room
# of one more picture of 2048 x 2048 points of 4 bytes: it comes when frames are drawn fast enough, on a
# busy machine long after the warm-up, and may go again. And what may come with every event: an entry
# of the catalogue, of which one in ten creates one, is 200 bytes.
KILOBYTES_AT_ONCE = 12 * 1024 + 2048 * 2048 * 4 // 1024
KILOBYTES_AN_EVENT = 0.5

AT_EVERY_REST = {"textures": 0, "lists": 0, "contexts": 1, "gl_errors": 0, "x_errors": 0}
FLAT = ("descriptors", "threads")

# What GTK keeps at the server, in a bare program of twenty lines as well: some pictures of the drawing
# extension with each file panel; and once for all, when it is first wanted, each shape of the pointer
# (one comes with the first letter that is typed) and the glyphs of each font.
GROWING_X_KINDS = {"PICTURE"}
X_KINDS_AT_ONCE = {"CURSOR": 4, "GLYPHSET": 4}


class Soak(visitor.Visitor):
    SEED = SEED

    def setUp(self):
        super().setUp()
        print(f"TESSARY_SOAK_SEED={SEED}", file=sys.stderr)
        self.counts = resources.Counts()
        self.addCleanup(self.counts.close)
        self.began = time.monotonic()
        self.actions.append((self.cycle, 1))

    def calm_command(self):
        self.command("Fractals", self.random.choice(CALM_COMMANDS))

    def cycle(self):
        """For a while, begun and ended by the same command."""
        self.command("Fractals", "Cycle")
        time.sleep(1)
        self.command("Fractals", "Cycle")

    def click(self):
        """With no menu open, so that none meets "Quit"."""
        self.keys("Escape", "Escape", "Escape")
        super().click()

    # ---- rests

    def rest(self):
        """Leaves panels, dialogs, menus and a selection that "Zoom" waits for, and waits in a window
        of one size until nothing happens any more."""
        self.leave_panels()
        program = self.program
        program.key("Escape", "Escape", "Escape", "Escape")
        if program.geometry()[2:] != AT_REST:
            program.resize(*AT_REST)
        program.drag(300, 300, 700, 600)
        harness.wait_until(self.falls_quiet, 600, "the program to come to rest")

    def falls_quiet(self):
        """Whether it comes to rest by itself; what goes on and on is cycling, which the command that
        began it then ends."""
        printed = harness.Unchanged(lambda: len(self.program.lines))
        at_work = harness.Unchanged(self.program.drawing_threads)
        frames = self.program.lines.count(RENDER)
        while printed.seconds() < 1 or at_work.seconds() < 0.2:
            if self.program.lines.count(RENDER) > frames + MOST_FRAMES_OWED:
                self.program.key(*menus.keys_to("Fractals", "Cycle"))
                return False
            time.sleep(0.05)
        return True

    def look(self):
        process = self.program.process.pid
        return {
            "events": self.events,
            **resources.of_process(process),
            **self.counts.read(),
            "x_resources": self.server.of(process),
        }

    # ---- the course

    def start_program(self):
        self.counts.clear()
        self.program = self.start_and_settle("--cpu", env=self.counts.environment,
                                             cwd=self.folder)
        self.server = resources.ServerResources(self.program.screen)
        self.addCleanup(self.server.close)

    def warm_up(self):
        """Does everything once: what is loaded and kept at the first use is there."""
        for action, _ in self.actions:
            action()
        for command in ("Save to disk", "Load from disk"):
            self.command("Fractals", command)
            harness.wait_until(lambda: self.open_panels(self.program), 30, "the panel")
            self.leave_panels()

    def goes_on(self):
        if MINUTES:
            return time.monotonic() < self.began + 60 * MINUTES
        return self.events < EVENTS

    def stretch(self):
        until = self.events + STRETCH
        while self.events < until:
            self.act()
            if self.ended():
                self.fail(f"the program ended with {self.program.wait_exit()}: "
                          + self.program.errors)
        self.rest()
        found = self.look()
        self.say(found)
        return found

    def say(self, found):
        kinds = found["x_resources"]
        print(*(f"{name}={value}" for name, value in found.items() if value is not kinds),
              "x: " + ", ".join(f"{kind} {kinds[kind]}" for kind in sorted(kinds)), file=sys.stderr)

    def test_it_holds_the_same_at_rest_whatever_was_done(self):
        self.start_program()
        self.warm_up()
        self.rest()
        looks = [self.look()]
        self.say(looks[0])
        while self.goes_on():
            looks.append(self.stretch())
        self.report(looks)
        for name, value in AT_EVERY_REST.items():
            with self.subTest(what=name):
                self.assertEqual({look[name] for look in looks}, {value})
        for name in FLAT:
            with self.subTest(what=name):
                self.assert_flat([look[name] for look in looks])
        self.assertGreater(looks[0]["x_resources"]["WINDOW"], 0)
        for kind in {kind for look in looks for kind in look["x_resources"]} - GROWING_X_KINDS:
            with self.subTest(what=f"X resources of the kind {kind}"):
                self.assert_flat([look["x_resources"][kind] for look in looks],
                                 X_KINDS_AT_ONCE.get(kind, 0))
        if not harness.SANITIZE:  # sanitizers keep memory that the program gave back
            with self.subTest(what="memory"):
                self.assert_memory_flat(looks)
        self.quit_from_anywhere()
        self.assertEqual((self.program.wait_exit(), self.program.errors), (0, ""))

    def assert_flat(self, values, at_once=0):
        """At some rest towards the end there is no more than there was at one of the first, but for
        what comes once for all."""
        third = max(len(values) // 3, 1)
        self.assertLessEqual(min(values[-third:]), max(values[:third]) + at_once, values)

    def assert_memory_flat(self, looks):
        third = max(len(looks) // 3, 1)
        more = (min(look["kilobytes"] for look in looks[-third:])
                - max(look["kilobytes"] for look in looks[:third]))
        events = looks[-1]["events"] - looks[0]["events"]
        self.assertLessEqual(more, KILOBYTES_AT_ONCE + KILOBYTES_AN_EVENT * events)

    def report(self, looks):
        later = looks[len(looks) // 3:]
        slope = 0.0
        if len(later) > 1:
            slope = statistics.linear_regression(
                [look["events"] for look in later], [look["kilobytes"] for look in later])[0]
        print(f"{looks[-1]['events']} events in {time.monotonic() - self.began:.0f} s, "
              f"{looks[-1]['frames']} frames, memory {looks[0]['kilobytes']} to "
              f"{looks[-1]['kilobytes']} kB, {slope:.3f} kB an event over the last two thirds",
              file=sys.stderr)


if __name__ == "__main__":
    menus.main()
