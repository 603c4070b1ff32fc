"""Whether what a run has put in place outlives a power cut, by the order of its recorded calls."""

import os

WRITES = ("write", "pwrite64", "writev", "copy_file_range", "sendfile", "ftruncate")
FLUSHES = ("fsync", "fdatasync")
MOVES = ("rename", "renameat", "renameat2", "link", "linkat")
PROJECT = "/project"  # the folder of the project itself, as calls name it


def violations(scenario, calls):
    """The calls are those of a run in which none failed."""
    faults = []
    present = set(scenario.tree)
    for at, call in enumerate(calls):
        if call.name not in MOVES:
            continue
        source, target = call.paths
        replaces = target in present
        if replaces and call.name != "rename":
            continue  # one that finds the name taken
        present -= {source}
        present |= {target}
        if not replaces and not is_result(scenario, target):
            continue
        if flushed_at(calls, [source], last_write(calls[:at], source), at) is None:
            faults.append(f"{source} is not flushed before {call}")
        end = flushed_at(calls, [os.path.dirname(target) or PROJECT], at, len(calls))
        if end is None:
            faults.append(f"the folder is not flushed behind {call}")
        elif is_backup(scenario, target):
            faults += [f"{later} comes before the folder of {target} is flushed"
                       for later in calls[at:end] if later.name in MOVES and later.paths[1] in scenario.inputs]
    return faults


def is_result(scenario, path):
    """Other new files can be made again."""
    return path in scenario.inputs or is_backup(scenario, path) or path.endswith((".vscene", ".vmanifest"))


def is_backup(scenario, path):
    return any(named is not None and path.startswith(named + ".legacy-v") for named in scenario.inputs.values())


def last_write(calls, path):
    return max((at for at, call in enumerate(calls) if call.name in WRITES and call.paths[0] == path), default=-1)


def flushed_at(calls, paths, begin, end):
    """The first flush of a path between two calls."""
    return next((at for at in range(begin + 1, end)
                 if calls[at].name in FLUSHES and calls[at].paths[0] in paths), None)
