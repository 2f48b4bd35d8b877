"""What the measuring scripts say of the machine."""

import os
import pathlib
import platform

from processes import output


def describe_machine():
    """Its processors, memory, kernel, and what else it does."""
    cpu = next((line.split(":", 1)[1].strip() for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines()
        if line.startswith("model name")), platform.machine())
    memory = int(pathlib.Path("/proc/meminfo").read_text().split()[1]) // 1024
    return f"{os.cpu_count()} x {cpu}, {memory} MiB, Linux {platform.release()}, load {os.getloadavg()[0]:.1f}"


def describe_packages(*names):
    """Those that are installed, with their versions."""
    versions = output("dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *names).decode().split("\n")
    return "; ".join(sorted({line for line in versions if line}))


def describe_sharing():
    """Who else shares the toolkit's pages; empty where nobody does."""
    sharing = sum("libQt6Core" in maps for maps in _maps_of_all())
    return "" if sharing <= 1 else (f"{sharing} programs use the toolkit already: memory in parts is less than on a quiet "
        "machine, and most of all for the bare program")


def _maps_of_all():
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            yield (process / "maps").read_text()
        except OSError:
            continue  # it has ended, or is somebody else's
