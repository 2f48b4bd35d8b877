"""From what gcovr has counted, prints a table by folder and writes a list of what was not come by:

    coverage_table.py COUNTS LIST
"""

import json
import pathlib
import sys


class Count:
    def __init__(self):
        self.all = 0
        self.met = 0

    def add(self, is_met):
        self.all += 1
        self.met += is_met

    def __str__(self):
        return f"{self.met:7,} of {self.all:7,}  {100 * self.met / self.all if self.all else 100:5.1f} %"


def main():
    counts, listing = (pathlib.Path(argument) for argument in sys.argv[1:3])
    folders = {}
    untested = []
    for file in json.loads(counts.read_text())["files"]:
        # Headers are read through links to their folders.
        source = pathlib.Path(file["file"]).resolve().relative_to(pathlib.Path.cwd())
        text = source.read_text().split("\n")
        for key in (str(source.parent), "all"):
            lines, branches = folders.setdefault(key, (Count(), Count()))
            for line in file["lines"]:
                if not line.get("gcovr/noncode"):
                    lines.add(line["count"] > 0)
                for branch in line["branches"]:
                    branches.add(branch["count"] > 0)
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            missed = sum(branch["count"] == 0 for branch in line["branches"])
            number = line["line_number"]
            if line["count"] == 0:
                untested.append(f"{source}:{number}: line       {text[number - 1].strip()}")
            elif missed:
                untested.append(f"{source}:{number}: {missed} of {len(line['branches'])}     {text[number - 1].strip()}")
    listing.write_text("\n".join(untested) + "\n")

    print(f"{'':<36}{'lines':>17}{'branches':>26}")
    for folder in sorted(folders, key=lambda name: (name == "all", name)):
        lines, branches = folders[folder]
        print(f"{folder:<36}{lines}   {branches}")
    print(f"not come by: {listing}")


if __name__ == "__main__":
    main()
