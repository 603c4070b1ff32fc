"""What must hold after a run with one fault, and after an undisturbed run behind it."""

import dataclasses
import re

from runs import DEATHS, EDITED, OUTPUT, TEMPORARY, TRANSFERS, Run

# Calls that are tried again when a signal interrupts them.
RETRIED = ("open", "openat", *TRANSFERS, "fsync", "close", "flock")
LOOKS = ("stat", "lstat", "newfstatat", "fstat", "statx", "access", "faccessat", "faccessat2", "readlink",
         "readlinkat", "getcwd")
KEPT_SIDECAR = re.compile(r"\.vmeta\.unreadable(-\d+)?$")


@dataclasses.dataclass
class Baseline:
    """What an undisturbed run does."""

    before: dict
    after: dict
    run: Run
    access: dict  # in front of it


@dataclasses.dataclass
class Outcome:
    """What a case did, and what an undisturbed run behind it did."""

    run: Run
    after: dict
    second: Run
    final: dict
    access: dict  # behind the case
    left: list  # files that it hasn't closed


def named_after(path, original):
    return original is not None and path.startswith(original + ".legacy-v")


class Oracle:
    def __init__(self, scenario, baseline, call, kind, outcome):
        self.scenario = scenario
        self.base = baseline
        self.call = call
        self.kind = kind
        self.outcome = outcome
        self.faults = []

    def violations(self):
        self.check_files(self.outcome.after)
        self.check_inputs()
        self.check_temporary_files()
        self.faults += self.access_faults(self.outcome.access)
        self.require(not self.outcome.left or self.call.name == "close", f"left open: {self.outcome.left}")
        if self.kind in DEATHS:
            self.require(self.outcome.run.code == DEATHS[self.kind], f"exit code {self.outcome.run.code}")
        else:
            self.check_report()
        self.check_second_run()
        return self.faults

    def require(self, holds, text):
        if not holds:
            self.faults.append(text)

    # Files

    def check_files(self, tree):
        """Every file has its old or its new bytes, and none is gone that an undisturbed run keeps."""
        before, after = self.base.before, self.base.after
        for path, content in tree.items():
            known = [state[path] for state in (before, after) if path in state]
            if content in known or TEMPORARY.search(path):
                continue
            original = self.backup_of(path)
            if original is not None:
                self.require(content == before[original], f"{path} isn't a copy of {original}")
            elif KEPT_SIDECAR.search(path):
                sidecar = before.get(KEPT_SIDECAR.sub(".vmeta", path))
                self.require(content == sidecar, f"{path} isn't the sidecar")
            else:
                self.require(False, f"{path} is neither as it was nor as it should become")
        for path in before.keys() - tree.keys():
            elsewhere = [other for other, content in tree.items() if content == before[path]]
            moved = any(other in after and other not in before for other in elsewhere)
            self.require(moved, f"{path} is gone")

    def backup_of(self, path):
        if path in self.base.before:
            return None
        matches = [real for real, named in self.scenario.inputs.items() if named_after(path, named)]
        return matches[0] if matches else None

    def check_inputs(self):
        tree = self.outcome.after
        for real, named in self.scenario.inputs.items():
            replaced = tree.get(real) != self.base.before[real]
            if replaced and named is not None:
                copies = [path for path, content in tree.items()
                          if named_after(path, named) and content == self.base.before[real]]
                self.require(copies, f"{real} was replaced without a backup")

    def access_faults(self, access):
        """Files that are replaced, and copies, have what their originals had; copies that aren't complete have less."""
        faults = []
        before = self.base.access
        for path, now in access.items():
            original = path if path in self.scenario.inputs else self.backup_of(path)
            forbidden = self.kind == "EACCES" and self.call is not None and self.call.name in (
                "fchown", "fsetxattr", "fgetxattr", "getxattr")
            if original is not None and forbidden and now[0] & ~before[original][0] == 0:
                continue
            if original is not None and now != before[original]:
                faults.append(f"{path} has the access {now} and not {before[original]}")
            copies = TEMPORARY.sub("", path) in self.base.before  # others hold what is new
            if copies and TEMPORARY.search(path) and now[0] & 0o077 and now not in before.values():
                faults.append(f"{path} has the access {now}")
        return faults

    def check_temporary_files(self):
        left = [path for path in self.outcome.after if TEMPORARY.search(path)]
        allowed = self.kind == "kill" or self.call.name.startswith("unlink")
        # Where nothing can be examined any more, a file can't be told from somebody else's.
        allowed = allowed or (self.kind.endswith("+") and self.call.name in LOOKS)
        self.require(allowed or not left, f"temporary files are left: {left}")

    # Report

    def check_report(self):
        run, base = self.outcome.run, self.base.run
        as_undisturbed = run == base and self.strip(self.outcome.after) == self.strip(self.base.after)
        lost_output = self.call.paths[0].startswith("/" + OUTPUT[0]) and self.call.name == "write"
        if self.kind == "short" or (self.kind == "EINTR" and self.call.name in RETRIED and not lost_output):
            self.require(as_undisturbed, "had an effect")
            return
        complaints = [line for line in run.complaints() if line not in base.complaints()]
        if as_undisturbed:
            allowed = self.kind == "EINTR" or self.is_silent_check() or self.may_be_quiet()
            self.require(allowed, "went unnoticed")
        elif complaints:
            self.check_complaints(complaints)
        elif self.is_silent_check():
            pass
        elif lost_output:
            self.require(run.code == 1, f"lost output with exit code {run.code}")
        else:
            warnings = [line for line in run.warnings() if line not in base.warnings()]
            missing = self.missing_inputs()
            self.require(warnings, "changed the outcome silently")
            self.require(run.code == base.code, f"exit code {run.code} after a warning")
            self.require(not missing, f"not converted without a word: {missing}")

    def check_complaints(self, complaints):
        code = self.outcome.run.code
        expected = 2 if complaints[0].startswith("Not found: ") else 1
        self.require(code == expected, f"exit code {code} with {complaints}")
        for line in complaints:
            self.require("changed on disk" not in line and "hangs" not in line, f"misleading: {line}")
        if expected == 1 and complaints[0].startswith("FAILED"):
            # A part of the content that isn't known is missing for every file that may refer to it, and a fault that
            # lasts meets every file.
            of_content = all(": the content folder could not be read whole: " in line for line in complaints)
            lasts = self.kind.endswith("+")
            alone = len(complaints) == 1 or of_content or lasts
            self.require(alone, f"one fault failed more than one file: {complaints}")
            missing = self.missing_inputs()
            of_run = complaints[0].startswith("FAILED   run") or lasts
            self.require(len(missing) <= len(complaints) or of_run, f"not converted: {missing}")

    def missing_inputs(self):
        after = self.outcome.after
        return [path for path in self.scenario.inputs if after.get(path) != self.base.after[path]]

    def may_be_quiet(self):
        """Whether a fault without any effect on the outcome may go without a word."""
        call = self.call
        opens_folder = call.name == "openat" and call.paths[0] not in self.base.after
        return (
            # What is only read has been read by then; a look that failed changed nothing.
            (call.name == "close" and not call.writes)
            or call.name in LOOKS
            # Without the lock of the content folder a run goes on, as on a file system that has none.
            or call.name == "flock"
            or (opens_folder and call.paths[0] == "Content")
            # A folder that may be written but not read can't be flushed, and needs none.
            or (self.kind == "EACCES" and opens_folder)
            # A sidecar is replaced whether its old bytes could be compared or not.
            or (call.name in ("openat", "read") and not call.writes and call.paths[0].endswith(".vmeta"))
            # Who may not give a file away keeps it, with no more access than it had.
            or (self.kind == "EACCES" and call.name == "fchown")
            # The next number is tried for a sidecar that is set aside.
            or (call.name == "renameat2" and call.paths[1] in self.base.before)
            # What verification leaves in the folder for such files is the system's to clear.
            or (call.name == "unlink" and call.paths[0].startswith("tmp/"))
            # Where there are no files without a name, the backup gets a temporary one.
            or (self.kind == "EACCES" and call.name == "linkat" and call.paths[0].endswith("(deleted)"))
        )

    def is_silent_check(self):
        """A file that the user may not open is no legacy one, and a check says nothing of it."""
        opens_file = self.call.name == "openat" and self.call.paths[0] in self.base.before
        changes_nothing = self.scenario.name in ("check", "verify")
        return self.kind == "EACCES" and opens_file and changes_nothing

    # Second run

    def check_second_run(self):
        second = self.outcome.second
        self.require(second.code == self.scenario.exit_codes[1] and not second.complaints(),
                     f"the second run has exit code {second.code}: {second.err}")
        self.check_files(self.outcome.final)
        final, expected = self.strip(self.outcome.final), self.strip(self.base.after)
        paths = final.keys() | expected.keys()
        different = sorted(path for path in paths if final.get(path) != expected.get(path))
        self.require(not different, f"the second run leaves other files: {different}")

    def strip(self, tree):
        """Without what may differ: the number of backups and what a kill left under a temporary name."""
        return {path: content for path, content in tree.items()
                if not TEMPORARY.search(path) and self.backup_of(path) is None}


