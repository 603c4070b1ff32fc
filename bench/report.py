#!/usr/bin/env python3
"""Runs the benchmarks of a build folder and prints a table: what was measured as a ratio, the goal, the limit
that must hold, and the figures behind it. README.md tells what each row compares.

Usage: report.py <build folder> [section...]
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
from concurrent.futures import ThreadPoolExecutor

NAME_WIDTH = 62


class Table:
    """Prints rows as they are measured and remembers whether each limit held."""

    def __init__(self):
        self.missed_goals = []
        self.broken_limits = []

    def header(self):
        print(f"{'':<{NAME_WIDTH}}{'measured':>10}{'goal':>8}{'limit':>8}")

    def row(self, name, value, goal, limit, detail=""):
        if value > limit:
            self.broken_limits.append(name)
            verdict = "TOO MUCH"
        elif value > goal:
            self.missed_goals.append(name)
            verdict = "goal missed"
        else:
            verdict = "ok"
        print(f"{name:<{NAME_WIDTH}}{value:>10.2f}{goal:>8.2f}{limit:>8.2f}  {verdict:<12}{detail}", flush=True)

    def close(self):
        for title, names in (("Goals missed", self.missed_goals), ("Limits broken", self.broken_limits)):
            print(f"{title}: {'; '.join(names) if names else 'none'}")
        return not self.broken_limits


def environment(folder):
    return {**os.environ, "VORNU_USER_SETTINGS_DIR": f"{folder}/user", "VORNU_LOG_LEVELS": "off"}


def output_of(command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def run(command, folder):
    """Wall seconds, processor seconds and peak bytes of a program. Its output goes to a file: some programs
    do less when nobody can read it."""
    with open(f"{folder}/output", "wb") as output:
        start = time.perf_counter()
        process = subprocess.Popen(command, env=environment(folder), stdout=output)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
    if status < 0 or os.waitstatus_to_exitcode(status) not in (0, 1):
        raise RuntimeError(f"{command} failed")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def best_of(times, commands, folder):
    """The lowest of each figure of run() by name, of commands that take turns."""
    best = {}
    for _ in range(times):
        for name, command in commands.items():
            figures = run(command, folder)
            best[name] = tuple(map(min, best.get(name, figures), figures))
    return best


def repeated_times(program, repetitions, processes=1, clock="real_time"):
    """Nanoseconds of each repetition of each process, by name."""
    times = {}
    for _ in range(processes):
        output = output_of([program, "--benchmark_format=json", "--benchmark_min_time=0.05",
                            f"--benchmark_repetitions={repetitions}",
                            "--benchmark_enable_random_interleaving=true"])
        for entry in json.loads(output)["benchmarks"]:
            if entry.get("error_occurred"):
                raise RuntimeError(f"{entry['name']}: {entry['error_message']}")
            if entry["run_type"] == "iteration":
                scale = {"ns": 1, "us": 1e3, "ms": 1e6}[entry["time_unit"]]
                name = re.sub("(/iterations:[0-9]+)?(/(real|manual)_time)?$", "", entry["name"])
                times.setdefault(name, []).append(entry[clock] * scale)
    return times


def best_times(program, repetitions, **options):
    return {name: min(times) for name, times in repeated_times(program, repetitions, **options).items()}


def callgrind(command, output, *options):
    """Runs a program under callgrind and gives the instructions that it took."""
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}", *options, *command],
                                env=environment(folder), capture_output=True, text=True)
    if result.returncode not in (0, 1):
        raise RuntimeError(f"{command} failed: {result.stderr}")
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1))


def instructions_of(*commands):
    """Instructions of each program. They run side by side, which changes no count."""
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(lambda command: callgrind(command, "/dev/null"), commands))


def make_scenes(build, folder, entities):
    """Gives the folder of the levels; RoundTripBench.cpp tells what is there."""
    output_of([f"{build}/bench/roundtrip_bench", "make", folder, str(entities)])
    return f"{folder}/Content/Levels"


def instructions(build, table):
    """The program's figures are without its start and the mount: those of a scene of next to nothing are taken
    away. So the first look at every asset counts, whatever a run remembers."""
    upgrade = f"{build}/bin/vornu-upgrade"
    with tempfile.TemporaryDirectory() as folder:
        levels = make_scenes(build, folder, 10_000)
        round_trips = [[f"{build}/bench/roundtrip_bench", "roundtrip", file, times]
                       for file in (f"{levels}/current.vscene", f"{folder}/scene.json") for times in "12"]
        counts = instructions_of(
            *round_trips,
            [upgrade, f"{levels}/legacy.vscene"], [upgrade, f"{levels}/empty.vscene"],
            [upgrade, "--verify", f"{levels}/current.vscene"], [upgrade, "--verify", f"{levels}/current_empty.vscene"])
        own, reference, upgraded, verified = (abs(a - b) for a, b in zip(counts[::2], counts[1::2]))
    def million(value, other):
        return f"{value / 1e6:.0f} over {other / 1e6:.0f} million"

    table.row("load and save of 10,000 entities, instructions over R", own / reference, 0.7, 1,
              million(own, reference))
    table.row("vornu-upgrade of a version 3 file, instructions over R", upgraded / reference, 1, 1.5,
              million(upgraded, reference))
    table.row("vornu-upgrade --verify, instructions over R", verified / reference, 1.4, 2,
              million(verified, reference))
    with tempfile.TemporaryDirectory() as folder:
        levels = make_scenes(build, folder, 10_000)
        os.mkdir(f"{folder}/Content/Unsorted")
        for i in range(10_000):
            shutil.copyfile(f"{folder}/Content/Models/well.vmesh", f"{folder}/Content/Unsorted/Piece_{i}.vmesh")
        run([upgrade, f"{levels}/empty.vscene"], folder)  # gives the pieces their sidecars
        shutil.copyfile(f"{levels}/empty.vscene.legacy-v3", f"{levels}/other_empty.vscene")
        missing, empty = instructions_of([upgrade, f"{levels}/missing.vscene"], [upgrade, f"{levels}/other_empty.vscene"])
    table.row("the same upgrade, all references missing in a folder of 10,000", (missing - empty) / upgraded, 1.3, 2,
              million(missing - empty, upgraded))


def times(build, table):
    """The best time of many: of one operation in a process that has done nothing else but the same before."""

    def best_of_work(rounds, runs, commands):
        best = {}
        for _ in range(rounds):
            for name, command in commands.items():
                taken = min(map(int, output_of([f"{build}/bench/roundtrip_bench", *command, str(runs)]).split()))
                best[name] = min(best.get(name, taken), taken)
        return best["own"], best["json"]

    def row(title, own, other, goal, limit):
        table.row(title, own / other, goal, limit, f"{own / 1e6:.1f} over {other / 1e6:.1f} ms")

    for count, runs in ((10_000, 30), (100_000, 3)):
        with tempfile.TemporaryDirectory() as folder:
            current, reference = f"{make_scenes(build, folder, count)}/current.vscene", f"{folder}/scene.json"
            if count == 100_000:
                row("load and save of 100,000 entities, wall time over R",
                    *best_of_work(5, runs, {"own": ["roundtrip", current], "json": ["roundtrip", reference]}),
                    0.65, 1)
            row(f"load of {count:,} entities, wall time over simdjson",
                *best_of_work(5, runs, {"own": ["load", current], "json": ["load", reference]}), 1, 1.6)


def memory(build, table):
    """Peaks of whole programs, with what they take before they begin."""
    upgrade = f"{build}/bin/vornu-upgrade"

    def row(title, peak, size, goal, limit):
        table.row(title, peak / size, goal, limit, f"{peak / 1e6:.0f} over {size / 1e6:.0f} MB")

    with tempfile.TemporaryDirectory() as folder:
        levels = make_scenes(build, folder, 100_000)
        current = f"{levels}/current.vscene"
        _, _, peak = run([f"{build}/bench/roundtrip_bench", "roundtrip", current, "1"], folder)
        row("load and save of 100,000 entities, peak memory over the file", peak, os.path.getsize(current), 0.65, 1)
        for name, title, goal, limit in (("legacy", "100,000 entities", 0.65, 1.3),
                                         ("terrain", "4 million samples", 1.3, 2)):
            _, _, peak = run([upgrade, f"{levels}/{name}.vscene"], folder)
            size = os.path.getsize(f"{levels}/{name}.vscene")
            row(f"vornu-upgrade of {title}, peak memory over its result", peak, size, goal, limit)
        with open(f"{folder}/comments.vscene", "w", encoding="utf-8") as file:
            file.write("scene_version 6\n")
            for _ in range(2_000_000):
                file.write(f"# {'nothing but a remark ' * 4}of a hundred bytes\n")
        with open(f"{folder}/nothing.vscene", "w", encoding="utf-8") as file:
            file.write("scene_version 6\n")
        _, _, peak = run([upgrade, "--verify", f"{folder}/comments.vscene"], folder)
        _, _, nothing = run([upgrade, "--verify", f"{folder}/nothing.vscene"], folder)
        row("--verify of 200 MB of comments, peak memory over none", peak, nothing, 1.2, 2)


def stages_of(build, shape, count):
    """Instructions of each stage by name."""
    with tempfile.TemporaryDirectory() as folder:
        callgrind([f"{build}/bench/scene_bench", shape, str(count)], f"{folder}/out", "--instr-atstart=no")
        stages = {}
        for name in os.listdir(folder):
            with open(f"{folder}/{name}", encoding="utf-8") as file:
                text = file.read()
            stage = re.search(r"^desc: Trigger: Client Request: (\w+)$", text, re.MULTILINE)
            if stage:
                stages[stage.group(1)] = int(re.search(r"^totals: (\d+)", text, re.MULTILINE).group(1))
        return stages


def growth(build, table):
    cases = [(shape, count) for count in (100_000, 10_000) for shape in ("tree", "flat", "deep", "mixed")]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        taken = dict(zip(cases, pool.map(lambda case: stages_of(build, *case), cases)))
    for stage in ("load", "save", "upgrade", "verify"):
        for shape in ("tree", "flat", "deep", "mixed"):
            small, large = (taken[shape, count][stage] for count in (10_000, 100_000))
            table.row(f"{stage} ({shape}), 100,000 over 10,000 entities", large / small, 10.1, 11,
                      f"{large / 1e6:.0f} over {small / 1e6:.0f} million")
    for stage in ("load", "save", "upgrade", "verify"):
        for shape, title in (("flat", "all under one parent"), ("deep", "all in one chain")):
            value, tree = (taken[which, 100_000][stage] for which in (shape, "tree"))
            table.row(f"{stage} of 100,000, {title}, over a tree", value / tree, 1.3, 2,
                      f"{value / 1e6:.0f} over {tree / 1e6:.0f} million")


def files(build, table):
    """Both write the same bytes with the same flushes; the second is told what to write."""
    count = 2_000
    best = {}
    with tempfile.TemporaryDirectory() as folder:
        output_of([f"{build}/bench/roundtrip_bench", "small", folder, str(count)])
        content = f"{folder}/Content"
        for _ in range(3):
            shutil.copytree(content, f"{folder}/upgraded/Content")
            os.sync()
            taken, _, _ = run([f"{build}/bin/vornu-upgrade", f"{folder}/upgraded/Content/Levels"], folder)
            best["own"] = min(best.get("own", taken), taken)
            shutil.copytree(content, f"{folder}/written/Content")
            os.sync()
            taken = int(output_of([f"{build}/bench/write_bench", f"{folder}/written/Content/Levels",
                                   f"{folder}/upgraded/Content/Levels", ".legacy-v3"])) / 1e9
            best["written"] = min(best.get("written", taken), taken)
            shutil.rmtree(f"{folder}/upgraded")
            shutil.rmtree(f"{folder}/written")
    table.row("vornu-upgrade of 2,000 small files, over their writes", best["own"] / best["written"], 1.5, 2.5,
              f"{best['own'] * 1e3:.0f} over {best['written'] * 1e3:.0f} ms")


def check(build, table):
    upgrade = f"{build}/bin/vornu-upgrade"
    with tempfile.TemporaryDirectory() as folder:
        file = f"{make_scenes(build, folder, 100_000)}/current.vscene"
        best = best_of(15, {"check": [upgrade, "--check", file], "grep": ["grep", "-c", "^entity ", file]}, folder)
    table.row("--check of one large current file, over grep -c", best["check"][0] / best["grep"][0], 0.7, 1,
              f"{best['check'][0] * 1e3:.1f} over {best['grep'][0] * 1e3:.1f} ms")
    with tempfile.TemporaryDirectory() as folder:
        for i in range(10_000):
            os.makedirs(f"{folder}/levels/{i // 100}", exist_ok=True)
            with open(f"{folder}/levels/{i // 100}/scene{i}.vscene", "w", encoding="utf-8") as file:
                file.write("scene_version 3\n" + "entity \"\" \"Prop\"\ntransform 1 2 3\nend_entity\n" * 20)
        best = best_of(15, {
            "check": [upgrade, "--check", f"{folder}/levels"],
            "peek": [f"{build}/bench/folder_bench", "peek", f"{folder}/levels", "10000"],
        }, folder)
    table.row("--check of 10,000 small legacy files, over reading their heads", best["check"][0] / best["peek"][0],
              2, 4, f"{best['check'][0] * 1e3:.1f} over {best['peek'][0] * 1e3:.1f} ms")


def start(build, table):
    program = f"{build}/bench/start_bench"
    with tempfile.TemporaryDirectory() as folder:
        os.mkdir(f"{folder}/empty")
        own, true = map(int, output_of(
            [program, "program", f"{build}/bin/vornu-upgrade", "--check", f"{folder}/empty"]).split())
    registration = statistics.median(int(output_of([program, "registration"])) for _ in range(51))
    table.row("start on an empty folder, over /bin/true", own / true, 2, 3.5,
              f"{own / 1e3:.0f} over {true / 1e3:.0f} us, {registration / 1e3:.0f} of them registration")


def numbers(build, table):
    best = best_times(f"{build}/bench/number_bench", 9)
    for numbers, title in (("scene", "numbers of scenes"), ("any", "any bits")):
        for step, other, goal in (("write", "std::to_chars", 0.5), ("read", "std::from_chars", 0.8)):
            own, standard = (best[f"{step}/{who}/{numbers}"] for who in ("own", "standard"))
            table.row(f"{step} floats ({title}), over {other}", own / standard, goal, 1,
                      f"{own / 1e5:.1f} over {standard / 1e5:.1f} ns")
    count = 100_000_000
    differences = int(output_of([f"{build}/bench/number_bench", "compare", str(count)]))
    table.row("differences among 100 million random floats", differences, 0, 0)


def terrain(build, table):
    """Processor time, as the flush to disk isn't the text's."""
    best = best_times(f"{build}/bench/terrain_bench", 5, clock="cpu_time")
    for step, one, goal in (("load", "read", 4), ("save", "write", 3)):
        table.row(f"{step} of a terrain, per height over a float's {one}", best[step] / best[one], goal, 8,
                  f"{best[step] / 4e6:.1f} over {best[one] / 4e6:.1f} ns")


def registry(build, table):
    """Medians over many processes: whether 100,000 entities find a place in the caches is luck, which a process
    keeps to its end, and the best time is the luckiest."""
    repetitions = repeated_times(f"{build}/bench/registry_bench", 3, processes=15)
    median = {name: statistics.median(values) for name, values in repetitions.items()}
    for step, title in (("clear", "clear"), ("destroy", "destroying every tenth")):
        small, large = median[f"{step}/100000"] / 1e5, median[f"{step}/1000000"] / 1e6
        table.row(f"{title}, per entity, 1,000,000 over 100,000", large / small, 1.2, 1.5,
                  f"{large:.2f} over {small:.2f} ns")
    for step, title, reference, count, goal, limit in (
            ("clear", "clearing 1,000,000, over destroying vectors", "vectors", 1_000_000, 3, 8),
            ("life", "creating and destroying 1,000,000, over a sparse set", "sparse set life", 1_000_000, 1.3, 2),
            ("one guid", "destroying 100,000 of one GUID, over GUIDs of their own", "own guids", 100_000, 1.2, 2)):
        own, other = (median[f"{name}/{count}"] for name in (step, reference))
        table.row(title, own / other, goal, limit, f"{own / 1e6:.2f} over {other / 1e6:.2f} ms")


def remove_sidecars(folder):
    for sub, _, names in os.walk(folder):
        for name in names:
            if name.endswith(".vmeta"):
                os.remove(f"{sub}/{name}")


def mount(build, table):
    counts = (20_000, 50_000, 200_000)
    best = {}
    memory = {}
    with tempfile.TemporaryDirectory() as folder:

        def measure(step, what, count, times=1):
            """Notes the lowest mean of `times` runs."""
            figures = [
                [int(figure) for figure in
                 output_of([f"{build}/bench/folder_bench", what, f"{folder}/{count}", str(count)]).split()]
                for _ in range(times)]
            taken = statistics.mean(time for time, _ in figures)
            memory[step, count] = max(grown for _, grown in figures)
            best[step, count] = min(best.get((step, count), taken), taken)

        for count in counts:
            output_of([f"{build}/bench/folder_bench", "make", f"{folder}/{count}", str(count)])
        for _ in range(2):
            for count in counts:
                remove_sidecars(f"{folder}/{count}")
                os.sync()  # what was written before isn't the mount's
                measure("first", "mount", count)
        for _ in range(5):
            for count in counts:
                for step, what in (("second", "mount"), ("walk", "walk")):
                    measure(step, what, count, times=counts[-1] // count)  # samples of equal length
    for count in counts:
        second, walk = best["second", count], best["walk", count]
        table.row(f"second mount of {count:,} assets, over walking and reading", second / walk, 1.8, 3,
                  f"{second / 1e6:.0f} over {walk / 1e6:.0f} ms")
    grown = memory["second", counts[-1]]
    table.row(f"peak memory of the second mount of {counts[-1]:,}, in kB an asset", grown / counts[-1] / 1000, 1, 2,
              f"{grown / 1e6:.0f} MB")
    for step in ("first", "second"):
        small, large = best[step, counts[0]], best[step, counts[-1]]
        table.row(f"{step} mount, 200,000 over 20,000 assets", large / small, 11, 12,
                  f"{large / 1e6:.0f} over {small / 1e6:.0f} ms")


def tasks(build, table):
    """The best of 25 repetitions, and the median of the submits: their time depends on how much the second
    thread takes part, which is luck."""
    repetitions = repeated_times(f"{build}/bench/task_bench", 25)
    best = {name: statistics.median(values) if name.startswith("submit") else min(values)
            for name, values in repetitions.items()}

    def row(title, own, other, goal, limit):
        table.row(title, own / other, goal, limit, f"{own / 1e3:.2f} over {other / 1e3:.2f} us")

    for count in (1, 1000):
        row(f"submit {count} and wait, over oneTBB", best[f"submit/Vornu/{count}"], best[f"submit/oneTBB/{count}"],
            1.2, 2.5)
    for grain in (1, 64, 1024, 16384):
        # Whichever of oneTBB's two ways of cutting ranges is faster.
        other = min(best[f"small/oneTBB/{grain}"], best[f"small/oneTBB simple/{grain}"])
        row(f"1,000,000 items, grain {grain}, over oneTBB", best[f"small/Vornu/{grain}"], other, 1.2, 2.5)
    for threads in (1, 2):
        row(f"heavy items, {threads} threads, over oneTBB", best[f"heavy/Vornu/{threads}"],
            best[f"heavy/oneTBB/{threads}"], 1.2, 2.5)


def main():
    build = sys.argv[1]
    sections = {function.__name__: function for function in
                (instructions, times, memory, growth, check, files, start, numbers, terrain, registry, mount, tasks)}
    unknown = [name for name in sys.argv[2:] if name not in sections]
    if unknown:
        sys.exit(f"Unknown section: {unknown[0]}. Known: {', '.join(sections)}")
    table = Table()
    table.header()
    for name in sys.argv[2:] or sections:
        sections[name](build, table)
    return 0 if table.close() else 1


if __name__ == "__main__":
    sys.exit(main())
