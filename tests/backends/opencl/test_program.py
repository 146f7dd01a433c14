"""The whole program on OpenCL devices: the options, the precision it settles on, the picture in its
window, and every way a device can fail under it."""

import os
import re
import tempfile
import unittest

import harness
import numpy as np

POCL = "/etc/OpenCL/vendors/pocl.icd"
LAYER = os.path.join(harness.BUILD, "tests", "backends", "opencl", "libtessary_opencl_layer.so")
# What pocl 3 and pocl 6 call the devices "basic", which comes first, and "pthread".
FIRST = r"(basic|cpu-minimal)-"
SECOND = r"(pthread|cpu)-(?!minimal)"
DEVICE_LINE = r"^ Device ID: (\d+) .* Version .* RAM: \d+ MB, Double Precision: (Yes|No)$"


def devices(names="pthread", layer=None, log=None):
    """The environment with these pocl devices, with the test layer set up so when there is one."""
    env = {"OCL_ICD_VENDORS": POCL, "POCL_DEVICES": names}
    if layer is not None:
        env.update(OPENCL_LAYERS=LAYER, TESSARY_LAYER=layer)
    if log is not None:
        env["TESSARY_LAYER_LOG"] = log
    return env


class DeviceTest(harness.WindowTest):
    """One screen for all tests of a class: none of them moves the mouse."""

    @classmethod
    def setUpClass(cls):
        cls.screen = harness.Screen()
        cls.addClassCleanup(cls.screen.stop)

    def run_on(self, env, *args, window=False):
        return self.start(args, env=env, screen=self.screen, window=window)

    def run_to_end(self, env, *args):
        """(exit status, printed lines) of a run that ends by itself."""
        tessary = self.run_on(env, *args)
        return tessary.wait_exit(60), tessary.lines


class Options(DeviceTest):
    def listed(self, env, *args):
        done = harness.run_program(args, env)
        self.assertEqual(done.returncode, 0, done.stderr)
        return [line for line in done.stdout.decode().splitlines() if line.startswith(" Device")]

    def device_of(self, tessary):
        """The name of the device that it says it runs on."""
        return tessary.wait_for_line(r"^Running on device: (.*) in \w+ precision$")[1]

    def test_list_shows_every_device_with_its_number(self):
        lines = self.listed(devices("pthread basic"), "--list")
        self.assertEqual([re.match(DEVICE_LINE, line)[1] for line in lines], ["0", "1"])

    def test_list_after_device_numbers_from_zero_again(self):
        lines = self.listed(devices("pthread basic"), "--device1", "--list")
        self.assertEqual([re.match(DEVICE_LINE, line)[1] for line in lines], ["0", "1"])

    def test_list_shows_nothing_without_devices(self):
        self.assertEqual(self.listed({"OCL_ICD_VENDORS": "/nonexistent"}, "--list"), [])

    def test_list_survives_devices_that_answer_no_query(self):
        lines = self.listed(devices(layer="fail=clGetDeviceInfo:-5"), "--list")
        self.assertEqual(lines, [" Device ID: 0 Portable Computing Language Version   RAM: 0 MB, "
                                 "Double Precision: No"])

    def test_a_device_beyond_the_last_ends_the_program(self):
        done = harness.run_program(["--device1"], devices())
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.decode().splitlines()[-1],
                         "Invalid device Id. Run this app with the --list option to see available "
                         "devices")

    def test_a_negative_device_ends_the_program(self):
        self.assertEqual(harness.run_program(["--device-1"], devices()).returncode, 1)

    def test_device_chooses_the_device(self):
        tessary = self.run_on(devices("pthread basic"), "--device1")
        self.assertRegex(self.device_of(tessary), SECOND)

    def test_the_first_device_is_the_default(self):
        self.assertRegex(self.device_of(self.run_on(devices("pthread basic"))), FIRST)

    def test_double_takes_the_first_device_that_has_it(self):
        first = re.search(FIRST, self.listed(devices("pthread basic"), "--list")[0])[0]
        tessary = self.run_on(devices("pthread basic", f"no_fp64={first}"), "--double")
        self.assertRegex(self.device_of(tessary), SECOND)

    def test_double_takes_the_first_device_where_none_has_it(self):
        status, lines = self.run_to_end(devices("pthread basic", "no_fp64"), "--double")
        self.assertEqual(status, 1)

    def test_no_device_means_the_cpu_with_every_thread(self):
        tessary = self.run_on({"OCL_ICD_VENDORS": "/nonexistent"}, "--cpu1")
        threads = tessary.wait_for_line(r"^Maximum CPU threads: (\d+)")[1]
        tessary.wait_for_line(
            "^No OpenCL devices are available. Reverting to CPU rendering$")
        tessary.wait_for_line(f"^Running on CPU with {threads} threads in Single precision$")


