"""The plots of a run, as SVG."""
import io
import statistics

import matplotlib
import matplotlib.pyplot as plt

import figures

LADDER = ["add_0003", "add_0016", "add_0100", "add_1000"]
TOOLS = [("auto", "Auto", "tab:blue"), ("statistic", "Statistic", "tab:cyan"), ("manual", "Manual", "tab:green"),
         ("precise", "precise mode", "tab:red"), ("gbench", "Google Benchmark", "tab:gray")]
matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "benchex", "svg.fonttype": "none", "font.size": 9, "axes.grid": True,
                            "grid.alpha": 0.3, "axes.spines.top": False, "axes.spines.right": False})


def svg(figure):
    text = io.StringIO()
    figure.savefig(text, format="svg", bbox_inches="tight", metadata={"Date": None})
    plt.close(figure)
    return text.getvalue()


def error_over_time(everything):
    """The error that 95 % of the runs stay below, for more and more time."""
    figure, axes = plt.subplots(1, len(LADDER), figsize=(13, 3.4), sharey=True)
    for axis, kernel in zip(axes, LADDER):
        for tool, label, colour in TOOLS:
            rungs = figures.ladder(everything.tool(tool), kernel)
            axis.loglog([1e3 * t for t, _ in rungs], [max(100 * e, 1e-3) for _, e in rungs], "o-", color=colour,
                        label=label, markersize=3)
        axis.set(title=f"a call of {int(kernel[4:])} clocks", xlabel="ms per figure")
        for limit in (5, 1):
            axis.axhline(limit, color="black", linewidth=0.5)
    axes[0].set_ylabel("error, 95 % of runs, %")
    axes[0].legend(fontsize=7)
    return svg(figure)


def bias_over_cost(everything):
    """The median error of every chain."""
    figure, axis = plt.subplots(figsize=(9, 4))
    shown = [("auto", "Auto", "tab:blue"), ("manual", "Manual, 10 calls", "tab:green"),
             ("statistic", "Statistic", "tab:cyan"), ("gbench@0.01s", "Google Benchmark, 0.01 s", "tab:gray"),
             ("precise", "precise mode, 5 %", "tab:orange"), ("precise@10ms", "precise mode, 10 ms", "tab:red")]
    for method, label, colour in shown:
        for kind, mark in (("add", "o"), ("mul", "^")):
            bias = figures.kernel_bias([r for r in everything.of(method) if r.kernel.startswith(kind)], least=1)
            axis.plot([int(k[4:]) for k in bias], [100 * b for b in bias.values()], mark, color=colour, markersize=3,
                      label=label if kind == "add" else None)
    axis.set_xscale("log")
    axis.set_yscale("symlog", linthresh=0.1)
    axis.set(xlabel="core clocks of a call, by construction (circles: additions, triangles: multiplications)",
             ylabel="median error, %")
    axis.legend(fontsize=7)
    return svg(figure)


def single_steps(everything):
    """What is reported for calls that differ by one clock."""
    figure, axes = plt.subplots(1, 3, figsize=(12, 4), sharey=True)
    shown = [("auto", "Auto, 5 %"), ("gbench@0.01s", "Google Benchmark, 0.01 s"), ("precise", "precise mode, 5 %")]
    for axis, (method, label) in zip(axes, shown):
        runs = [r for r in everything.of(method) if r.known and r.truth <= 20 and r.kernel.startswith("add")]
        chains = sorted(figures.by(lambda r: r.truth, runs).items())
        middle = [statistics.median(r.figure for r in group) for _, group in chains]
        low, high = [[figures.quantile([r.figure for r in group], q) for _, group in chains] for q in (0.05, 0.95)]
        clocks = [truth for truth, _ in chains]
        axis.plot([0, 20], [0, 20], color="black", linewidth=0.5)
        axis.errorbar(clocks, middle, [[m - v for m, v in zip(middle, low)], [v - m for m, v in zip(middle, high)]],
                      fmt="o", markersize=3, capsize=2, linewidth=1)
        axis.set(title=label, xlabel="clocks by construction", ylim=(0, 30))
    axes[0].set_ylabel("clocks reported: middle, 5 to 95 %")
    return svg(figure)


def growth(everything):
    """Fixed cost per combination, and the pieces of the harness against n log n."""
    figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4))
    for tool, label, colour in (("benchex", "Benchex", "tab:red"), ("gbench", "Google Benchmark", "tab:gray")):
        each = everything.overhead.each(tool)
        left.loglog(sorted(each), [1e6 * each[n] for n in sorted(each)], "o-", color=colour, label=label)
    left.set(xlabel="combinations in a run", ylabel="us for each, a function of no cost")
    left.legend()
    for piece in everything.growth:
        n, time = zip(*piece.points)
        right.loglog(n, [1e9 * t / k for k, t in zip(n, time)], "o-", markersize=3, label=piece.piece)
    right.set(xlabel="n", ylabel="ns for each")
    right.legend(fontsize=7)
    return svg(figure)


def clock_of_the_core(everything):
    """Counts of the time-stamp counter for one addition, some of those measured, in their order."""
    most_points = 1500
    counts = [r.reported / r.figure for r in everything.runs if r.known and r.reported != r.figure and r.figure > 0]
    step = len(counts) // most_points + 1
    figure, axis = plt.subplots(figsize=(9, 3))
    axis.plot(range(0, len(counts), step), counts[::step], ",", color="tab:blue")
    axis.set(xlabel="measurement", ylabel="counts for one addition")
    return svg(figure)


def draw_all(everything):
    """(name, caption, svg) of every plot."""
    return [("error-over-time", "Error for more and more time", error_over_time(everything)),
            ("bias", "Median error for calls of every cost", bias_over_cost(everything)),
            ("steps", "Calls that differ by one clock", single_steps(everything)),
            ("growth", "Fixed cost and growth", growth(everything)),
            ("core-clock", "The counter against the core's clock during the run", clock_of_the_core(everything))]
