#!/usr/bin/env python3
"""Turns the raw results of the benchmarks into tables of ratios and, for the documentation, a plot."""

import argparse
import fnmatch
import json
import pathlib
import statistics
import sys

LEVEL = 0.95


def read_results(path):
    """Median time in ns of one operation by (workload, size) and implementation, in file order."""
    runs = {}
    for run in json.loads(path.read_text())["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        workload, size, implementation = run["name"].split("/")[:3]
        runs.setdefault((workload, size), {}).setdefault(implementation, []).append(time_of(run))
    return {key: {name: statistics.median(times) for name, times in implementations.items()}
            for key, implementations in runs.items()}


def time_of(run):
    """Time of the processor, which other processes do not stretch, save where threads contend."""
    if "ns" in run:
        return run["ns"]
    return run["real_time" if run.get("threads", 1) > 1 else "cpu_time"]


class Target:
    """One promise: how much longer a peer takes."""

    def __init__(self, workload, size, peer, ratio, implementation, reason):
        self.workload, self.size, self.peer = workload, size, peer
        self.ratio, self.implementation, self.reason = ratio, implementation, reason
        self.measured = None

    def measure(self, results):
        workload, _, pattern = self.peer.rpartition(":")
        own = results[self.workload, self.size][self.implementation]
        times = [time for name, time in results[workload or self.workload, self.size].items()
                 if fnmatch.fnmatch(name, pattern) and name != self.implementation
                 and not (pattern == "*" and name.startswith("kelm"))]
        self.measured = min(times) / own if times else None

    @property
    def bound(self):
        if self.ratio == "level":
            return LEVEL
        number = self.ratio.removeprefix("<")
        return 1 / float(number[2:]) if number.startswith("1/") else float(number)

    @property
    def score(self):
        """1 and more where the promise is kept."""
        if self.ratio.startswith("<"):
            return self.bound / self.measured
        return self.measured / self.bound


def read_targets(path, results):
    targets = []
    for line in path.read_text().splitlines():
        line, _, reason = line.partition("#")
        columns = line.split()
        if not columns:
            continue
        pattern, sizes, peer, ratio = columns[:4]
        implementation = columns[4] if len(columns) > 4 else "kelm"
        for workload, size in results:
            if fnmatch.fnmatch(workload, pattern) and size in sizes.split(","):
                targets.append(Target(workload, size, peer, ratio, implementation, reason.strip()))
    for target in targets:
        target.measure(results)
    return [target for target in targets if target.measured]


def time_text(nanoseconds):
    for unit, factor in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def target_table(targets):
    yield "| Workload | Size | Peer | Wanted | Measured | |"
    yield "|---|--:|---|--:|--:|---|"
    for target in targets:
        wanted = target.ratio if target.ratio[0] in "<l" else f"≥ {target.ratio}"
        verdict = "reached" if target.score >= 1 else f"**not reached**: {target.reason or 'unknown'}"
        peer = {"*": "the best"}.get(target.peer, f"`{target.peer}`")
        variant = "" if target.implementation == "kelm" else f" by `{target.implementation}`"
        yield (f"| `{target.workload}`{variant} | {target.size} | {peer} | {wanted} "
               f"| {target.measured:.2f} | {verdict} |")


def ratio_table(results):
    yield "| Workload | Size | Kelm | Time of the others divided by Kelm's |"
    yield "|---|--:|--:|---|"
    for (workload, size), times in results.items():
        if "kelm" not in times:
            continue
        own = times["kelm"]
        others = ", ".join(f"{name} {time / own:.2f}" for name, time in
                           sorted(times.items(), key=lambda item: item[1]) if name != "kelm")
        yield f"| `{workload}` | {size} | {time_text(own)} | {others} |"


def growth_table(results):
    yield "| Workload | n = 262,144 | 2n | Ratio |"
    yield "|---|--:|--:|--:|"
    for (workload, _), times in results.items():
        if "2n" in times:
            yield (f"| `{workload.removeprefix('doubling_')}` | {time_text(times['n'])} "
                   f"| {time_text(times['2n'])} | {times['2n'] / times['n']:.2f} |")


# Pictures, and the workloads in each.
FAMILIES = {
    "blocks": ("Copies, blocks and appends", "copy_* construct_* move* assign_* set_at write_shared "
               "fill_buffer lock_unlock plus* append_char* append_text append_grow wide_* contended_*"),
    "formatting": ("Formatting, numbers and similarity", "format_* append_format int* double bool from_int "
                   "from_double is_* similar"),
    "pages": ("Code pages", "utf8_* decode_* encode_* recode"),
    "order": ("Order", "compare* sort_* collate*"),
    "search": ("Search and count", "find_* reverse_find* nc_find* count_*"),
    "pieces": ("Pieces, fields and tokens", "mid* left right span_* element* elements index_of_* "
               "all_elements tokens lines"),
    "case": ("Case and trims", "make_* trim*"),
    "replacing": ("Replacing and removing", "replace_* nc_re* remove_*"),
    "editing": ("Inserting, deleting and repeating", "insert_* delete drop_last from_repeat* repeat_*"),
}
LOW, HIGH = 1 / 8, 32


def best_ratios(results):
    """How much longer the best peer takes, by family."""
    ratios = {family: [] for family in FAMILIES}
    for (workload, size), times in results.items():
        peers = [time for name, time in times.items() if not name.startswith("kelm")]
        if "kelm" not in times or not peers or workload.startswith("doubling_"):
            continue
        family = next(name for name, (_, patterns) in reversed(FAMILIES.items())
                      if any(fnmatch.fnmatch(workload, pattern) for pattern in patterns.split()))
        ratios[family].append((f"{workload} {size}", min(peers) / times["kelm"]))
    return ratios


def plot(path, title, rows):
    """A bar for each row on a logarithmic scale, from the line where both take the same time."""
    from matplotlib.figure import Figure  # of use for the documents alone
    import matplotlib
    matplotlib.rcParams.update({"svg.hashsalt": "kelm", "svg.fonttype": "none", "font.size": 8})
    figure = Figure(figsize=(9, 0.9 + 0.17 * len(rows)), layout="constrained")
    axes = figure.subplots()
    for place, (label, ratio) in enumerate(rows):
        shown = min(max(ratio, LOW), HIGH)
        axes.barh(place, shown - 1, left=1, color="#4a7" if ratio >= LEVEL else "#c54")
        if ratio != shown:
            axes.annotate(f"{ratio:.3g}", (shown, place), ha="right" if ratio > 1 else "left", va="center",
                          color="white", weight="bold")
    marks = [1 / 8, 1 / 4, 1 / 2, 1, 2, 4, 8, 16, 32]
    axes.set_xscale("log", base=2)
    axes.set_xlim(LOW, HIGH)
    axes.set_xticks(marks, ["1/8", "1/4", "1/2", "level", "2", "4", "8", "16", "32"])
    axes.axvline(1, color="black", linewidth=1)
    axes.grid(axis="x", color="#ddd")
    axes.set_axisbelow(True)
    axes.set_yticks(range(len(rows)), [label for label, _ in rows])
    axes.set_ylim(len(rows) - 0.4, -0.6)
    axes.set_xlabel("time of the best peer divided by Kelm's; a number in a bar is one that is cut off")
    axes.set_title(title)
    figure.savefig(path, metadata={"Date": None})


def write_plots(folder, results):
    folder.mkdir(exist_ok=True)
    for family, rows in best_ratios(results).items():
        plot(folder / f"{family}.svg", FAMILIES[family][0], rows)


HEAD = """# Measured ratios

Made by `tools/bench --docs`: one process, the implementations of a workload interleaved, medians of
at least five repetitions, answers compared before anything is timed. A ratio is the time of a peer
divided by Kelm's, so above 1 Kelm is the faster one. Sizes are bytes, or units of wide text; 1M is
1,048,576."""


def page(results, targets, plots):
    missed = sum(target.score < 1 for target in targets)
    yield HEAD
    yield ""
    yield f"## Targets\n\n{len(targets) - missed} of {len(targets)} are reached."
    yield ""
    yield from target_table(targets)
    if plots:
        yield "\n## Beside the best peer\n"
        yield from (f"![{title}]({plots}/{family}.svg)\n" for family, (title, _) in FAMILIES.items())
    yield "\n## Everything\n"
    yield from ratio_table(results)
    yield "\n## The same text twice as long\n"
    yield from growth_table(results)


def write(path, lines):
    path.write_text("\n".join(lines) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path)
    parser.add_argument("targets", type=pathlib.Path)
    parser.add_argument("table", type=pathlib.Path)
    parser.add_argument("--docs", type=pathlib.Path, help="folder for benchmarks.md and its plots")
    parser.add_argument("--check", action="store_true", help="fail where a target is not reached")
    options = parser.parse_args()

    results = read_results(options.results)
    targets = read_targets(options.targets, results)
    write(options.table, page(results, targets, None))
    if options.docs:
        write_plots(options.docs / "benchmarks", results)
        write(options.docs / "benchmarks.md", page(results, targets, "benchmarks"))

    missed = [target for target in targets if target.score < 1]
    print(f"{len(targets) - len(missed)} of {len(targets)} targets reached, see {options.table}")
    for target in missed:
        print(f"  {target.workload}/{target.size}: {target.implementation} against {target.peer} "
              f"{target.measured:.2f}, wanted {target.ratio}")
    return 1 if options.check and missed else 0


if __name__ == "__main__":
    sys.exit(main())
