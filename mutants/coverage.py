"""Which suites reach which lines of the library.

The traced library notes the basic blocks that a run reaches (tracer.cpp); the compiler's line table
says which lines each block holds.
"""

import bisect
import concurrent.futures
import json
import os
import re
import shutil
import subprocess

import workbench as bench

TIME_LIMIT = 60  # seconds of processor; what takes longer is of no use for a fault

_CALL = re.compile(r"\scall\s.*<__sanitizer_cov_trace_pc")
_ADDRESS = re.compile(r"^\s*([0-9a-f]+):\t")
_FUNCTION = re.compile(r"^([0-9a-f]+) <.*>:$")
_ROW = re.compile(r"(?m)^\S.*?\s+\d+\s+(0x[0-9a-f]+)\b")


class CoverageMap:
    """For each line that holds code, the indices of the suites that reach it."""

    def __init__(self, suites, lines):
        self.suites = suites
        self._lines = lines  # file: {line: [suite, ...]}

    def suites_of(self, fault):
        """Returns the suites that may notice a fault, those that reach least of the library first, slow
        ones last. A line without code of its own belongs to the statement before it; constants and the
        like to everybody who reaches the file, and a file without code to all."""
        lines = self._lines.get(fault.file) or {0: range(len(self.suites))}
        found = set()
        for line in range(fault.line, max(fault.line - 6, 0), -1):
            if line in lines:
                found = set(lines[line])
                break
        if not found:
            found = {suite for reached in lines.values() for suite in reached}
        return [self.suites[i] for i in sorted(found, key=lambda i: (self.suites[i].seconds > 2, self._breadth(i)))]

    def _breadth(self, suite):
        if not hasattr(self, "_breadths"):
            self._breadths = {}
            for lines in self._lines.values():
                for reached in lines.values():
                    for index in reached:
                        self._breadths[index] = self._breadths.get(index, 0) + 1
        return self._breadths.get(suite, 0)

    def save(self, path):
        suites = [(s.name, s.command, s.seconds) for s in self.suites]
        path.write_text(json.dumps({"suites": suites, "lines": self._lines}))

    @staticmethod
    def load(path):
        data = json.loads(path.read_text())
        suites = []
        for name, command, seconds in data["suites"]:
            suites.append(bench.Suite(name, command))
            suites[-1].seconds = seconds
        lines = {file: {int(n): s for n, s in lines.items()} for file, lines in data["lines"].items()}
        return CoverageMap(suites, lines)


def _block_begins(library):
    """Returns where blocks begin, in order, each with the address that the tracer sees of it. The first
    block of a function begins with the function, before the tracer is called."""
    begins = []
    function = None
    isNext = False
    for line in bench.run(["objdump", "-d", "--no-show-raw-insn", library]).splitlines():
        label = _FUNCTION.match(line)
        if label:
            function = int(label.group(1), 16)
        match = _ADDRESS.match(line)
        if not match:
            continue
        if isNext:
            address = int(match.group(1), 16)
            begins.append((function or address, address))
            function = None
        isNext = bool(_CALL.search(line))
    return sorted(begins)


def _lines_of_blocks(library, begins, tree):
    """Returns for each block the (file, line) of the code in it."""
    places = [place for place, _ in begins]
    table = bench.run(["objdump", "--dwarf=decodedline", library])
    addresses = sorted({int(match, 16) for match in _ROW.findall(table)})
    # The table names files by their last part only.
    named = subprocess.run(
        ["addr2line", "-e", library], input="".join(f"{a:#x}\n" for a in addresses),
        stdout=subprocess.PIPE, text=True, check=True,
    )
    lines = {}
    for address, place in zip(addresses, named.stdout.splitlines()):
        block = bisect.bisect_right(places, address) - 1
        path, _, line = place.split(" ")[0].rpartition(":")
        path = os.path.normpath(path)
        if block >= 0 and line.isdigit() and path.startswith(f"{tree}/"):
            lines.setdefault(begins[block][1], set()).add((os.path.relpath(path, tree), int(line)))
    return lines


def measure(work, jobs, say):
    """Runs each suite, and returns the map. Suites that fail without any fault are left out."""
    folder = work.folder / "runs"
    library = work.build / bench.LIBRARY
    begins = _block_begins(library)
    lines = _lines_of_blocks(library, begins, work.tree)
    suites = work.suites()
    say(f"{len(begins)} blocks; running {len(suites)} suites one by one")

    def trace(suite):
        place = folder / re.sub(r"\W", "_", suite.name)
        shutil.rmtree(place, ignore_errors=True)
        place.mkdir(parents=True)
        note = place / "reached"
        passed, suite.seconds = bench.run_suite(
            suite, work.build, place / "scratch", TIME_LIMIT, {"MUTANTS_TRACE": str(note)})
        reached = _read_trace(note) if note.exists() else []
        shutil.rmtree(place, ignore_errors=True)
        return passed, reached

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        outcomes = list(pool.map(trace, suites))

    kept = []
    covered = {}
    for suite, (passed, reached) in zip(suites, outcomes):
        if not passed:
            say(f"left out, since it fails without a fault: {suite.name}")
            continue
        for block in reached:
            for file, line in lines.get(block, ()):
                covered.setdefault(file, {}).setdefault(line, set()).add(len(kept))
        kept.append(suite)
    listed = {file: {n: sorted(s) for n, s in numbers.items()} for file, numbers in covered.items()}
    return CoverageMap(kept, listed)


def _read_trace(note):
    """Returns the addresses whose byte is set, without reading the holes of the file."""
    reached = []
    with open(note, "rb", buffering=0) as file:
        size = os.fstat(file.fileno()).st_size
        place = 0
        while place < size:
            try:
                place = os.lseek(file.fileno(), place, os.SEEK_DATA)
            except OSError:
                break  # nothing but holes
            end = os.lseek(file.fileno(), place, os.SEEK_HOLE)
            data = os.pread(file.fileno(), end - place, place)
            reached += [place + match.start() for match in re.finditer(rb"[^\0]", data)]
            place = end
    return reached
