"""Runs the program that draws menus under many states of OpenGL, on a screen of its own."""

import os
import sys
import unittest

try:
    import harness
except ImportError:  # run by hand rather than by ctest
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))
    import harness

PROGRAM = os.environ.get("RENDER_STATE_TEST") or os.path.join(
    harness.BUILD, "tests/glutmenu/toolkit_render_state")


class RenderState(unittest.TestCase):
    def test_a_look_and_a_state_that_nothing_of_the_program_s_own_changes(self):
        with harness.Screen(wm=False) as screen:
            program = harness.Program(screen, ["--gtest_brief=1"], program=PROGRAM)
            self.addCleanup(program.stop)
            status = program.process.wait(60 * harness.PATIENCE)
            told = "\n".join(program.lines[-200:])
            self.assertEqual(status, 0, told + program.errors)
            self.assertIn("[  PASSED  ]", told)


if __name__ == "__main__":
    unittest.main()
