"""Reads the list of faults that change nothing that could be told from outside (equivalent.txt)."""

import re

# How the reason begins of a fault that makes a difference, and yet is not noticed.
KNOWN = "Not equivalent"
HEAD = re.compile(r"^(\S+) (\S.*?)(?: \[(\d+)\])?$")


def read(path):
    """By what a fault is found again by: the reason."""
    reasons = {}
    if not path.exists():
        return reasons
    for number, block in enumerate(re.split(r"\n\s*\n", path.read_text("latin-1")), 1):
        lines = [line for line in block.split("\n") if line.strip() and not line.startswith("#")]
        if not lines:
            continue
        head = HEAD.match(lines[0])
        if head is None or len(lines) < 4 or not lines[1].startswith("- ") or not lines[2].startswith("+ "):
            raise SystemExit(f"error: {path}: paragraph {number} is not a fault with its reason")
        file, function, occurrence = head.groups()
        identity = (file, function, lines[1][2:], lines[2][2:], int(occurrence or 1))
        if identity in reasons:
            raise SystemExit(f"error: {path}: {file} {function} is there twice: {lines[2]}")
        reasons[identity] = " ".join(line.strip() for line in lines[3:])
    return reasons
