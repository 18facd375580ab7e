#!/usr/bin/env python3
"""Turns the raw results of the benchmarks into tables of ratios and, for the documentation, a plot."""

import argparse
import fnmatch
import json
import math
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

    def __init__(self, workload, size, peer, ratio, implementation):
        self.workload, self.size, self.peer = workload, size, peer
        self.ratio, self.implementation = ratio, implementation
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
        columns = line.split("#")[0].split()
        if not columns:
            continue
        pattern, sizes, peer, ratio = columns[:4]
        implementation = columns[4] if len(columns) > 4 else "kelm"
        for workload, size in results:
            if fnmatch.fnmatch(workload, pattern) and size in sizes.split(","):
                targets.append(Target(workload, size, peer, ratio, implementation))
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
        verdict = "reached" if target.score >= 1 else "**not reached**"
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


def plot(targets):
    """A bar for each promise on a logarithmic scale; the line at 1 is the promise."""
    row, left, width = 16, 330, 560
    height = row * len(targets) + 40
    low, high = 0.25, 16

    def x(score):
        share = math.log(min(max(score, low), high) / low) / math.log(high / low)
        return left + share * width

    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 20}" '
           f'height="{height}" font-family="sans-serif" font-size="11">')
    yield '<rect width="100%" height="100%" fill="white"/>'
    for mark in (0.25, 0.5, 1, 2, 4, 8, 16):
        colour = "black" if mark == 1 else "#ddd"
        yield f'<path d="M{x(mark):.1f} 24V{height}" stroke="{colour}"/>'
        yield f'<text x="{x(mark):.1f}" y="16" text-anchor="middle">{mark:g}</text>'
    for number, target in enumerate(targets):
        y = 28 + row * number
        begin, end = sorted((x(1), x(target.score)))
        colour = "#4a7" if target.score >= 1 else "#c54"
        label = f"{target.workload}/{target.size} : {target.peer}"
        yield f'<text x="{left - 6}" y="{y + 10}" text-anchor="end">{label}</text>'
        yield (f'<rect x="{begin:.1f}" y="{y}" width="{max(end - begin, 1):.1f}" height="{row - 4}" '
               f'fill="{colour}"/>')
    yield "</svg>"


HEAD = """# Measured ratios

Made by `tools/bench --docs`: one process, the implementations of a workload interleaved, medians of
at least five repetitions, answers compared before anything is timed. A ratio is the time of a peer
divided by Kelm's, so above 1 Kelm is the faster one. Sizes are bytes, or units of wide text; 1M is
1,048,576."""


def page(results, targets, plot_name):
    missed = sum(target.score < 1 for target in targets)
    yield HEAD
    yield ""
    yield f"## Targets\n\n{len(targets) - missed} of {len(targets)} are reached."
    if plot_name:
        yield ""
        yield f"![Measured divided by wanted; the line at 1 is the promise]({plot_name})"
    yield ""
    yield from target_table(targets)
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
    parser.add_argument("--docs", type=pathlib.Path, help="folder for benchmarks.md and its plot")
    parser.add_argument("--check", action="store_true", help="fail where a target is not reached")
    options = parser.parse_args()

    results = read_results(options.results)
    targets = read_targets(options.targets, results)
    write(options.table, page(results, targets, None))
    if options.docs:
        write(options.docs / "benchmarks.svg", plot(targets))
        write(options.docs / "benchmarks.md", page(results, targets, "benchmarks.svg"))

    missed = [target for target in targets if target.score < 1]
    print(f"{len(targets) - len(missed)} of {len(targets)} targets reached, see {options.table}")
    for target in missed:
        print(f"  {target.workload}/{target.size}: {target.implementation} against {target.peer} "
              f"{target.measured:.2f}, wanted {target.ratio}")
    return 1 if options.check and missed else 0


if __name__ == "__main__":
    sys.exit(main())
