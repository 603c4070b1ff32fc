#!/usr/bin/env python3
"""Runs the benchmarks of a build folder and prints their figures with the ratios that matter.

Usage: report.py <build folder> [stages] [instructions] [memory] [check] [tasks] [mount]
"""

import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

LARGE_TO_SMALL_LIMIT = 12.0  # time of 100,000 entities over time of 10,000
INSTRUCTION_LIMIT = 2.5  # load and save of a scene over the same work on JSON
MEMORY_FACTOR = 6  # peak of a conversion over the size of the file that it writes
MEMORY_BASE = 30 * 1024 * 1024
CHECK_LIMIT = 3.0  # time of --check over time of grep
SUBMIT_LIMIT = 1.0  # submitting empty tasks and waiting, over oneTBB
LOOP_LIMIT = 1.2  # a parallel loop over small items, over oneTBB
LOOP_LIMIT_GRAINS = (64, 1024)
SPEED_UP_GOAL = 1.9  # heavy items on one thread over the same on two
MOUNT_FILES = (20_000, 200_000)
MOUNT_GROWTH_LIMIT = 12.0  # a mount of the larger content folder over one of the smaller
MOUNT_WALK_LIMIT = 5.0  # a second mount over walking the same folder
MOUNT_WALK_GOAL = 2.5


def verdict(good):
    return "ok" if good else "TOO MUCH"


def stages(build):
    """Time of each stage of a conversion, and how it grows with the number of entities. The best of 5 runs."""
    output = subprocess.run(
        [f"{build}/bench/scene_bench", "--benchmark_format=json", "--benchmark_min_time=0.1",
         "--benchmark_repetitions=5"],
        check=True, capture_output=True, text=True).stdout
    rows = {}
    for entry in json.loads(output)["benchmarks"]:
        if entry.get("error_occurred"):
            raise RuntimeError(f"{entry['name']}: {entry['error_message']}")
        if entry["run_type"] != "iteration":
            continue
        stage, shape, count = entry["name"].split("/")[:3]
        best = rows.setdefault((stage, shape), {}).setdefault(int(count), entry)
        if entry["cpu_time"] < best["cpu_time"]:
            rows[(stage, shape)][int(count)] = entry
    print(f"{'stage':<18}{'entities':>10}{'ms':>12}{'entities/s':>14}{'MB/s':>10}")
    good = True
    for (stage, shape), entries in rows.items():
        for count, entry in sorted(entries.items()):
            print(f"{stage + ' ' + shape:<18}{count:>10}{entry['cpu_time']:>12.3f}"
                  f"{entry['items_per_second']:>14.0f}{entry['bytes_per_second'] / 1e6:>10.1f}")
        ratio = entries[100000]["cpu_time"] / entries[10000]["cpu_time"]
        good = good and ratio <= LARGE_TO_SMALL_LIMIT
        print(f"{'':<18}100,000 over 10,000: {ratio:.1f} ({verdict(ratio <= LARGE_TO_SMALL_LIMIT)})")
    return good


def count_instructions(build, kind, times):
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/out",
             f"{build}/bench/roundtrip_bench", kind, "10000", str(times)],
            check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1))


def instructions(build):
    """Instructions of LoadScene and SaveScene of 10,000 entities, beside parsing, converting and writing JSON."""
    cost = {kind: count_instructions(build, kind, 2) - count_instructions(build, kind, 1)
            for kind in ("scene", "json")}
    ratio = cost["scene"] / cost["json"]
    print(f"load and save of 10,000 entities: {cost['scene'] / 1e6:.0f} million instructions")
    print(f"the same as JSON (R):             {cost['json'] / 1e6:.0f} million instructions")
    print(f"ratio: {ratio:.2f} R ({verdict(ratio <= INSTRUCTION_LIMIT)})")
    return ratio <= INSTRUCTION_LIMIT


def environment(folder):
    return {**os.environ, "VORNU_USER_SETTINGS_DIR": f"{folder}/user", "VORNU_LOG_LEVELS": "off"}


