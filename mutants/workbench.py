"""A copy of the tree with its build, and mutated versions of the library beside it.

All programs of the build take the library from a shared object (oneLibrary.cmake). A fault is
therefore tried by compiling the files that hold it, linking one shared object into a folder of its
own, and pointing LD_LIBRARY_PATH there.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import signal
import subprocess
import threading

MEMORY_LIMIT = 6 << 30  # bytes of address space for one suite
LIBRARY = "libTobrelScripts.so"
TRACING = "-fsanitize-coverage=trace-pc"


def run(command, **options):
    """Runs a command of the build; its output is shown only if it fails."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{shlex.join(map(str, command))}\n{done.stdout.decode(errors='replace')}")
    return done.stdout.decode(errors="replace")


def copy_tree(source, target):
    """Makes `target` a copy of the files that git knows or would know; untouched files keep their
    time, so that only what has changed is built again."""
    listing = run(["git", "-C", source, "ls-files", "-co", "--exclude-standard", "-z"])
    names = {name for name in listing.split("\0") if name and (source / name).is_file()}
    for name in names:
        content = (source / name).read_bytes()
        copied = target / name
        if not copied.exists() or copied.read_bytes() != content:
            copied.parent.mkdir(parents=True, exist_ok=True)
            copied.write_bytes(content)
            copied.chmod((source / name).stat().st_mode)
    for folder, folders, files in os.walk(target):
        if pathlib.Path(folder) == target:
            folders[:] = [name for name in folders if name != "build"]
        for file in files:
            path = pathlib.Path(folder, file)
            if str(path.relative_to(target)) not in names:
                path.unlink()


class Suite:
    """One entry of CTest: a command and where it runs."""

    def __init__(self, name, command):
        self.name = name
        self.command = command
        self.seconds = 0.0  # of processor time, measured when the coverage was taken


