"""What must hold after a run with one fault, and after an undisturbed run behind it."""

import dataclasses
import re

from runs import DEATHS, OUTPUT, TEMPORARY, TRANSFERS, Run

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


@dataclasses.dataclass
class Outcome:
    """What a case did, and what an undisturbed run behind it did."""

    run: Run
    after: dict
    second: Run
    final: dict


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

    def check_temporary_files(self):
        left = [path for path in self.outcome.after if TEMPORARY.search(path)]
        allowed = self.kind == "kill" or self.call.name.startswith("unlink")
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
            # A part of the content that isn't known is missing for every file that may refer to it.
            of_content = all(": the content folder could not be read whole: " in line for line in complaints)
            self.require(len(complaints) == 1 or of_content, f"one fault failed more than one file: {complaints}")
            missing = self.missing_inputs()
            alone = complaints[0].startswith("FAILED   run")
            self.require(len(missing) <= len(complaints) or alone, f"not converted: {missing}")

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
            # The next number is tried for a sidecar that is set aside.
            or (call.name == "renameat2" and call.paths[1] in self.base.before)
            # What verification leaves in the folder for such files is the system's to clear.
            or (call.name == "unlink" and call.paths[0].startswith("tmp/"))
            # Where there are no files without a name, the backup gets a temporary one.
            or (self.kind == "EACCES" and call.name == "linkat" and call.paths[0].startswith("/proc/"))
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
