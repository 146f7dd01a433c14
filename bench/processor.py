#!/usr/bin/python3
"""bench/processor.py: the processor of this machine, as figures name it."""
import os
import re

MAKERS = {"GenuineIntel": "Intel", "AuthenticAMD": "AMD"}
SETS = (("avx512f", "AVX-512"), ("avx2", "AVX2"), ("sse4_1", "SSE4"), ("ssse3", "SSSE3"))


def describe(facts, cores):
    """A processor in words. facts: the text of /proc/cpuinfo; cores: how many it may use."""
    found = dict(re.findall(r"^([^\t\n:]+)\s*: *(.*)$", facts, re.MULTILINE))
    if "vendor_id" not in found:
        return f"unknown processor, {cores} cores"
    flags = found.get("flags", "").split()
    best = next((name for flag, name in SETS if flag in flags), "SSE2")
    maker = MAKERS.get(found["vendor_id"], found["vendor_id"])
    return (f"{maker}, {best} (family {found.get('cpu family', '?')}, "
            f"model {found.get('model', '?')}), {cores} cores")


def this():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        return describe(file.read(), len(os.sched_getaffinity(0)))


if __name__ == "__main__":
    print(this())