def legacy_scene(count):
    """A flat positional scene like the ones of the stage benchmarks."""
    lines = ["scene_version 3"]
    for i in range(count):
        lines.append(f'entity "" "Prop_{i}"')
        if i > 0:
            lines.append('parent "Prop_0"')
        lines.append(f"transform {i % 977}.125 0.5 {i % 331}.75 0 {i % 360} 0 1 1 1")
        lines.append('mesh_renderer "" "" "" 1 1 1 1 0 0 0 1 250')
        if i % 5 == 0:
            lines.append("point_light 1 0.5 0.25 18 10 1 0 0.0015 0.01 1 0.78 1 512 0.05 0")
        lines.append("end_entity")
    return "\n".join(lines) + "\n"


def memory(build):
    """Peak memory of converting a legacy file."""
    good = True
    for count in (1000, 10000, 100000):
        with tempfile.TemporaryDirectory() as folder:
            path = f"{folder}/scene.vscene"
            with open(path, "w", encoding="utf-8") as file:
                file.write(legacy_scene(count))
            process = subprocess.Popen([f"{build}/bin/vornu-upgrade", path], env=environment(folder),
                                       stdout=subprocess.DEVNULL)
            _, status, usage = os.wait4(process.pid, 0)
            if status != 0:
                raise RuntimeError("the conversion failed")
            size = os.path.getsize(path)
        peak = usage.ru_maxrss * 1024
        limit = MEMORY_FACTOR * size + MEMORY_BASE
        good = good and peak < limit
        print(f"{count:>7} entities: peak {peak / 1e6:.1f} MB for a file of {size / 1e6:.1f} MB, "
              f"{peak / limit:.2f} of the limit ({verdict(peak < limit)})")
    return good


def check(build):
    """--check over a folder of 10,000 small scene files, beside grep -rc over the same folder."""
    if shutil.which("grep") is None:
        raise RuntimeError("grep is missing")
    with tempfile.TemporaryDirectory() as folder:
        for i in range(10000):
            sub = f"{folder}/levels/{i // 100}"
            os.makedirs(sub, exist_ok=True)
            version = 3 if i % 2 == 0 else 6
            with open(f"{sub}/scene{i}.vscene", "w", encoding="utf-8") as file:
                file.write(f"scene_version {version}\n" + "# a small scene\n" * 20)
        commands = {
            "vornu-upgrade --check": [f"{build}/bin/vornu-upgrade", "--check", f"{folder}/levels"],
            "grep -rc scene_version": ["grep", "-rc", "scene_version", f"{folder}/levels"],
        }
        times = {name: [] for name in commands}
        for repetition in range(12):  # the first two warm up
            for name, command in commands.items():
                start = time.perf_counter()
                subprocess.run(command, env=environment(folder), stdout=subprocess.DEVNULL, check=False)
                if repetition >= 2:
                    times[name].append(time.perf_counter() - start)
    medians = {name: statistics.median(values) for name, values in times.items()}
    for name, value in medians.items():
        print(f"{name:<24}{value * 1000:>9.1f} ms")
    ratio = medians["vornu-upgrade --check"] / medians["grep -rc scene_version"]
    print(f"ratio: {ratio:.2f} ({verdict(ratio <= CHECK_LIMIT)})")
    return ratio <= CHECK_LIMIT


def repeated_times(program, repetitions):
    """Nanoseconds of each repetition, by name. The repetitions of the rows take turns."""
    output = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_min_time=0.05",
         f"--benchmark_repetitions={repetitions}", "--benchmark_enable_random_interleaving=true"],
        check=True, capture_output=True, text=True).stdout
    times = {}
    for entry in json.loads(output)["benchmarks"]:
        if entry["run_type"] == "iteration":
            scale = {"ns": 1, "us": 1e3, "ms": 1e6}[entry["time_unit"]]
            name = entry["name"].removesuffix("/real_time")
            times.setdefault(name, []).append(entry["real_time"] * scale)
    return times


