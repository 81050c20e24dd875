#!/usr/bin/env python3
"""Replaces fuzz/corpus by a small set of inputs that reaches nearly the same code.

Takes the kept inputs and those that the last runs have added in build/fuzz/found, and keeps 150 at most
over all fuzzers, first those that reach most of what the others do not. Inputs in fuzz/found count and
stay. Run by `./dev fuzz --minimise`.
"""

import hashlib
import pathlib
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "fuzz"
MOST = 150
FIRST = 12  # of each fuzzer come before any further ones


def edges_of(fuzzer, folders, scratch):
    """Returns for each input the edges that it reaches, as the fuzzer notes them when it merges."""
    control = scratch / f"{fuzzer}.control"
    merged = scratch / fuzzer
    merged.mkdir()
    subprocess.run(
        [BUILD / "fuzz" / fuzzer, "-set_cover_merge=1", "-use_counters=0", f"-merge_control_file={control}",
         merged, *folders],
        check=True, stderr=subprocess.DEVNULL,
    )
    lines = control.read_text().splitlines()
    count = int(lines[0])
    paths = [pathlib.Path(line.strip()) for line in lines[2:2 + count]]
    rows = (line.split() for line in lines[2 + count:])
    return {paths[int(row[1])]: frozenset(row[2:]) for row in rows if row and row[0] == "FT"}


def order(edges, found):
    """Yields the inputs with the share of all edges that each adds to those before it."""
    total = len(frozenset().union(*edges.values()))
    reached = set()
    for path in [path for path in edges if found in path.parents]:
        reached |= edges[path]
        yield path, 2.0
    place = 0
    while len(reached) < total:
        path = max(edges, key=lambda p: (len(edges[p] - reached), -p.stat().st_size))
        share = len(edges[path] - reached) / total
        reached |= edges[path]
        yield path, share + (1.0 if place < FIRST else 0.0)
        place += 1


def main():
    fuzzers = sorted(path.name for path in (ROOT / "fuzz" / "corpus").iterdir())
    ranked = []
    with tempfile.TemporaryDirectory() as name:
        for fuzzer in fuzzers:
            found = ROOT / "fuzz" / "found" / fuzzer
            folders = [ROOT / "fuzz" / "corpus" / fuzzer, found, BUILD / "found" / fuzzer]
            edges = edges_of(fuzzer, [f for f in folders if f.is_dir()], pathlib.Path(name))
            ranked += [(share, fuzzer, path, found in path.parents) for path, share in order(edges, found)]
    ranked.sort(key=lambda row: -row[0])
    kept = {fuzzer: [] for fuzzer in fuzzers}
    for _, fuzzer, path, isFound in ranked[:MOST]:
        if not isFound:
            kept[fuzzer].append(path.read_bytes())
    for fuzzer, inputs in kept.items():
        folder = ROOT / "fuzz" / "corpus" / fuzzer
        shutil.rmtree(folder)
        folder.mkdir()
        for content in inputs:
            (folder / hashlib.sha1(content).hexdigest()).write_bytes(content)
        print(f"{fuzzer}: {len(inputs)} inputs")


if __name__ == "__main__":
    main()
