"""Runs a program on a scenario's project, disturbed or not, and tells what it left."""

import dataclasses
import os
import re
import shutil
import signal
import subprocess

from scenarios import Link

ERRORS = {"ENOSPC": 28, "EIO": 5, "EACCES": 13, "EMFILE": 24, "EINTR": 4}
# Two processes on one project; see races.py. The latter two begin at times drawn by lot.
RACES = ("race", "race-kill", "delay", "delay-kill")
DEATHS = {"kill": -signal.SIGKILL, "term": -signal.SIGTERM}
SHORT = ("short", "full")
WRITES = ("write", "pwrite64")
TRANSFERS = ("read", "pread64", *WRITES)
OUTPUT = ("standard-output", "standard-error")  # names of files in a workplace
PATIENCE = 60  # seconds; a run takes hundredths of one

TEMPORARY = re.compile(
    r"(\.(save-|cook-|)[0-9a-f-]{36}\.tmp|\.vornu-[0-9a-f]{16}\.tmp|"
    r"vornu-upgrade-verify-[0-9a-f-]{36}\.[ab]\.vscene)$"
)
STAMP = re.compile(r"^(\d\d:\d\d:\d\d\S*|\[\d[^]]*\]) ", re.MULTILINE)


@dataclasses.dataclass
class Call:
    """A call that looks at, reads or changes files. Paths are relative to the project."""

    number: int
    name: str
    writes: bool  # on what is open for writing
    paths: tuple

    def __str__(self):
        return f"{self.name}({', '.join(self.paths)})"


@dataclasses.dataclass
class Run:
    code: int
    out: str
    err: str

    def complaints(self):
        """Lines about a file, or the run, that failed."""
        begins = ("FAILED   ", "vornu-", "Not found: ")
        return [line for line in self.err.splitlines() if line.startswith(begins)]

    def warnings(self):
        return [line for line in self.out.splitlines() if "[Warn]" in line or "[Error]" in line]


def write_tree(root, tree):
    shutil.rmtree(root, ignore_errors=True)
    for folder in ("settings", "tmp"):
        os.makedirs(os.path.join(root, folder))
    for path, content in tree.items():
        full = os.path.join(root, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        if isinstance(content, Link):
            os.symlink(content.target, full)
        else:
            with open(full, "wb") as file:
                file.write(content)


def read_tree(root, random=()):
    tree = {}
    for folder, _, names in os.walk(root):
        for name in names:
            full = os.path.join(root, folder, name)
            path = os.path.relpath(full, root)
            if os.path.islink(full):
                tree[path] = Link(os.readlink(full))
                continue
            with open(full, "rb") as file:
                tree[path] = file.read()
    return mask(tree, random)


def mask(tree, random):
    """Without the identities that are random."""
    return {path: re.sub(rb"guid [0-9a-f-]{36}\n", b"guid <random>\n", content) if path in random else content
            for path, content in tree.items()}


class Workplace:
    """A folder for one run at a time."""

    def __init__(self, programs, injector, folder):
        self.injector = injector
        self.folder = os.path.realpath(folder)
        self.root = os.path.join(self.folder, "project")
        self.log = os.path.join(self.folder, "calls")
        self.started = 0
        # An engine root of its own, so that the program writes nowhere else.
        self.engine = os.path.join(self.folder, "engine")
        os.makedirs(os.path.join(self.engine, "bin"), exist_ok=True)
        os.makedirs(os.path.join(self.engine, "Assets", "Exports"), exist_ok=True)
        open(os.path.join(self.engine, "CMakeLists.txt"), "w", encoding="utf-8").close()
        for program in programs:
            target = os.path.join(self.engine, "bin", os.path.basename(program))
            if not os.path.exists(target):
                shutil.copy(program, target)

    def start(self, scenario, at=None, kind=None):
        """Undisturbed unless `at` is the number of a call; 0 records all calls."""
        environment = {
            "PATH": os.environ["PATH"],
            "TMPDIR": os.path.join(self.root, "tmp"),
            "VORNU_USER_SETTINGS_DIR": os.path.join(self.root, "settings"),
            # Leaks are found by other tests; the check for them can't run below a filter of system calls.
            "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0",
        }
        if at is not None:
            if os.path.exists(self.log):
                os.remove(self.log)
            environment.update(LD_PRELOAD=self.injector, VORNU_FAULT_LOG=self.log, VORNU_FAULT_AT=str(at))
            environment["VORNU_FAULT_KIND"] = str(ERRORS.get(kind, kind))
        # Files, as pipes of the sanitizers couldn't be told from those for the output.
        self.started += 1
        names = [os.path.join(self.folder, name + str(self.started % 2)) for name in OUTPUT]
        with open(names[0], "wb") as out, open(names[1], "wb") as err:
            process = subprocess.Popen(
                [os.path.join(self.engine, "bin", scenario.program), *scenario.arguments],
                cwd=self.root,
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=out,
                stderr=err,
            )
        process.output = names
        return process

    def finish(self, process):
        try:
            process.wait(PATIENCE)
            hint = ""
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            hint = "vornu-upgrade: hangs\n"
        texts = []
        for name in process.output:
            with open(name, encoding="utf-8", errors="replace") as file:
                texts.append(STAMP.sub("", file.read().replace(self.root, "")))
        return Run(process.returncode, texts[0], texts[1] + hint)

    def run(self, scenario, at=None, kind=None):
        return self.finish(self.start(scenario, at, kind))

    def calls(self):
        """What the last run logged of those calls that concern the project."""
        if not os.path.exists(self.log):
            return []
        with open(self.log, encoding="utf-8", errors="replace") as file:
            rows = [line.rstrip("\n").split("\t") for line in file]
        calls = []
        for number, name, access, *paths in rows:
            if any(self.concerns(path) for path in paths):
                relative = tuple(path.replace(self.root + "/", "").replace(self.folder, "") for path in paths)
                calls.append(Call(int(number), name, access == "w", relative))
        return calls

    def concerns(self, path):
        outside = path.startswith(("/", "pipe:", "socket:")) and path != "/proc/self/exe"
        return not outside or path.startswith((self.folder, "/proc/self/fd/")) or self.folder.startswith(path)
