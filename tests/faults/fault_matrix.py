#!/usr/bin/env python3
"""Runs programs on small projects and lets every system call that concerns files go wrong in every way, one
at a time. What must hold then stands in oracle.py. Ends with "<N> faults tried, <M> violations"."""

import argparse
import multiprocessing
import os
import random
import sys
import tempfile

import durability
from oracle import LOOKS, Baseline, EditOracle, MemoryOracle, Oracle, Outcome
from races import RaceOracle, run_pair
from runs import (DEATHS, ERRORS, LASTING, MEMORY, RACES, TRANSFERS, WRITES, Workplace, mask, read_access, read_tree,
                  write_tree)
from scenarios import all_scenarios

ALLOCATIONS = 150  # tried of a scenario and kind, by lot; there are thousands

places = {}  # by process


def workplace(options):
    process = os.getpid()
    if process not in places:
        folder = tempfile.mkdtemp(dir=options.scratch)
        places[process] = Workplace(options.programs, options.injector, options.refuser, folder)
    return places[process]


def measure(place, scenario):
    """The baseline of a scenario and the calls that can go wrong."""
    write_tree(place.root, scenario.tree, scenario.inputs)
    access = read_access(place.root)
    run = place.run(scenario, at=0)
    base = Baseline(mask(scenario.tree, scenario.random), read_tree(place.root, scenario.random), run, access)
    calls = place.calls()
    faults = durability.violations(scenario, calls) + [f"{path} is left open" for path in place.left_open()]
    faults += Oracle(scenario, base, None, None, None).access_faults(read_access(place.root))
    if faults:
        sys.exit(f"{scenario.name}, undisturbed:\n" + "\n".join(faults))
    second = place.run(scenario)
    unchanged = read_tree(place.root, scenario.random) == base.after
    if (run.code, second.code) != scenario.exit_codes or not unchanged:
        sys.exit(f"{scenario.name}: the undisturbed runs go wrong\n{run}\n{second}")
    return base, calls


def kinds_of(scenario, call):
    kinds = [*ERRORS, *DEATHS]
    kinds += LASTING if call.name not in LOOKS else []
    kinds += ["edit"] if any(scenario.inputs.values()) or scenario.name == "no-backup" else []
    kinds += RACES if scenario.races else []  # for those by lot, the number is the seed
    kinds += ["short"] if call.name in TRANSFERS else []
    kinds += ["full"] if call.name in WRITES else []
    return kinds


def try_case(job):
    options, scenario, base, number, kind = job
    place = workplace(options)
    write_tree(place.root, scenario.tree, scenario.inputs)
    runs = run_pair(place, scenario, number, kind) if kind in RACES else [place.run(scenario, number, kind)]
    after = read_tree(place.root, scenario.random)
    access = read_access(place.root)
    calls, left = ([], []) if kind in (*MEMORY, *RACES) else (place.calls(), place.left_open())
    second = place.run(scenario)
    outcome = Outcome(runs[0], after, second, read_tree(place.root, scenario.random), access, left)
    name = f"{scenario.name}:{number}:{kind}"
    if kind in RACES:
        oracle = RaceOracle(scenario, base, kind, runs, outcome)
    elif kind in MEMORY:
        oracle = MemoryOracle(scenario, base, None, kind, outcome)
    elif calls and kind == "edit":
        oracle = EditOracle(scenario, base, calls[0], kind, outcome)
    elif calls:
        oracle = Oracle(scenario, base, calls[0], kind, outcome)
    else:  # the run was over before
        return name, None, [], runs
    return name, oracle.call, oracle.violations(), runs


def show(options, name, call, violations, runs):
    print(f"VIOLATION {name}: {call}")
    for text in violations:
        print(f"    {text}")
    if options.case:
        for run in runs:
            print(f"    exit code {run.code}\n{run.out}{run.err}")
    else:
        print(f"    again: scripts/fault-matrix --case {name}")


def jobs_of(options, scenarios):
    place = workplace(options)
    jobs = []
    for scenario in scenarios:
        base, calls = measure(place, scenario)
        if options.list:
            for call in calls:
                print(f"{scenario.name}:{call.number} {call}")
        for call in calls:
            jobs += [(options, scenario, base, call.number, kind) for kind in kinds_of(scenario, call)]
        if options.refuser and (not options.memory or scenario.name in options.memory):
            write_tree(place.root, scenario.tree, scenario.inputs)
            count = place.allocations(scenario)
            lot = random.Random(f"{options.seed} {scenario.name}")
            jobs += [(options, scenario, base, lot.randint(1, count), kind)
                     for kind in MEMORY for _ in range(ALLOCATIONS)]
    return jobs


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", nargs="+", required=True, help="the programs to run")
    parser.add_argument("--injector", required=True, help="the library that makes calls go wrong")
    parser.add_argument("--refuser", help="the library that refuses memory")
    parser.add_argument("--memory", nargs="+", help="the scenarios that memory is refused to; otherwise all")
    parser.add_argument("--sample", type=int, help="try only so many cases")
    parser.add_argument("--seed", type=int, default=os.environ.get("VORNU_FAULT_SEED", 0),
                        help="which sample; otherwise that of the variable VORNU_FAULT_SEED")
    parser.add_argument("--case", help="try one case alone, <scenario>:<number of the call>:<fault>")
    parser.add_argument("--only", help="the scenario to try")
    parser.add_argument("--list", action="store_true", help="list the calls")
    options = parser.parse_args()
    options.programs = [os.path.abspath(program) for program in options.programs]
    options.injector = os.path.abspath(options.injector)
    options.refuser = options.refuser and os.path.abspath(options.refuser)
    return options


def main():
    options = parse_arguments()
    memory = "/dev/shm"
    with tempfile.TemporaryDirectory(dir=memory if os.access(memory, os.W_OK) else None) as scratch:
        options.scratch = scratch
        wanted = options.case.split(":")[0] if options.case else options.only
        scenarios = [scenario for scenario in all_scenarios() if wanted in (None, scenario.name)]
        jobs = jobs_of(options, scenarios)
        if options.case:
            _, number, kind = options.case.split(":")
            jobs = [job for job in jobs if job[3:] == (int(number), kind)] or [(*jobs[0][:3], int(number), kind)]
        elif options.sample:
            jobs = random.Random(options.seed).sample(jobs, min(options.sample, len(jobs)))
        if options.list:
            return 0
        tried = failed = 0
        with multiprocessing.Pool() as pool:
            for name, call, violations, runs in pool.imap_unordered(try_case, jobs, 8):
                tried += call is not None or name.split(":")[2] in MEMORY
                failed += bool(violations)
                if violations:
                    show(options, name, call, violations, runs)
        seed = f", seed {options.seed}" if options.sample else ""
        print(f"{tried} faults tried, {failed} violations{seed}")
    return 1 if failed or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