class Precision(DeviceTest):
    """What the device can do, what was asked for, what is said and what is in force."""

    def settled(self, env, *args):
        """The lines up to the one that says where the program runs."""
        tessary = self.run_on(env, *args)
        running = tessary.wait_for_line("^Running on device: .* in (.*)$")
        return tessary.lines, running[1]

    def test_available_is_not_used_unasked(self):
        lines, precision = self.settled(devices())
        self.assertIn("Double Precision Available", lines)
        self.assertEqual(precision, "Single precision")

    def test_single_is_said_to_be_forced_where_double_is_available(self):
        lines, precision = self.settled(devices(), "--single")
        self.assertIn("Forcing single precision, double is available", lines)
        self.assertEqual(precision, "Single precision")

    def test_double_is_taken_without_a_word(self):
        lines, precision = self.settled(devices(), "--double")
        self.assertFalse([line for line in lines if "recision" in line and "Running" not in line
                          and "OpenCL" not in line])
        self.assertEqual(precision, "Double precision")

    def test_missing_is_said(self):
        lines, precision = self.settled(devices(layer="no_fp64"))
        self.assertIn("Double Precision is not Available", lines)
        self.assertEqual(precision, "Single precision")

    def test_missing_is_said_with_single_too(self):
        lines, precision = self.settled(devices(layer="no_fp64"), "--single")
        self.assertIn("Double Precision is not Available", lines)
        self.assertEqual(precision, "Single precision")

    def test_double_where_it_is_missing_ends_the_program(self):
        status, lines = self.run_to_end(devices(layer="no_fp64"), "--double")
        self.assertEqual(status, 1)
        self.assertIn("Double precision has been forced, but the the GPU does not support it",
                      lines)

    def test_the_last_option_counts(self):
        _, precision = self.settled(devices(), "--double", "--single")
        self.assertEqual(precision, "Single precision")


class Frames(DeviceTest):
    def picture(self, env, *args):
        tessary = self.run_on(env, *args, window=True)
        tessary.wait_for_frames(1, timeout=60)
        tessary.wait_until_quiet()
        picture = tessary.screenshot()
        tessary.close()
        self.assertEqual(tessary.wait_exit(), 0)
        return picture, tessary.lines

    def share_that_differs(self, one, other):
        """Share of pixels whose colours lie apart; the menu's text is the same in both."""
        apart = np.abs(one.astype(int) - other.astype(int)).max(axis=2) > 8
        return apart.mean()

    def test_the_device_draws_what_the_cpu_draws(self):
        cpu, _ = self.picture(devices(), "--cpu2")
        for option, precision in (("--single", "single"), ("--double", "double")):
            with self.subTest(precision):
                drawn, lines = self.picture(devices(), option)
                self.assertTrue([line for line in lines if re.match(
                    f"OpenCL {precision} precison on {SECOND}", line)])
                self.assertFalse([line for line in lines if line.startswith("Enqueuing")])
                self.assertLess(self.share_that_differs(cpu, drawn), 0.01)

    def test_closing_the_window_releases_everything(self):
        with tempfile.TemporaryDirectory() as folder:
            log = os.path.join(folder, "calls")
            self.picture(devices(layer="", log=log))
            with open(log) as file:
                calls = [line.split()[0] for line in file]
        for made, released in (("clCreateContext", "clReleaseContext"),
                               ("clCreateCommandQueue", "clReleaseCommandQueue"),
                               ("clCreateBuffer", "clReleaseMemObject"),
                               ("clCreateProgramWithSource", "clReleaseProgram"),
                               ("clCreateKernel", "clReleaseKernel")):
            self.assertGreater(calls.count(made), 0, made)
            self.assertEqual(calls.count(made), calls.count(released), made)

    def test_a_gpu_draws_the_same_in_groups_of_sixteen(self):
        chosen, _ = self.picture(devices())
        sixteen, _ = self.picture(devices(layer="type=4"))
        self.assertEqual(self.share_that_differs(chosen, sixteen), 0)


class Failures(DeviceTest):
    """Each failure of the device in use ends the process with its message and status."""

    CASES = [
        ("fail=clCreateContext:-6", ["Could not create context"], 2),
        ("fail=clCreateCommandQueue:-6", ["Could not create command queue"], 3),
        ("fail=clCreateProgramWithSource:-6", ["Could not create program from source"], 4),
        ("fail=clBuildProgram:-11;log_size=0",
         ["Could not build program", "Error code -11", "Build log is NULL"], 5),
        ("fail=clBuildProgram:-11;log_size=3",
         ["Could not build program", "Error code -11", "lll"], 5),
        ("fail=clCreateKernel:-46", ["Could not create kernel"], 6),
        ("fail=clCreateBuffer#2:-4", ["Could not create memory buffer"], 7),
        ("fail=clSetKernelArg@12:-51", ["Could not set kernel arg"], 4),
        ("fail=clEnqueueNDRangeKernel:-54",
         ["Could not enqueue task", "-54 is the error code."], 5),
        ("fail=clEnqueueReadBuffer:-5", ["Could not read back buffer", "Error code -5"], 6),
    ]

    def test_every_failure_has_its_message_and_status(self):
        for settings, message, status in self.CASES:
            with self.subTest(settings):
                ended, lines = self.run_to_end(devices(layer=settings))
                self.assertEqual(lines[-len(message):], message)
                self.assertEqual(ended, status)

    def test_a_text_that_does_not_compile_shows_the_compilers_log(self):
        status, lines = self.run_to_end(devices(layer="broken_source"))
        self.assertEqual(status, 5)
        self.assertTrue([line for line in lines if "this_does_not_exist" in line])


if __name__ == "__main__":
    unittest.main()
