"""What the raw tables of a run say: errors, spread, time and growth of each method."""
import collections
import csv
import dataclasses
import math
import pathlib
import statistics

MOST_MOVEMENT = 0.01  # of the truth, before against after: more, and nobody knows what a clock was meanwhile
CALM_MOVEMENT = 0.002  # less: nothing else of weight ran on the machine
GROWTH_TOLERANCE = 0.15  # of an exponent: caches that are left behind, noise


@dataclasses.dataclass
class Run:
    """One measurement."""
    method: str
    kernel: str
    round: int
    truth: float  # core clocks by construction, 0 for functions of the library
    figure: float  # core clocks
    reported: float  # in the method's own unit
    wall: float  # seconds
    interval: tuple
    known: bool  # the truth stood still
    calm: bool  # and nothing disturbed it

    @property
    def error(self):
        return self.figure / self.truth - 1


def read_csv(path):
    with open(path, newline="") as file:
        return list(csv.DictReader(file))


def read_runs(path):
    runs = []
    for row in read_csv(path):
        before, after, figure = float(row["before"]), float(row["after"]), float(row["figure"])
        core = row["unit"] == "core"
        addition = (before + after) / 2
        movement = abs(after - before) / addition if addition > 0 else math.inf
        known = movement <= MOST_MOVEMENT
        runs.append(Run(row["method"], row["kernel"], int(row["round"]), float(row["clocks"]),
                        figure if core or not known else figure / addition, figure, float(row["wall us"]) * 1e-6,
                        (float(row["low"]), float(row["high"])), core or known, movement <= CALM_MOVEMENT))
    return runs


def quantile(values, share):
    """The value below which this share of the values is; None for no values."""
    ordered = sorted(values)
    return ordered[min(math.ceil(share * len(ordered)), len(ordered)) - 1] if ordered else None


def median(values):
    """The middle value; None for no values."""
    values = list(values)
    return statistics.median(values) if values else None


def spread(values):
    """Standard deviation by mean; None where there are not two values."""
    return statistics.stdev(values) / statistics.mean(values) if len(values) > 1 else None


def by(key, items):
    groups = collections.defaultdict(list)
    for item in items:
        groups[key(item)].append(item)
    return groups


def errors(runs, least, most):
    """Of the chains from `least` to `most` clocks."""
    return [r.error for r in runs if r.known and least <= r.truth <= most]


def kernel_bias(runs, least=10, most=3000):
    """The median error of every chain."""
    chains = by(lambda r: r.kernel, [r for r in runs if r.known and least <= r.truth <= most])
    return {kernel: statistics.median(r.error for r in group) for kernel, group in chains.items()}


def variation(runs):
    """Standard deviation by mean of what was reported, for every kernel from 10 clocks up."""
    kernels = by(lambda r: r.kernel, [r for r in runs if r.truth == 0 or r.truth >= 10])
    return {kernel: spread([r.reported for r in group]) for kernel, group in kernels.items() if len(group) > 1}


def steps_told_apart(runs):
    """Of additions that differ by a clock: (share with a difference of 1 within 0.1, number of pairs)."""
    figure = {(r.round, r.truth): r.figure for r in runs if r.known and r.kernel.startswith("add") and r.truth <= 20}
    steps = [figure[number, clocks + 1] - value for (number, clocks), value in figure.items()
             if (number, clocks + 1) in figure]
    return (sum(abs(step - 1) <= 0.1 for step in steps) / len(steps), len(steps)) if steps else (None, 0)


def coverage(runs, least=10, most=3000):
    """Share of the stated intervals that hold the truth."""
    stated = [r for r in runs if least <= r.truth <= most and r.interval[1] > 0]
    return sum(r.interval[0] <= r.truth <= r.interval[1] for r in stated) / len(stated) if stated else None


