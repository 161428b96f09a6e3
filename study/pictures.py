"""The pictures of the study, the same bytes for the same numbers."""
import statistics

import matplotlib
matplotlib.use("svg")
import matplotlib.pyplot as plt

NAMES = {"desktops": "Office desktops", "notebooks": "Notebooks", "home": "Home PCs",
         "virtual": "Virtual machines", "containers": "Containers"}

PCS = ("desktops", "notebooks", "home")

# Colour, marker, width: ours in blue and full lines, others apart from each other without colour, too.
STYLES = {
    "format 2.0": ("#0057b7", "o", 2.8),
    "format 1.6": ("#4f9fe6", "s", 1.6),
    "format 1.5": ("#9cc9f2", "D", 1.6),
    "vote of 70 %": ("#d55e00", "H", 1.6),
    "system UUID": ("#009e73", "^", 1.6),
    "machine id": ("#cc79a7", "v", 1.6),
    "UUID and disk": ("#56b497", "<", 1.6),
    "board serial": ("#8c6d31", ">", 1.6),
    "first address": ("#555555", "P", 1.6),
    "all addresses": ("#999999", "X", 1.6),
    "five parts": ("#e69f00", "p", 1.6),
}
IN_TIME = ["format 2.0", "format 1.6", "format 1.5", "vote of 70 %", "system UUID", "machine id",
           "first address"]


def share(fleets, rule, count, of_all=False):
    """Mean over fleets of a count in 100 machines."""
    return statistics.fmean(100 * count(fleet["rules"][rule]) /
                            (fleet["machines"] + (fleet["copies"] if of_all else 0)) for fleet in fleets)


def line_of(rule):
    """The machine id often lies on format 1.6."""
    return "--" if rule == "machine id" else "-"


def panels(title):
    """Five axes for the populations, and one for the legend."""
    figure, grid = plt.subplots(2, 3, figsize=(10, 6.4), layout="constrained")
    figure.suptitle(title, fontsize=12)
    axes = list(grid.flat)
    axes[5].axis("off")
    return figure, axes


def legend(axis, handles, labels):
    axis.legend(handles, labels, loc="center", frameon=False, fontsize=10)


def kept_over_time(results):
    figure, axes = panels("Machines that had the id of the first day at every look, in 100")
    for axis, (population, fleets) in zip(axes, results["base"].items()):
        for rule in IN_TIME:
            colour, marker, width = STYLES[rule]
            kept = [100] + [share(fleets, rule, lambda counts, y=year: counts[0][y]) for year in range(3)]
            axis.plot(range(4), kept, color=colour, marker=marker, linewidth=width, label=rule,
                      linestyle=line_of(rule), zorder=3 if rule == "format 2.0" else 2)
        axis.set(title=NAMES[population], xlabel="years", ylim=(-3, 103), xticks=range(4))
        axis.grid(color="#dddddd")
    legend(axes[5], *axes[0].get_legend_handles_labels())
    return figure


def kept_against_distinct(results):
    figure, axes = panels("Right: kept for three years.  Up: an id that no other machine has.  In 100")
    for axis, (population, fleets) in zip(axes, results["base"].items()):
        for rule, (colour, marker, _) in STYLES.items():
            axis.plot(share(fleets, rule, lambda counts: counts[0][2]),
                      share(fleets, rule, lambda counts: counts[2], of_all=True), marker, color=colour,
                      markersize=11 if rule == "format 2.0" else 8, label=rule, markeredgecolor="white",
                      markeredgewidth=0.6, zorder=3 if rule == "format 2.0" else 2)
        lowest = 75 if population in PCS else -2
        axis.set(title=NAMES[population], xlabel="kept", xlim=(-4, 104), ylim=(lowest, 102),
                 ylabel=f"own id, from {lowest}" if lowest > 0 else "own id")
        axis.grid(color="#dddddd")
    legend(axes[5], *axes[0].get_legend_handles_labels())
    return figure


def over_ranges(results):
    titles = {"board_replaced": "boards replaced a year, in 100",
              "adapter_replaced": "adapters replaced a year, in 100",
              "dock": "notebooks with a dock, in 100", "vpn": "notebooks with a VPN, in 100"}
    figure, axes = panels("Notebooks: kept for three years, in 100, over what is not known")
    axes[2].axis("off")
    for axis, (name, title) in zip([axes[0], axes[1], axes[3], axes[4]], titles.items()):
        points = [(value, fleet) for swept, value, fleet in results["sweep"] if swept == name]
        for rule in IN_TIME:
            colour, marker, width = STYLES[rule]
            axis.plot([100 * value for value, _ in points],
                      [share([fleet], rule, lambda counts: counts[0][2]) for _, fleet in points],
                      color=colour, marker=marker, linewidth=width, label=rule, linestyle=line_of(rule),
                      zorder=3 if rule == "format 2.0" else 2)
        axis.set(title=title, ylim=(-3, 103))
        axis.title.set_fontsize(10)
        axis.grid(color="#dddddd")
    legend(axes[5], *axes[0].get_legend_handles_labels())
    return figure


def draw(results, folder):
    plt.rcParams.update({"svg.hashsalt": "deviceid", "svg.fonttype": "none", "font.family": "sans-serif",
                         "font.sans-serif": ["DejaVu Sans"], "axes.spines.top": False,
                         "axes.spines.right": False})
    for name, figure in (("study-kept", kept_over_time(results)),
                         ("study-distinct", kept_against_distinct(results)),
                         ("study-range", over_ranges(results))):
        figure.savefig(folder / f"{name}.svg", metadata={"Date": None})
        plt.close(figure)
