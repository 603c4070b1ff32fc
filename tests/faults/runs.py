"""Runs a program on a scenario's project, disturbed or not, and tells what it left."""

import dataclasses
import os
import re
import shutil
import signal
import struct
import subprocess

from scenarios import Link

ERRORS = {"ENOSPC": 28, "EIO": 5, "EACCES": 13, "EMFILE": 24, "EINTR": 4}
# Two processes on one project; see races.py. The latter two begin at times drawn by lot.
RACES = ("race", "race-kill", "delay", "delay-kill")
# Errors of every later call of the same name as well.
LASTING = ("EIO+", "ENOSPC+", "EMFILE+")
DEATHS = {"kill": -signal.SIGKILL, "term": -signal.SIGTERM, "term-after": -signal.SIGTERM}
# Memory is refused once, or for good; the number is that of the allocation.
MEMORY = ("memory", "memory+")
EDITED = b'"Edited"'  # what somebody else adds with the kind "edit"
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


def write_tree(root, tree, narrowed=()):
    """The files of a tree; those of `narrowed` with an access of their own."""
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
    for number, path in enumerate(narrowed):
        narrow(os.path.join(root, path), number)


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


def kind_text(kind):
    """As the injector takes it."""
    name = str(kind).removesuffix("+")
    return str(ERRORS.get(name, name)) + ("+" if str(kind).endswith("+") else "")


def read_access(root):
    """Permissions, owner, group, ACL and attributes of every file."""
    access = {}
    for folder, _, names in os.walk(root):
        for name in names:
            full = os.path.join(root, folder, name)
            if not os.path.islink(full):
                status = os.stat(full)
                attributes = tuple((key, os.getxattr(full, key)) for key in sorted(os.listxattr(full))
                                   if key.startswith(("user.", "system.posix_acl")))
                access[os.path.relpath(full, root)] = (
                    status.st_mode & 0o7777, status.st_uid, status.st_gid, attributes)
    return access


def narrow(path, number):
    """Gives a file an access of its own, as far as the system and the user allow."""
    os.chmod(path, (0o640, 0o600, 0o664)[number % 3])
    acl = struct.pack("<I", 2)
    for tag, bits, who in ((1, 6, -1), (2, 4, 54321), (4, 0, -1), (16, 4, -1), (32, 0, -1)):
        acl += struct.pack("<HHi", tag, bits, who)
    for name, value in (("user.note", b"kept"), *([("system.posix_acl_access", acl)] if number % 2 == 0 else [])):
        try:
            os.setxattr(path, name, value)
        except OSError:
            pass
    if os.geteuid() == 0:
        os.chown(path, 12345, 23456)


class Workplace:
    """A folder for one run at a time."""

    def __init__(self, programs, injector, refuser, folder):
        self.injector = injector
        self.refuser = refuser
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
        if at is not None and os.path.exists(self.log):
            os.remove(self.log)
        if kind in MEMORY:
            environment.update(LD_PRELOAD=self.refuser, VORNU_MEMORY_AT=str(at), VORNU_MEMORY_LOG=self.log)
            environment.update({"VORNU_MEMORY_ALL": "1"} if kind.endswith("+") else {})
        elif at is not None:
            environment.update(LD_PRELOAD=self.injector, VORNU_FAULT_LOG=self.log, VORNU_FAULT_AT=str(at))
            environment["VORNU_FAULT_KIND"] = kind_text(kind)
            environment["VORNU_FAULT_EDIT"] = os.path.join(self.root, next(iter(scenario.inputs), ""))
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
        return [call for call in self.rows() if call.number > 0]

    def allocations(self, scenario):
        """How often an undisturbed run asks for memory."""
        self.run(scenario, 0, "memory")
        with open(self.log, encoding="utf-8") as file:
            return int(file.read())

    def left_open(self):
        """The files that the last run hasn't closed."""
        return [call.paths[0] for call in self.rows() if call.number == 0]

    def rows(self):
        if not os.path.exists(self.log):
            return []
        with open(self.log, encoding="utf-8", errors="replace") as file:
            rows = [line.rstrip("\n").split("\t") for line in file]
        return [Call(int(number), name, access == "w", tuple(self.relative(path) for path in paths))
                for number, name, access, *paths in rows
                if int(number) == 0 or any(self.concerns(path) for path in paths)]

    def relative(self, path):
        path = os.path.normpath(path) if "/../" in path else path
        return path.replace(self.root + "/", "").replace(self.folder, "")

    def concerns(self, path):
        outside = path.startswith(("/", "pipe:", "socket:")) and path != "/proc/self/exe"
        return not outside or path.startswith((self.folder, "/proc/self/fd/")) or self.folder.startswith(path)
