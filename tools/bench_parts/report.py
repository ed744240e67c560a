"""Writes the measured figures as tables in Markdown."""

import statistics

MIB_IN_KIB = 1024
SHOWN_CALLS = 8


def ratios(row, what, who="ours"):
    """Of each round, against the other of the same round."""
    if row["against"] not in row["runs"]:
        return []
    return [run[what] / other[what]
            for run, other in zip(row["runs"].get(who, []), row["runs"][row["against"]])]


def median_ratio(row, what, who="ours"):
    values = ratios(row, what, who)
    return statistics.median(values) if values else None


def median_of_ours(row, what):
    return statistics.median(run[what] for run in row["runs"]["ours"])


def number(value):
    return "" if value is None else f"{value:.{2 if value >= 0.2 else 3}f}"


def min_median_max(row, what):
    values = ratios(row, what)
    if not values:
        return ["", "", ""]
    return [number(value) for value in (min(values), statistics.median(values), max(values))]


def ratio_of_fastest(row, what):
    """Hardly moved by what else goes on, but it says nothing of an ordinary run."""
    if row["against"] not in row["runs"]:
        return ""
    ours, others = (min(run[what] for run in row["runs"][who]) for who in ("ours", row["against"]))
    return number(ours / others)


def judged(row):
    """Each measure that has a goal: its name, value, goal, what is beyond, and its unit."""
    goals = row["goals"]
    if "ratio" in goals:
        for what, name in ("cpu", "CPU"), ("wall", "wall"):
            yield name, median_ratio(row, what), *goals["ratio"], ""
    if "seconds" in goals:
        yield "wall", median_of_ours(row, "wall"), *goals["seconds"], " s"
    if "memory" in goals:
        yield "memory", row["memory"] / MIB_IN_KIB, *goals["memory"], " MiB"


def verdict(row):
    """What of the row is short of its goal; otherwise whether all of it is beyond."""
    missed = [f"{name} {number(value)}{unit}" for name, value, goal, _, unit in judged(row)
              if value > goal]
    if missed:
        return "no: " + ", ".join(missed)
    return "beyond" if all(value <= beyond for _, value, _, beyond, _ in judged(row)) else "yes"


def goal_texts(row):
    """The goals of the row, and what is beyond them."""
    units = {"ratio": "", "seconds": " s", "memory": " MiB"}
    return [", ".join(f"{goal[index]:g}{units[kind]}" for kind, goal in row["goals"].items())
            for index in (0, 1)]


def table(heads, lines, columns_of_text):
    """Markdown with even columns, which a terminal shows well too."""
    cells = [heads] + lines
    widths = [max(len(line[column]) for line in cells) for column in range(len(heads))]

    def written(line):
        return "| " + " | ".join(
            cell.ljust(width) if column in columns_of_text else cell.rjust(width)
            for column, (cell, width) in enumerate(zip(line, widths))) + " |"
    rule = "|" + "|".join("-" * (width + 2) if column in columns_of_text
                          else "-" * (width + 1) + ":" for column, width in enumerate(widths)) + "|"
    return "\n".join([written(heads), rule, *map(written, lines)])


def ratio_table(figures):
    work = "A tenth of this work" if figures["quick"] else "Work"
    heads = ["Row", work, "Against", "CPU: min", "median", "max", "fastest", "Wall: min", "median",
             "max", "Goal", "Beyond", "Holds"]
    lines = [[row["name"], row["title"], row["against"] if ratios(row, "cpu") else "",
              *min_median_max(row, "cpu"), ratio_of_fastest(row, "cpu"),
              *min_median_max(row, "wall"), *goal_texts(row), verdict(row)]
             for row in figures["rows"]]
    return table(heads, lines, {0, 1, 2, 12})


def peer_table(figures):
    peers = ["rsync", "tar", "mc"]
    lines = [[row["name"], *(number(median_ratio(row, "cpu", who)) for who in ["ours", *peers])]
             for row in figures["rows"] if any(peer in row["runs"] for peer in peers)]
    return table(["CPU against cp -r", "tarvane", *peers], lines, {0}) if lines else ""


def calls_an_entry(row):
    """All calls for an entry of the tree, and the most frequent ones."""
    if not row["calls"]:
        return ["", ""]
    calls = sorted(((count / row["entries"], kind) for kind, count in row["calls"].items()),
                   reverse=True)
    shown = [(count, kind) for count, kind in calls[:SHOWN_CALLS] if count >= 0.05]
    others = sum(count for count, _ in calls[len(shown):])
    texts = [f"{kind} {count:.2f}" for count, kind in shown]
    return [f"{sum(count for count, _ in calls):.2f}",
            ", ".join(texts + [f"others {others:.2f}"])]


def cost_table(figures):
    heads = ["Row", "CPU, s", "Wall, s", "Peak, MiB", "Entries", "Calls an entry", "By kind"]
    lines = [[row["name"], f"{median_of_ours(row, 'cpu'):.3f}",
              f"{median_of_ours(row, 'wall'):.3f}", f"{row['memory'] / MIB_IN_KIB:.1f}",
              str(row["entries"]), *calls_an_entry(row)] for row in figures["rows"]]
    return table(heads, lines, {0, 6})


def machine_sentence(figures):
    machine = figures["machine"]
    kernel = machine["kernel"].partition("-")[0]
    return (f"Measured on {machine['cores']} cores of {machine['cpu']} with"
            f" {machine['memory'] / 1024**3:.0f} GiB of memory, Linux {kernel}; trees made from"
            f" seed {figures['seed']}.")


def markdown(figures):
    parts = [machine_sentence(figures), ratio_table(figures), peer_table(figures), cost_table(figures)]
    return "\n\n".join(part for part in parts if part)
