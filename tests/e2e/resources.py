"""What a running program holds: memory, descriptors, threads, objects of OpenGL and of the X server,
and how often either of these two objected."""

import collections
import ctypes
import mmap
import os
import struct
import tempfile
import unittest

import harness

COUNTING = os.path.join(harness.BUILD, "tests", "e2e", "libtessary_counted_objects.so")
COUNTED = ("frames", "textures", "lists", "contexts", "gl_errors", "x_errors")


class Counts:
    """What the preloaded library counts."""

    def __init__(self):
        self._file = tempfile.NamedTemporaryFile(prefix="tessary-counts-")
        self._file.truncate(mmap.PAGESIZE)
        self._memory = mmap.mmap(self._file.fileno(), mmap.PAGESIZE)
        self.environment = {"LD_PRELOAD": COUNTING, "TESSARY_COUNTS": self._file.name}

    def read(self):
        return dict(zip(COUNTED, struct.unpack_from(f"{len(COUNTED)}q", self._memory)))

    def clear(self):
        self._memory[:] = bytes(mmap.PAGESIZE)

    def close(self):
        self._memory.close()
        self._file.close()


class _Client(ctypes.Structure):
    """XRes' XResClientIdSpec and XResClientIdValue."""

    _fields_ = [("client", ctypes.c_ulong), ("mask", ctypes.c_uint), ("length", ctypes.c_long),
                ("value", ctypes.c_void_p)]


class _Wanted(ctypes.Structure):
    _fields_ = [("client", ctypes.c_ulong), ("mask", ctypes.c_uint)]


class _Type(ctypes.Structure):
    _fields_ = [("name", ctypes.c_ulong), ("count", ctypes.c_uint)]


class ServerResources:
    """How many resources of each kind (windows, pixmaps, cursors, contexts) the X server keeps for a
    process."""

    PROCESS = 2  # which way of naming a client

    def __init__(self, screen):
        try:
            self._extension = ctypes.CDLL("libXRes.so.1")
        except OSError:
            raise unittest.SkipTest("libXRes is not installed") from None
        self._x = ctypes.CDLL("libX11.so.6")
        self._x.XOpenDisplay.restype = ctypes.c_void_p
        self._x.XFree.argtypes = [ctypes.c_void_p]
        self._x.XCloseDisplay.argtypes = [ctypes.c_void_p]
        self._x.XGetAtomName.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
        self._x.XGetAtomName.restype = ctypes.c_void_p
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(screen.display.encode()))
        if not self._display:
            raise AssertionError("no connection to the screen")

    def close(self):
        self._x.XCloseDisplay(self._display)

    def of(self, process):
        """The numbers over all connections of the process, by the names of the kinds."""
        return sum((self._of_client(client) for client in self._clients(process)),
                   collections.Counter())

    def _clients(self, process):
        wanted = _Wanted(0, self.PROCESS)
        count, found = ctypes.c_long(), ctypes.POINTER(_Client)()
        self._extension.XResQueryClientIds(
            self._display, ctypes.c_long(1), ctypes.byref(wanted), ctypes.byref(count),
            ctypes.byref(found))
        clients = []
        for entry in found[:count.value]:
            if entry.length >= 4 and ctypes.c_uint32.from_address(entry.value).value == process:
                clients.append(entry.client)
        self._extension.XResClientIdsDestroy(count, found)
        return clients

    def _of_client(self, client):
        kinds, count = ctypes.POINTER(_Type)(), ctypes.c_int()
        self._extension.XResQueryClientResources(
            self._display, ctypes.c_ulong(client), ctypes.byref(count), ctypes.byref(kinds))
        numbers = collections.Counter({self._name(kind.name): kind.count
                                       for kind in kinds[:count.value]})
        self._x.XFree(kinds)
        return numbers

    def _name(self, atom):
        text = self._x.XGetAtomName(self._display, atom)
        name = ctypes.string_at(text).decode()
        self._x.XFree(text)
        return name


def of_process(process):
    """Resident memory in kilobytes, descriptors and threads."""
    with open(f"/proc/{process}/status") as file:
        fields = dict(line.split(":", 1) for line in file)
    return {
        "kilobytes": int(fields["VmRSS"].split()[0]),
        "descriptors": len(os.listdir(f"/proc/{process}/fd")),
        "threads": len(os.listdir(f"/proc/{process}/task")),
    }