class Workbench:
    def __init__(self, root, folder):
        self.folder = folder
        self.tree = folder / "tree"
        self.build = self.tree / "build" / "debug"
        self._root = root
        self._commands = {}  # source file: how it is compiled
        self._objects = {}  # source file: what the build has made of it
        self._link = []  # everything of the link command but objects and output

    def prepare(self, jobs):
        """Copies and builds everything."""
        copy_tree(self._root, self.tree)
        run(
            [
                "cmake", "--preset", "debug",
                f"-DCMAKE_PROJECT_TobrelScripts_INCLUDE={self.tree}/mutants/oneLibrary.cmake",
                "-DTOBREL_SCRIPTS_FUZZ=ON", "-DTOBREL_SCRIPTS_INSTALL=OFF",
            ],
            cwd=self.tree,
        )
        run(["cmake", "--build", self.build, "-j", str(jobs)])
        self._read_commands()

    def open(self):
        """Takes what is there as it is."""
        self._read_commands()

    def _read_commands(self):
        sources = self.tree / "src"
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            file = pathlib.Path(entry["file"])
            words = shlex.split(entry["command"])
            if "ccache" in words[0]:
                words = words[1:]
            if sources in file.parents:
                place = words.index("-o")
                self._commands[file] = words[:place]
                self._objects[file] = self.build / words[place + 1]
        listing = run(["ninja", "-C", self.build, "-t", "commands", LIBRARY])
        link = next(line for line in listing.splitlines() if f"-soname,{LIBRARY}" in line)
        words = shlex.split(next(part for part in link.split(" && ") if "-soname" in part))
        place = words.index("-o")
        del words[place:place + 2]
        objects = [word for word in words if "TobrelScriptsObjects.dir" in word]  # not the tracer
        self._link = [word for word in words if word not in objects]

    def sources(self):
        return sorted(self._commands)

    def compile(self, source, output, flags, overlay=None, without=None):
        """Compiles a file of the library. With an overlay, a folder whose files take the place of
        those of the tree, its own files are compiled and included instead."""
        output.parent.mkdir(parents=True, exist_ok=True)
        command = [word for word in self._commands[source] if word != without]
        actual = source
        if overlay:
            replaced = overlay / source.relative_to(self.tree)
            actual = replaced if replaced.exists() else source
            command[1:1] = ["-I", str(overlay / "src"), f"-ffile-prefix-map={overlay}={self.tree}"]
        subprocess.run(
            command + flags + ["-w", f"-frandom-seed={source.name}", "-o", str(output), "-c", str(actual)],
            cwd=self.build, check=True, stderr=subprocess.PIPE,
        )

    def object_of(self, source):
        """Returns the object of the build, without a fault."""
        return self._objects[source]

    def is_same_code(self, source, overlay, place):
        """Returns whether the optimiser makes the same of a source with and without an overlay."""
        outputs = []
        for name, files in (("sound.o", None), ("faulty.o", overlay)):
            outputs.append(place / name)
            self.compile(source, outputs[-1], ["-O1", "-g0"], files, without=TRACING)
        return outputs[0].read_bytes() == outputs[1].read_bytes()

    def dependencies(self, source):
        """Returns the files of the tree that `source` is made of."""
        if not hasattr(self, "_dependencies"):
            self._dependencies = {}
            listing = run(["ninja", "-C", self.build, "-t", "deps"])
            for block in listing.split("\n\n"):
                names = [line.strip() for line in block.splitlines()[1:] if line.startswith("    ")]
                files = [pathlib.Path(os.path.normpath(self.build / name)) for name in names]
                if files:
                    self._dependencies[files[0]] = {f for f in files if self.tree in f.parents}
        return self._dependencies[source]

    def dependants(self, file):
        return [source for source in self.sources() if file in self.dependencies(source)]

    def link(self, folder, objects):
        """Links the library of the given objects into `folder`, under the names it is looked for."""
        folder.mkdir(parents=True, exist_ok=True)
        output = folder / (LIBRARY + ".new")
        run([self._link[0], *map(str, objects), *self._link[1:], "-o", str(output)], cwd=self.build)
        output.rename(folder / LIBRARY)
        for name in self.build.glob(LIBRARY + ".*"):
            alias = folder / name.name
            if not alias.is_symlink():
                alias.symlink_to(LIBRARY)

    def suites(self):
        """Returns the entries of CTest that run a program of the build themselves."""
        listing = json.loads(run(["ctest", "--test-dir", self.build, "--show-only=json-v1"]))
        found = []
        for test in listing["tests"]:
            command = test.get("command", [])
            if command and pathlib.Path(command[0]).is_relative_to(self.build):
                found.append(Suite(test["name"], command))
        return found


def run_suite(suite, library, scratch, processor_seconds, environment=None):
    """Runs a suite with the library of a folder. Returns whether it passed, and its processor time.

    The limit is one of processor time, since the machine may be busy; what waits for ever meets a
    longer one of the clock on the wall."""
    scratch.mkdir(parents=True, exist_ok=True)
    variables = dict(os.environ, LD_LIBRARY_PATH=str(library), TMPDIR=str(scratch), **(environment or {}))
    limits = f"ulimit -c 0; ulimit -t {processor_seconds}; ulimit -S -v {MEMORY_LIMIT >> 10}" + '; exec "$@"'
    process = subprocess.Popen(
        ["sh", "-c", limits, "sh", *suite.command], cwd=scratch, env=variables, start_new_session=True,
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )
    alarm = threading.Timer(60 + 4 * processor_seconds, _end_group, [process.pid])
    alarm.start()
    _, status, usage = os.wait4(process.pid, 0)
    alarm.cancel()
    process.returncode = os.waitstatus_to_exitcode(status)
    _end_group(process.pid)  # what it has started and not waited for
    return process.returncode == 0, usage.ru_utime + usage.ru_stime


def _end_group(group):
    try:
        os.killpg(group, signal.SIGKILL)
    except ProcessLookupError:
        pass
