"""Where the sources stand, and which files belong to them."""

import os
import subprocess

SOURCE = os.environ.get("TESSARY_SOURCE", os.path.join(os.path.dirname(__file__), "..", ".."))


def git(*arguments):
    """What git prints, or None outside a repository."""
    command = ["git", "-c", "safe.directory=*", "-C", SOURCE, *arguments]
    try:
        done = subprocess.run(command, capture_output=True)
    except FileNotFoundError:
        return None
    return done.stdout.decode("utf-8", "replace") if done.returncode == 0 else None


def files():
    """Tracked files; without a repository, everything that is not built."""
    listing = git("ls-files", "-z")
    if listing is not None:
        yield from filter(None, listing.split("\0"))
        return
    for path, folders, names in os.walk(SOURCE):
        folders[:] = [f for f in folders if f not in ("build", "out", ".git", "__pycache__")]
        for name in names:
            yield os.path.relpath(os.path.join(path, name), SOURCE)
