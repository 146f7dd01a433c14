"""Programs on a system that has too little of something: what to preload, and how to count."""

import os
import resource
import tempfile

BUILD = os.environ.get("TESSARY_BUILD", os.path.join("build", "release"))
LIBRARY = os.path.join(BUILD, "tests", "support", "libtessary_scarce.so")


class Scarcity:
    """The environment in which the number-th of something is missing, and whether it came to
    that."""

    def __init__(self, what, number):
        with tempfile.NamedTemporaryFile(prefix="tessary-scarce-", delete=False) as file:
            self.path = file.name
        os.remove(self.path)
        self.environment = {"LD_PRELOAD": LIBRARY, "TESSARY_SCARCE": f"{what}={number}",
                            "TESSARY_SCARCE_FILE": self.path}

    def came(self):
        if not os.path.exists(self.path):
            return False
        os.remove(self.path)
        return True


def each(what, attempt):
    """attempt(environment) with the first one missing, with the second one, and so on until there
    are no more; how many there were."""
    for number in range(1, 1000):
        scarcity = Scarcity(what, number)
        attempt(scarcity.environment)
        if not scarcity.came():
            return number - 1
    raise AssertionError("there is no end to them")


def descriptors(most):
    """For preexec_fn: so many descriptors may be open."""
    return lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
