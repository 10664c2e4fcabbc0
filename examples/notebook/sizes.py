"""Draws one function over its sizes for all runs of a report.

    benchex-report --json -o report.json before.csv after.csv
    python3 sizes.py report.json zorsMDCTFwd_32f_I sizes.png

The cells (# %%) run one by one in an editor or a notebook that knows them. Needs Debian's python3-pandas and
python3-matplotlib.
"""
# %% Which report, which function
import json
import sys

import matplotlib
import pandas

source, function, picture = sys.argv[1:4]

# %% The rows, one line: a column for each member, "parameters.Len" for a parameter
report = json.load(open(source, encoding="utf-8"))
rows = pandas.json_normalize(report["rows"]).query("function == @function and clocks > 0")
view = next(view for view in report["functions"] if view["name"] == function)
if rows.empty or not view["axis"]:
    sys.exit(f"{function}: no parameter varies, nothing to draw")

# %% One line for each run and combination of the other parameters
size = "parameters." + view["axis"]["parameter"]
others = ["parameters." + name for name in view["lines"]] + (["cache"] if "cache" in rows and rows.cache.notna().any() else [])
rows["line"] = [" ".join([report["runs"][row["run"]]["label"]] + [str(row[name]) for name in others])
                for _, row in rows.iterrows()]
lines = rows.pivot_table("clocks", index=size, columns="line")
print(lines.to_string())

# %% The picture
matplotlib.use("Agg")
axes = lines.plot(marker="o", logx=view["axis"]["logarithmic"], title=function, ylabel="clocks per " + rows.per.iloc[0],
                  xlabel=view["axis"]["parameter"])
if view["axis"]["numeric"]:
    axes.set_xticks(lines.index, [f"{value:g}" for value in lines.index])
    axes.minorticks_off()
axes.set_ylim(bottom=0)
axes.figure.savefig(picture, dpi=120)