def ladder(runs, kernel):
    """Of one tool given more and more time: [(seconds, 95th percentile of the error)] for a chain."""
    rungs = by(lambda r: r.method, [r for r in runs if r.kernel == kernel and r.known])
    return sorted((statistics.median(r.wall for r in rung), quantile([abs(r.error) for r in rung], 0.95))
                  for rung in rungs.values())


def time_to_stay_below(rungs, limit):
    """The least time from which on no rung has a larger error; None where the last one has."""
    time = None
    for seconds, error in reversed(rungs):
        if error > limit:
            break
        time = seconds
    return time


@dataclasses.dataclass
class Growth:
    piece: str
    unit: str
    points: list  # (n, seconds)

    @property
    def exponent(self):
        """Slope of the time over n, both logarithmic, by least squares."""
        return slope([(math.log(n), math.log(t)) for n, t in self.points])

    @property
    def allowed(self):
        """The same slope for n log n."""
        return slope([(math.log(n), math.log(n * math.log(n))) for n, _ in self.points])

    @property
    def within(self):
        return self.exponent <= self.allowed + GROWTH_TOLERANCE


def slope(points):
    x, y = [statistics.mean(p[i] for p in points) for i in (0, 1)]
    return sum((px - x) * (py - y) for px, py in points) / sum((px - x) ** 2 for px, _ in points)


def read_growth(path):
    pieces = by(lambda row: (row["piece"], row["unit"]), read_csv(path))
    return [Growth(*names, [(int(r["n"]), float(r["seconds"])) for r in rows]) for names, rows in pieces.items()]


@dataclasses.dataclass
class Overhead:
    """Medians of the repetitions, in seconds and megabytes."""
    combinations: dict  # tool -> {n: (wall, cpu, peak)}
    least: dict  # tool -> {n: wall} of the quickest repetition: others only add to it
    start: float
    suite: float
    timed_share: float

    def each(self, tool):
        """What a combination costs beyond the start of the process: {n: seconds of wall}."""
        return self.beyond_start({n: wall for n, (wall, _, _) in self.combinations[tool].items()})

    def least_each(self, tool):
        """The same of the quickest repetitions."""
        return self.beyond_start(self.least[tool])

    @staticmethod
    def beyond_start(walls):
        return {n: (wall - walls[1]) / n for n, wall in walls.items() if n > 1}


def read_overhead(path):
    rows = read_csv(path)

    def medians(selected):
        return tuple(statistics.median(float(r[c]) * s for r in selected)
                     for c, s in (("wall us", 1e-6), ("cpu us", 1e-6), ("peak MB", 1)))

    def walls(what):
        return [float(r["wall us"]) * 1e-6 for r in rows if r["what"] == what]
    combinations, least = collections.defaultdict(dict), collections.defaultdict(dict)
    for (tool, n), group in by(lambda r: (r["tool"], int(r["n"])),
                               [r for r in rows if r["what"] == "combinations"]).items():
        combinations[tool][n] = medians(group)
        least[tool][n] = min(float(r["wall us"]) for r in group) * 1e-6
    suite, timed = walls("suite"), walls("suite inside timed regions")
    return Overhead(dict(combinations), dict(least), statistics.median(walls("start")), statistics.median(suite),
                    statistics.median(t / s for t, s in zip(timed, suite)))


@dataclasses.dataclass
class Everything:
    machine: list  # (name, value)
    runs: list
    growth: list
    overhead: Overhead

    def of(self, method):
        return [r for r in self.runs if r.method == method]

    def tool(self, name):
        """All runs of a tool, whatever the time given to it."""
        return [r for r in self.runs if r.method.partition("@")[0] == name and not r.method.endswith(" x auto")]


def read(directory):
    raw = pathlib.Path(directory)
    machine = [line.split(",", 1) for line in (raw / "machine.csv").read_text().splitlines()]
    return Everything(machine, read_runs(raw / "measure.csv"), read_growth(raw / "growth.csv"),
                      read_overhead(raw / "overhead.csv"))