class EditOracle(Oracle):
    """Somebody adds to the first input in front of a call: the addition is in the file or in its backup."""

    def violations(self):
        real, named = next(iter(self.scenario.inputs.items()))
        tree = self.outcome.after
        copies = [content for path, content in tree.items()
                  if (path == real or named_after(path, named)) and isinstance(content, bytes)]
        # Nobody can look at a file and replace it in one step.
        is_step = self.call.name.startswith("rename") and self.call.paths[1] == real
        self.require(is_step or any(EDITED in content for content in copies), f"the edit of {real} is lost")
        self.require(self.outcome.run.code in (0, 1), f"exit code {self.outcome.run.code}")
        self.check_temporary_files()
        return self.faults


class MemoryOracle(Oracle):
    """Memory was refused, once or for good: each file that needed it names itself and fails."""

    def violations(self):
        run, base = self.outcome.run, self.base.run
        self.check_files(self.outcome.after)
        self.check_inputs()
        left = [path for path in self.outcome.after if TEMPORARY.search(path)]
        self.require(not left, f"temporary files are left: {left}")
        self.faults += self.access_faults(self.outcome.access)
        complaints = [line for line in run.complaints() if line not in base.complaints()]
        warned = [line for line in run.warnings() if line not in base.warnings()]
        alike = run == base and self.strip(self.outcome.after) == self.strip(self.base.after)
        if complaints:
            self.require(run.code == 1, f"exit code {run.code} with {complaints}")
            of_run = any(line.startswith(("vornu-", "FAILED   run")) for line in complaints)
            alone = len(complaints) == 1 or self.kind.endswith("+")
            self.require(alone, f"one fault failed more than one file: {complaints}")
            self.require(of_run or len(self.missing_inputs()) <= len(complaints), f"not named: {self.missing_inputs()}")
        else:
            self.require(alike or (warned and run.code == base.code),
                         f"changed the outcome silently, exit code {run.code}: {run.err}")
        self.check_second_run()
        return self.faults
