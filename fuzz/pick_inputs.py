#!/usr/bin/env python3
"""Picks the inputs of a libFuzzer merge that add the most to a seed corpus.

    pick_inputs.py MERGE_CONTROL_FILE SEED_DIR

The control file (-merge=1 -merge_control_file=F) lists the files of the merge, those of the
first directory (the seeds) first, and the edges (COV) and features (FT) each file reached.
Greedily, the input adding the most new edges (then features, then the smaller) is picked
until nothing adds or 50 inputs / 200 KB are picked; the picked files are copied into SEED_DIR.
Prints what was picked and what was left out.
"""
import os
import shutil
import sys

MAX_FILES = 50
MAX_BYTES = 200 * 1024


def read_control(path):
    """The merged files, the count of seeds among them, and each file's tagged edges and features."""
    lines = open(path, errors="replace").read().split("\n")
    count, seeds = int(lines[0]), int(lines[1])
    files = lines[2 : 2 + count]
    reached = {}
    for line in lines[2 + count :]:
        fields = line.split()
        if len(fields) >= 2 and fields[0] in ("COV", "FT"):
            reached.setdefault(int(fields[1]), set()).update(fields[0] + f for f in fields[2:])
    return files, seeds, reached


def main(control, seed_dir):
    files, seeds, reached = read_control(control)
    have = set().union(*(reached.get(i, set()) for i in range(seeds)))
    candidates = {i: reached.get(i, set()) for i in range(seeds, len(files))}

    def gain(i):
        new = candidates[i] - have
        edges = sum(1 for x in new if x.startswith("COV"))
        return (edges, len(new), -os.path.getsize(files[i]))

    picked, total = [], 0
    while candidates and len(picked) < MAX_FILES:
        best = max(candidates, key=gain)
        adds = gain(best)
        reach = candidates.pop(best)
        if adds[1] == 0:
            break
        size = os.path.getsize(files[best])
        if total + size > MAX_BYTES:
            continue
        have |= reach
        picked.append(files[best])
        total += size
    for path in picked:
        shutil.copy(path, seed_dir)
    left = set().union(set(), *candidates.values()) - have
    left_edges = sum(1 for x in left if x.startswith("COV"))
    print(f"{len(picked)} inputs ({total} bytes) added to the seeds; "
          f"left out: {left_edges} edges, {len(left) - left_edges} features")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
