#!/usr/bin/python3
"""Makes the tables and plots of a run of the benches.

    bench/summary.py <directory with the raw tables> <directory of the page> <part>...

Writes <part>.txt and <part>.html into the first one (and methods.csv), and into the second measurement.md, with what
stands between the marks of each part replaced, and plots/*.svg.
"""
import csv
import html
import pathlib
import re
import sys

import figures
import plots
import surroundings

PAGE = pathlib.Path(__file__).resolve().parent.parent / "docs" / "measurement.md"
ENGINE = ["auto", "statistic", "manual"]
PEER = "gbench"
METHODS = [("auto", "Auto, 5 %"), ("statistic", "Statistic, 12 calls"), ("manual", "Manual, 10 calls"),
           ("precise", "precise, 5 %"), ("precise@10ms", "precise, 10 ms"), ("auto@10ms", "Auto, repeated for 10 ms"),
           ("statistic@10ms", "Statistic, repeated for 10 ms"), ("manual@10ms", "Manual, repeated for 10 ms"),
           ("gbench", "Google Benchmark, default (0.5 s)"), ("gbench@0.01s", "Google Benchmark, 0.01 s"),
           ("gbench@10 x 10ms", "Google Benchmark, 10 repetitions of 0.01 s"),
           ("gbench@5ms", "Google Benchmark, 0.005 s"), ("gbench@10 x auto", "Google Benchmark, 10 times Auto's time")]
COLUMNS = ["method", "runs", "bias %", "largest bias %", "error 95 % of runs, %", "error 16-20 clocks, %", "variation %",
           "largest variation %", "ms", "5 % after ms", "1 % after ms", "steps told apart %", "of pairs",
           "interval holds %"]


def percent(value, digits=2):
    return "-" if value is None else f"{100 * value:.{digits}f}"


def milliseconds(seconds):
    return "-" if seconds is None else f"{1e3 * seconds:.3g}"


def largest(values):
    return max(values, key=abs, default=None)


def p95(runs, least, most):
    """The error that 95 % of the runs stay below, of chains from `least` to `most` clocks."""
    return figures.quantile([abs(error) for error in figures.errors(runs, least, most)], 0.95)


def time_until(everything, method, limit):
    """For the chains of 16 clocks and more that were tried with more and more time: the longest of their times."""
    if method not in ("precise", PEER, *ENGINE):
        return ""
    times = [figures.time_to_stay_below(figures.ladder(everything.tool(method), kernel), limit)
             for kernel in plots.LADDER if kernel != "add_0003"]
    return "never" if None in times else milliseconds(max(times))


def method_row(everything, method, label):
    runs = everything.of(method)
    bias, variation = figures.kernel_bias(runs), list(figures.variation(runs).values())
    share, pairs = figures.steps_told_apart(runs)
    return [label, len(runs), percent(figures.median(bias.values())), percent(largest(bias.values())),
            percent(p95(runs, 10, 3000)), percent(p95(runs, 16, 20)),
            percent(figures.median(variation)), percent(max(variation, default=None)),
            milliseconds(figures.median(r.wall for r in runs)), time_until(everything, method, 0.05),
            time_until(everything, method, 0.01), percent(share, 1), pairs,
            percent(figures.coverage(runs), 1)]


def library_rows(everything):
    """Functions whose cost nobody knows: what each method says of them."""
    shown = ["precise@10ms", "precise", *ENGINE, "gbench@0.01s"]
    runs = [r for r in everything.runs if r.truth == 0 and r.known]
    rows = []
    for kernel in dict.fromkeys(r.kernel for r in runs):
        base = None
        row = [kernel]
        for method in shown:
            values = [r.figure for r in runs if r.kernel == kernel and r.method == method]
            middle = figures.median(values)
            base = base or middle
            row.append("-" if middle is None else
                       (f"{middle:.1f}" if method == shown[0] else f"{100 * (middle / base - 1):+.2f} %")
                       + f" ({percent(figures.spread(values))} %)")
        rows.append(row)
    return ["function", "precise, 10 ms: core clocks", *[dict(METHODS)[m] for m in shown[1:]]], rows


def goal(count, wanted, value, text, reached):
    return [count, wanted, text, "reached" if reached else f"missed {value}".rstrip()]


def below(count, value, limit, show):
    """A figure that is to be at most `limit`."""
    return goal(count, f"at most {show(limit)}", f"by {show(value - limit)}", show(value), value <= limit)


