"""Two processes on one project: one is stopped in front of a chosen call, the other runs meanwhile."""

import os
import random
import signal
import subprocess
import time

from oracle import Oracle
from runs import Call

# Long enough for a whole run; one that waits for the lock of the stopped process goes on behind it.
MEANWHILE = 0.25
LONGEST_DELAY = 0.03
# What a process may say that finds the other one's work.
LATE = ("the file changed on disk while it was being converted", ": File exists")


def run_delayed(place, scenario, seed, kind):
    """The runs of both, the one that may be killed first."""
    lot = random.Random(seed)
    first = place.start(scenario)
    time.sleep(lot.uniform(0, LONGEST_DELAY))
    second = place.start(scenario)
    if kind == "delay-kill":
        time.sleep(lot.uniform(0, LONGEST_DELAY))
        first.kill()
    return [place.finish(first), place.finish(second)]


def run_pair(place, scenario, number, kind):
    """The runs of both, the stopped one first. With "race-kill" that one never goes on."""
    if kind.startswith("delay"):
        return run_delayed(place, scenario, number, kind)
    first = place.start(scenario, number, "stop")
    os.waitid(os.P_PID, first.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    second = place.start(scenario)
    try:
        second.wait(MEANWHILE)
    except subprocess.TimeoutExpired:
        pass
    first.send_signal(signal.SIGKILL if kind == "race-kill" else signal.SIGCONT)
    return [place.finish(first), place.finish(second)]


class RaceOracle(Oracle):
    def __init__(self, scenario, baseline, kind, runs, outcome):
        super().__init__(scenario, baseline, Call(0, "race", False, ("",)), kind, outcome)
        self.runs = runs

    def violations(self):
        self.check_files(self.outcome.after)
        self.check_inputs()
        if not self.kind.endswith("kill"):
            self.check_temporary_files()
        for run, may_die in zip(self.runs, (self.kind.endswith("kill"), False)):
            complaints = run.complaints()
            late = all(any(text in line for text in LATE) for line in complaints)
            self.require(late, f"complaints: {complaints}")
            codes = [int(bool(complaints)), *([-signal.SIGKILL] if may_die else [])]
            self.require(run.code in codes, f"exit code {run.code} with {complaints}")
        self.require(not self.missing_inputs(), f"neither converted {self.missing_inputs()}")
        self.check_second_run()
        return self.faults
