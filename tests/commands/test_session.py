"""A long session of somebody who tries everything at random, from a fixed seed.
$TESSARY_SESSION_EVENTS is its length in keys and mouse movements (long under a sanitizer, short
otherwise), $TESSARY_SESSION_SEED another session."""

import os

import harness
import menus
import visitor

EVENTS = int(os.environ.get("TESSARY_SESSION_EVENTS", "3000" if harness.SANITIZE else "400"))


class Session(visitor.Visitor):
    DEVICES = 2
    SEED = int(os.environ.get("TESSARY_SESSION_SEED", "1138"))

    def start_program(self):
        self.program = self.start_and_settle("--cpu", env=menus.TWO_DEVICES,
                                             cwd=self.folder)

    def test_everything_at_random_and_then_quit(self):
        self.start_program()
        while self.events < EVENTS:
            self.act()
            if self.ended():
                # A loose click or key may have met "Quit".
                self.assertEqual(self.program.wait_exit(), 0, self.program.errors)
                self.start_program()
        self.quit_from_anywhere()
        self.assertEqual(self.program.wait_exit(), 0, self.program.errors)


if __name__ == "__main__":
    menus.main()