def goal_rows(e):
    def pc(v): return f"{100 * v:.2f} %"
    def ms(v): return f"{1e3 * v:.3g} ms"
    def us(v): return f"{1e6 * v:.2f} us"
    precise, limited, auto = e.of("precise"), e.of("precise@10ms"), e.of("auto")
    held = figures.coverage(precise + limited)
    calm_held = figures.coverage([r for r in precise + limited if r.calm])
    calm = [r for r in limited if r.calm]
    calm_apart, calm_pairs = figures.steps_told_apart(calm)
    apart, pairs = figures.steps_told_apart(limited)
    apart_quick, _ = figures.steps_told_apart(precise)
    each = e.overhead.each("benchex")
    largest_run = max(each)
    least = e.overhead.least_each("benchex").values()
    walls = [r.wall for r in auto]
    variation = list(figures.variation(limited).values())
    bias = figures.kernel_bias(limited)
    rows = [
        below("bias, chains of 10 to 3000 clocks, all together", abs(figures.median(bias.values())), 0.001, pc),
        below("bias, the worst of these chains", abs(largest(bias.values())), 0.001, pc),
        below("error of 95 % of the runs, 16 to 20 clocks", p95(limited, 16, 20), 0.002, pc),
        below("... in calm moments", p95(calm, 16, 20), 0.002, pc),
        below("time of these runs, 95 % of them", figures.quantile(
            [r.wall for r in limited if 16 <= r.truth <= 20], 0.95), 0.012, ms),
        below("variation at 10 ms, from 10 clocks up, middle kernel", figures.median(variation), 0.003, pc),
        below("variation at 10 ms, worst kernel", max(variation), 0.003, pc),
        goal(f"steps of a clock told apart, 10 ms ({pairs} pairs)", "99 %", f"by {pc(0.99 - apart)}", pc(apart),
             apart >= 0.99),
        goal(f"... in calm moments ({calm_pairs} pairs)", "99 %", f"by {pc(0.99 - calm_apart)}", pc(calm_apart),
             calm_apart >= 0.99),
        goal("steps of a clock told apart, precise at 5 %", "99 %", f"by {pc(0.99 - apart_quick)}", pc(apart_quick),
             apart_quick >= 0.99),
        below("time per combination, precise at 5 %, median", figures.median(r.wall for r in precise), 0.005, ms),
        goal("stated 95 % interval holds the truth, precise", "93 to 98 %", "", pc(held), 0.93 <= held <= 0.98),
        goal("... in calm moments", "93 to 98 %", "", pc(calm_held), 0.93 <= calm_held <= 0.98),
        below("Auto: time per combination, 99 % of the runs", figures.quantile(walls, 0.99), 0.005, ms),
        *[below(f"Auto: error of 95 % of the runs, {least} to {most} clocks, against Google Benchmark in ten times the time",
                p95(auto, least, most), p95(e.of("gbench@10 x auto"), least, most), pc)
          for least, most in ((1, 9), (10, 100), (300, 3000))],
        below(f"fixed cost per combination, {largest_run} of them", each[largest_run], 10e-6, us),
        below("... its least varies with their number by", max(least) / min(least) - 1, 0.1, pc),
        below("memory at that number", e.overhead.combinations["benchex"][largest_run][2], 20, lambda v: f"{v:.1f} MB"),
        below("start of the process to the first timed call", e.overhead.start, 0.020, ms),
    ]
    return rows + [goal(f"{g.piece}: time grows with n to the power of", f"{g.allowed:.2f} (n log n) + "
                        f"{figures.GROWTH_TOLERANCE}", f"by {g.exponent - g.allowed:.2f}", f"{g.exponent:.2f}", g.within)
                   for g in e.growth]


def overhead_rows(e):
    rows = []
    for tool, name in (("benchex", "Benchex"), ("gbench", "Google Benchmark")):
        each = e.overhead.each(tool)
        for n, (_, cpu, peak) in sorted(e.overhead.combinations[tool].items()):
            if n > 1:
                start = e.overhead.combinations[tool][1]
                rows.append([name, n, f"{1e6 * each[n]:.2f}", f"{1e6 * (cpu - start[1]) / n:.2f}", f"{peak:.1f}"])
    return ["tool", "combinations", "us each", "us of processor time each", "peak MB"], rows


def growth_rows(e):
    return (["piece", "n", "time", "power of n", "of n log n"],
            [[g.piece, f"{n} {g.unit}", f"{1e3 * t:.2f} ms", f"{g.exponent:.2f}", f"{g.allowed:.2f}"]
             for g in e.growth for n, t in g.points[4:5]])