def tasks(build):
    """The task system on two threads, beside oneTBB. The best of 25 repetitions, and the median of the submits:
    their time depends on how much the second thread takes part, which is luck."""
    repetitions = repeated_times(f"{build}/bench/task_bench", 25)
    times = {name: statistics.median(values) if name.startswith("submit") else min(values)
             for name, values in repetitions.items()}
    good = True
    print(f"{'':<30}{'us':>10}{'oneTBB us':>12}{'ratio':>8}")

    def row(title, own, other, limit):
        nonlocal good
        ratio = own / other
        mark = "" if limit is None else f" ({verdict(ratio <= limit)})"
        good = good and (limit is None or ratio <= limit)
        print(f"{title:<30}{own / 1e3:>10.2f}{other / 1e3:>12.2f}{ratio:>8.2f}{mark}")

    for count in (1, 1000):
        row(f"submit {count} and wait", times[f"submit/Vornu/{count}"], times[f"submit/oneTBB/{count}"],
            SUBMIT_LIMIT)
    for grain in (1, 64, 1024, 16384):
        # Whichever of oneTBB's two ways of cutting ranges is faster.
        other = min(times[f"small/oneTBB/{grain}"], times[f"small/oneTBB simple/{grain}"])
        row(f"1,000,000 items, grain {grain}", times[f"small/Vornu/{grain}"], other,
            LOOP_LIMIT if grain in LOOP_LIMIT_GRAINS else None)
    for threads in (1, 2):
        row(f"heavy items, threads: {threads}", times[f"heavy/Vornu/{threads}"],
            times[f"heavy/oneTBB/{threads}"], None)
    speed_up = times["heavy/Vornu/1"] / times["heavy/Vornu/2"]
    good = good and speed_up >= SPEED_UP_GOAL
    print(f"speed-up of heavy items on two threads: {speed_up:.2f} "
          f"({'ok' if speed_up >= SPEED_UP_GOAL else 'TOO LITTLE'})")
    return good


def remove_sidecars(folder):
    for sub, _, names in os.walk(folder):
        for name in names:
            if name.endswith(".vmeta"):
                os.remove(f"{sub}/{name}")


def mount_times(build, folder):
    """Nanoseconds of the best repetition, by (step, number of files)."""
    times = {}

    def run(what, count):
        return subprocess.run([f"{build}/bench/mount_bench", what, f"{folder}/{count}", str(count)],
                              env=environment(folder), check=True, capture_output=True, text=True).stdout

    def measure(step, what, count):
        times[(step, count)] = min(times.get((step, count), float("inf")), int(run(what, count)))

    for count in MOUNT_FILES:
        run("make", count)
    for _ in range(2):
        for count in MOUNT_FILES:
            remove_sidecars(f"{folder}/{count}")
            os.sync()  # what was written before isn't the mount's
            measure("first", "mount", count)
    for _ in range(5):
        for count in MOUNT_FILES:
            measure("second", "mount", count)
            measure("walk", "walk", count)
    return times


def mount(build):
    """An authoring mount that writes all sidecars (first) or reads them (second), beside walking the folder,
    examining every file and reading every sidecar. The best of 2 first mounts and of 5 others."""
    with tempfile.TemporaryDirectory() as folder:
        times = mount_times(build, folder)
    small, large = MOUNT_FILES
    good = True
    print(f"{'':<14}" + "".join(f"{f'{count:,} files':>18}{'us/file':>9}" for count in MOUNT_FILES)
          + f"{'growth':>9}")
    for step, title in (("first", "first mount"), ("second", "second mount"), ("walk", "walk")):
        growth = times[(step, large)] / times[(step, small)]
        good = good and (step == "walk" or growth <= MOUNT_GROWTH_LIMIT)
        columns = [f"{times[(step, count)] / 1e6:>15.0f} ms{times[(step, count)] / 1e3 / count:>9.2f}"
                   for count in MOUNT_FILES]
        mark = "" if step == "walk" else f" ({verdict(growth <= MOUNT_GROWTH_LIMIT)})"
        print(f"{title:<14}{''.join(columns)}{growth:>9.1f}{mark}")
    for count in MOUNT_FILES:
        ratio = times[("second", count)] / times[("walk", count)]
        good = good and ratio <= MOUNT_WALK_LIMIT
        goal = "goal met" if ratio <= MOUNT_WALK_GOAL else "goal missed"
        print(f"second mount of {count:,} files over the walk: {ratio:.2f} "
              f"({verdict(ratio <= MOUNT_WALK_LIMIT)}, {goal})")
    return good


def main():
    build = sys.argv[1]
    known = {"stages": stages, "instructions": instructions, "memory": memory, "check": check,
             "tasks": tasks, "mount": mount}
    good = True
    for name in sys.argv[2:] or known:
        print(f"== {name}: {known[name].__doc__}", flush=True)
        good = known[name](build) and good
        print(flush=True)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
