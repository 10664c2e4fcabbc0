"""The tables of coverage_bench and surroundings_bench."""
import math

import figures

# Calls of so many clocks stand in a row together.
COSTS = [(1, 20, "1 to 17 clocks"), (21, 99_999, "100 to 10,000"), (100_000, 9_999_999, "100,000 and a million"),
         (10_000_000, 999_999_999, "10 and 100 million"), (1_000_000_000, 10_000_000_000, "3,000 million")]
WARNED = "ACCURWRN"
OFF = 0.01  # an error that a figure without a mark must not have


def percent(share, digits=1):
    return "-" if share is None else f"{100 * share:.{digits}f} %"


def share_of(selected, everything):
    return len(selected) / len(everything) if everything else None


def coverage_sections(raw):
    rows = figures.read_csv(raw / "coverage.csv")
    accuracies = list(dict.fromkeys(row["accuracy"] for row in rows))
    kinds = figures.by(lambda row: row["kind"], rows)
    table = [[kind, *(f"{100 * float(row['held']):.1f} % of {float(row['slices']):.0f}" for row in group)]
             for kind, group in kinds.items()]
    held = [float(row["held"]) for row in rows]
    within = sum(0.93 <= h <= 0.98 for h in held)
    note = (f"{int(rows[0]['series'])} series each. Between 93 and 98 %: {within} of {len(held)}; least "
            f"{percent(min(held))}, most {percent(max(held))}.")
    head = ["slices", *(f"accuracy {100 * float(accuracy):g} %" for accuracy in accuracies)]
    return [("Simulated series", head, table, note)]


class Figure:
    """One figure of a chain."""

    def __init__(self, row):
        self.error = float(row["figure"]) / float(row["clocks"]) - 1
        self.known = row["known"] == "1"
        self.holds = float(row["low"]) <= float(row["clocks"]) <= float(row["high"])
        self.marked = row["result"] != "OK"
        self.failed = row["result"] not in ("OK", WARNED)
        self.wall = float(row["wall us"]) * 1e-3


def chain_row(group):
    known = [f for f in group if f.known]
    errors = [abs(f.error) for f in group if not f.failed]
    plain = [abs(f.error) for f in group if not f.marked]
    return [len(group), percent(figures.quantile(errors, 0.5), 2), percent(figures.quantile(errors, 0.95), 2),
            percent(share_of(known, group)), percent(share_of([f for f in known if f.holds], known)),
            percent(share_of([f for f in group if f.marked], group)), percent(max(plain, default=None), 2),
            sum(error > OFF for error in plain), f"{figures.median(f.wall for f in group):.3g}",
            f"{max(f.wall for f in group):.3g}"]


def misses(row):
    """What of a row does not hold: intervals that hold too seldom for their number, wrong figures without a word."""
    count, holds, wrong = row[2], row[6], row[9]
    if holds != "-":
        share, known = float(holds.split()[0]) / 100, round(count * float(row[5].split()[0]) / 100)
        if share < 0.95 - 2 * math.sqrt(0.95 * 0.05 / max(known, 1)):
            yield f"{holds} of {known} intervals hold"
    if wrong:
        yield f"{wrong} wrong by more than {100 * OFF:g} % without a word"


def chain_section(rows):
    table = []
    for title, of_title in figures.by(lambda row: row["surroundings"], rows).items():
        for least, most, clocks in COSTS:
            group = [Figure(row) for row in of_title if least <= float(row["clocks"]) <= most]
            if group:
                table.append([title, clocks, *chain_row(group)])
    head = ["surroundings", "calls", "figures", "error, half of them", "95 % of them", "with interval", "which holds",
            "with a warning", "worst without", "of these off by > 1 %", "ms, middle", "ms, longest"]
    missed = [f"{row[0]}, {row[1]}: {what}" for row in table for what in misses(row)]
    note = "Missed: " + "; ".join(missed) + "." if missed else \
        f"No interval but within its 95 %, and no figure off by more than {100 * OFF:g} % without a word."
    return "Chains of known cost", head, table, note


def frequency_section(rows):
    truth = float(rows[-1]["figure"])
    table = []
    for title, group in figures.by(lambda row: row["surroundings"], rows[:-1]).items():
        known = [float(row["figure"]) for row in group if float(row["figure"]) > 0]
        walls = [float(row["wall us"]) * 1e-3 for row in group]
        errors = [abs(mhz / truth - 1) for mhz in known]
        table.append([title, len(group), len(group) - len(known), percent(figures.median(errors), 4),
                      percent(max(errors, default=None), 4), f"{figures.median(walls):.3g}", f"{max(walls):.3g}"])
    head = ["surroundings", "starts", "not known", f"off {truth:.3f} MHz of the whole run, middle", "most", "ms, middle",
            "ms, longest"]
    return "Frequency at the start", head, table


def surroundings_sections(raw):
    rows = figures.by(lambda row: row["what"], figures.read_csv(raw / "surroundings.csv"))
    return [chain_section(rows["figure"]), frequency_section(rows["frequency"])]