def sections(e):
    """(title, head, rows) of every table."""
    drift = [r for r in e.runs if not r.known]
    timed = [["start of the process to the first timed call", f"{1e3 * e.overhead.start:.1f} ms"],
             ["all tests of the reference library, Auto", f"{1e3 * e.overhead.suite:.1f} ms"],
             ["of this inside timed regions", f"{100 * e.overhead.timed_share:.0f} %"],
             ["the slowest of Auto's runs", f"{1e3 * max(r.wall for r in e.of('auto')):.3g} ms"],
             ["measurements left out, since the truth moved by more than 1 %", f"{len(drift)} of {len(e.runs)}"],
             ["moments of calm, in which it moved by less than 0.2 %",
              f"{100 * sum(r.calm for r in e.runs) / len(e.runs):.0f} % of the measurements"]]
    return [("The run", ["", ""], e.machine + timed),
            ("Goals", ["count", "goal", "measured", ""], goal_rows(e)),
            ("Methods", COLUMNS, [method_row(e, *m) for m in METHODS if e.of(m[0])]),
            ("Functions of the library", *library_rows(e)),
            ("Fixed cost", *overhead_rows(e)),
            ("Growth", *growth_rows(e))]


def as_text(head, rows):
    table = [[str(cell) for cell in row] for row in [head, *rows]]
    widths = [max(len(row[i]) for row in table) for i in range(len(head))]
    return "\n".join("  ".join([row[0].ljust(widths[0])] + [c.rjust(w) for c, w in zip(row[1:], widths[1:])]).rstrip()
                     for row in table) + "\n"


def as_markdown(head, rows):
    def line(cells): return "| " + " | ".join(str(c) for c in cells) + " |\n"
    return line(head) + "|---" * len(head) + "|\n" + "".join(map(line, rows))


def as_html(head, rows):
    def line(tag, cells): return "<tr>" + "".join(f"<{tag}>{html.escape(str(c))}</{tag}>" for c in cells) + "</tr>\n"
    return "<table>\n" + line("th", head) + "".join(line("td", row) for row in rows) + "</table>\n"


def write_page(part, tables, drawn, page):
    """The document: tables, and the plots as files of their own."""
    (page.parent / "plots").mkdir(parents=True, exist_ok=True)
    for name, _, svg in drawn:
        (page.parent / "plots" / f"{name}.svg").write_text(svg)
    body = "".join(f"### {title}\n\n{as_markdown(head, rows)}\n{''.join(n + chr(10) * 2 for n in note)}"
                   for title, head, rows, *note in tables)
    body += "".join(f"### {caption}\n\n![{caption}](plots/{name}.svg)\n\n" for name, caption, _ in drawn)
    marked = re.compile(rf"(<!-- figures: {part} -->\n).*(<!-- end of the figures: {part} -->)", re.S)
    page.write_text(marked.sub(lambda m: m[1] + "\n" + body + m[2], page.read_text()))


def write_html(tables, drawn, path):
    style = ("body{font:14px sans-serif;margin:2em}table{border-collapse:collapse}"
             "td,th{border:1px solid #bbb;padding:.2em .6em;text-align:right}td:first-child{text-align:left}")
    body = "".join(f"<h2>{html.escape(title)}</h2>\n{as_html(head, rows)}" for title, head, rows, *_ in tables)
    body += "".join(f"<h2>{html.escape(caption)}</h2>\n{svg[svg.index('<svg'):]}\n" for _, caption, svg in drawn)
    path.write_text(f"<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Measurement of Benchex</title>"
                    f"<style>{style}</style></head><body>\n<h1>Measurement of Benchex</h1>\n{body}</body></html>\n")


def write_methods(raw, tables):
    with open(raw / "methods.csv", "w", newline="") as file:
        writer = csv.writer(file)
        _, head, rows = next(t for t in tables if t[0] == "Methods")
        writer.writerows([head, *rows])


def tables_and_plots(part, raw):
    if part == "coverage":
        return surroundings.coverage_sections(raw), []
    if part == "surroundings":
        return surroundings.surroundings_sections(raw), []
    everything = figures.read(raw)
    return sections(everything), plots.draw_all(everything)


def main():
    raw, folder = map(pathlib.Path, sys.argv[1:3])
    page = folder / PAGE.name
    if page.resolve() != PAGE:
        page.write_text(PAGE.read_text())
    for part in sys.argv[3:]:
        tables, drawn = tables_and_plots(part, raw)
        text = "\n".join("\n".join([f"{title}\n", as_text(head, rows), *note]) for title, head, rows, *note in tables)
        (raw / f"{part}.txt").write_text(text)
        print(text)
        if part == "methods":
            write_methods(raw, tables)
        write_html(tables, drawn, raw / f"{part}.html")
        write_page(part, tables, drawn, page)
    print(f"Page: {page}; tables in {raw}")


if __name__ == "__main__":
    main()
