#!/usr/bin/env python3
"""Plants faults into the library, one at a time, and reports those that no suite notices.

Works on a copy in build/mutants; the tree itself is only read. What has been tried is noted in
build/mutants/results.jsonl and not tried again as long as the sources and tests are the same.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import shutil
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent))

import coverage
import faults
import workbench as bench

ROOT = pathlib.Path(__file__).resolve().parent.parent
MOST_DEPENDANTS = 12  # files that include a header; more would take minutes for each fault


def say(text):
    print(f"==> {text}", flush=True)


def digest_of(tree):
    """Stands for everything that decides what a suite does."""
    digest = hashlib.sha256()
    for folder in ("include", "src", "platform", "tests", "tools", "fuzz", "examples", "cmake"):
        for file in sorted((tree / folder).rglob("*")):
            if file.is_file():
                digest.update(str(file.relative_to(tree)).encode() + b"\0" + file.read_bytes())
    return digest.hexdigest()


class Planter:
    def __init__(self, work, covered, jobs):
        self._work = work
        self._covered = covered
        self._sources = work.sources()
        self._places = queue.Queue()
        for number in range(jobs):
            self._places.put(work.folder / f"worker{number}")

    def affected(self, fault):
        file = self._work.tree / fault.file
        return [file] if file.suffix == ".cpp" else self._work.dependants(file)

    def try_one(self, fault):
        """Returns what became of a fault, and the suite that noticed it."""
        suites = self._covered.suites_of(fault)
        if not suites:
            return "not reached", ""
        place = self._places.get()
        try:
            return self._try_at(place, fault, suites)
        finally:
            self._places.put(place)

    def _try_at(self, place, fault, suites):
        overlay = place / "overlay"
        shutil.rmtree(overlay, ignore_errors=True)
        mutated = overlay / fault.file
        mutated.parent.mkdir(parents=True)
        mutated.write_text(fault.apply((self._work.tree / fault.file).read_text()))

        changed = {}
        for source in self.affected(fault):
            changed[source] = place / "objects" / source.with_suffix(".o").relative_to(self._work.tree)
            try:
                self._work.compile(source, changed[source], [], overlay)
            except subprocess.CalledProcessError:
                return "does not compile", ""
        objects = [changed.get(s, self._work.object_of(s)) for s in self._sources]
        try:
            self._work.link(place / "library", objects)
        except RuntimeError:
            return "does not compile", ""
        for suite in suites:
            limit = int(max(10, 8 * suite.seconds))
            passed, _ = bench.run_suite(suite, place / "library", place / "scratch", limit)
            if not passed:
                return "caught", suite.name
        isSame = all(self._work.is_same_code(source, overlay, place) for source in changed)
        return ("same code", "") if isSame else ("survived", "")


def collect(work):
    """Returns all faults of src/, and the texts of its files."""
    texts = {}
    found = []
    for file in sorted((work.tree / "src").rglob("*")):
        if file.suffix not in (".cpp", ".h"):
            continue
        name = str(file.relative_to(work.tree))
        texts[name] = file.read_text()
        if file.suffix == ".h" and not 0 < len(work.dependants(file)) <= MOST_DEPENDANTS:
            continue
        found += faults.find_faults(name, texts[name])
    return found, texts


def coverage_map(work, digest, jobs):
    path = work.folder / f"coverage-{digest[:16]}.json"
    if not path.exists():
        covered = coverage.measure(work, jobs, say)
        for old in work.folder.glob("coverage-*.json"):
            old.unlink()
        covered.save(path)
    return coverage.CoverageMap.load(path)


def read_results(path, digest):
    results = {}
    if path.exists():
        for line in path.read_text().splitlines():
            entry = json.loads(line)
            if entry["tree"] == digest:
                results[(entry["file"], entry["line"], entry["after"])] = entry
    return results


def plant(work, planter, chosen, digest, jobs):
    """Tries the chosen faults and returns their entries, in order."""
    path = work.folder / "results.jsonl"
    known = read_results(path, digest)
    lock = threading.Lock()
    done = [0]

    def attempt(fault):
        key = (fault.file, fault.line, fault.after)
        if key in known:
            return known[key]
        begin = time.monotonic()
        outcome, suite = planter.try_one(fault)
        entry = {
            "tree": digest, "file": fault.file, "line": fault.line, "kind": fault.kind,
            "before": fault.before, "after": fault.after, "outcome": outcome, "suite": suite,
            "seconds": round(time.monotonic() - begin, 1),
        }
        with lock:
            with path.open("a") as file:
                file.write(json.dumps(entry) + "\n")
            done[0] += 1
            if done[0] % 20 == 0:
                say(f"{done[0]} tried")
        return entry

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        return list(pool.map(attempt, chosen))


def report(entries):
    """Prints the faults that nobody noticed, and the counts. Returns whether there are none."""
    counts = {}
    for entry in entries:
        counts[entry["outcome"]] = counts.get(entry["outcome"], 0) + 1
        if entry["outcome"] in ("survived", "not reached"):
            print(f"\n{entry['file']}:{entry['line']}: {entry['outcome']} ({entry['kind']})")
            print(f"    - {entry['before'].strip()}\n    + {entry['after'].strip()}")
    print()
    tried = sum(counts.get(outcome, 0) for outcome in ("caught", "survived", "not reached"))
    print(f"{tried} faults planted: " + ", ".join(f"{n} {outcome}" for outcome, n in sorted(counts.items())))
    return counts.get("caught", 0) == tried


def main():
    parser = argparse.ArgumentParser(prog="./dev mutants", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("count", nargs="?", type=int, default=300, help="how many faults compile and change something (default 300)")
    parser.add_argument("--seed", type=int, default=1, help="another seed plants other faults")
    parser.add_argument("--listed", action="store_true", help="plant those of mutants/listed.txt instead")
    parser.add_argument("--only", default="", help="plant only into files whose path holds this")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="processes at a time")
    parser.add_argument("--as-built", action="store_true", help="use the copy as it is, do not bring it up to date")
    arguments = parser.parse_args()

    work = bench.Workbench(ROOT, ROOT / "build" / "mutants")
    if arguments.as_built:
        work.open()
    else:
        say("copying and building the tree in build/mutants")
        work.prepare(arguments.jobs)
    digest = digest_of(work.tree)
    covered = coverage_map(work, digest, arguments.jobs)

    found, texts = collect(work)
    missing = []
    if arguments.listed:
        chosen, missing = faults.read_listed(ROOT / "mutants" / "listed.txt", texts)
    else:
        found = [fault for fault in found if arguments.only in fault.file]
        chosen = faults.choose(found, len(found), arguments.seed)
    planter = Planter(work, covered, arguments.jobs)
    entries = []
    say(f"planting {len(chosen) if arguments.listed else arguments.count} of {len(found)} faults")
    while chosen and (arguments.listed or len(entries) < arguments.count):
        size = len(chosen) if arguments.listed else arguments.count - len(entries)
        batch, chosen = chosen[:size], chosen[size:]
        entries += [
            entry for entry in plant(work, planter, batch, digest, arguments.jobs)
            if arguments.listed or entry["outcome"] not in ("does not compile", "same code")
        ]
    for line in missing:
        print(f"\nlisted, but in no file of src/ any more:\n    - {line}")
    return 0 if report(entries) and not missing else 1


if __name__ == "__main__":
    sys.exit(main())
