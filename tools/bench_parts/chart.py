"""Draws the measured CPU ratios as an SVG."""

import html

from bench_parts.report import median_ratio, number

WIDTH, LEFT, RIGHT, TOP, STEP, BAR = 1100, 490, 100, 92, 26, 14
# A ratio above this is drawn at the edge, so that the others can be told apart.
MOST_SHOWN = 4
MARKS = {"rsync": "▲", "tar": "■", "mc": "●"}
# The page behind an image may be dark where the image is not told so, so it has its own ground.
STYLE = """
  .ground { fill: #ffffff; }
  text { font: 13px system-ui, sans-serif; fill: #24292f; }
  .title { font-size: 17px; font-weight: 600; }
  .quiet { fill: #57606a; }
  .bar { fill: #2f6fdb; }
  .grid { stroke: #8c959f; stroke-opacity: 0.3; }
  .one { stroke: #57606a; stroke-width: 1.5; }
  .goal { stroke: #d1242f; stroke-width: 2.5; }
  .peer { fill: #bf8700; font-size: 11px; }
  @media (prefers-color-scheme: dark) {
    .ground { fill: #0d1117; }
    text { fill: #e6edf3; }
    .quiet { fill: #9198a1; }
    .bar { fill: #4c8ef5; }
    .one { stroke: #9198a1; }
    .goal { stroke: #ff7b72; }
    .peer { fill: #e3b341; }
  }
"""


def text(x, y, content, *, kind="", anchor="start"):
    return (f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">'
            f"{html.escape(content)}</text>")


def line(x, top, bottom, kind):
    return f'<line class="{kind}" x1="{x:.1f}" x2="{x:.1f}" y1="{top:.1f}" y2="{bottom:.1f}"/>'


def drawn_row(row, y, at):
    ratio, middle = median_ratio(row, "cpu"), y + BAR / 2
    cut = " ›" if ratio > MOST_SHOWN else ""
    label = row["title"] if row["against"] == "cp -r" else f'{row["title"]} ({row["against"]})'
    parts = [text(LEFT - 10, middle + 4.5, label, anchor="end"),
             f'<rect class="bar" x="{LEFT}" y="{y}" width="{at(ratio) - LEFT:.1f}"'
             f' height="{BAR}" rx="2"/>']
    if "ratio" in row["goals"]:
        parts.append(line(at(row["goals"]["ratio"][0]), y - 3, y + BAR + 3, "goal"))
    for peer, mark in MARKS.items():
        value = median_ratio(row, "cpu", peer)
        if value is not None:
            parts.append(text(at(value), middle + 3.5, mark, kind="peer", anchor="middle"))
            if value > MOST_SHOWN:
                parts.append(text(at(value) + 8, middle + 3.5, number(value), kind="quiet"))
    parts.append(text(WIDTH - 8, middle + 4.5, number(ratio) + cut, anchor="end"))
    return parts


def legend(rows):
    """What the colours and marks mean, in a line."""
    peers = [peer for peer in MARKS if any(peer in row["runs"] for row in rows)]
    parts = [text(16, 52, "1.0 is cp -r, or what stands in brackets", kind="quiet"),
             line(292, 40, 57, "goal"), text(300, 52, "goal", kind="quiet")]
    for index, peer in enumerate(peers):
        x = 350 + 70 * index
        parts += [text(x, 51, MARKS[peer], kind="peer", anchor="middle"),
                  text(x + 10, 52, peer, kind="quiet")]
    return parts


def chart(figures):
    rows = [row for row in figures["rows"] if median_ratio(row, "cpu") is not None
            and row["against"] != "the whole run"]
    bottom = TOP + STEP * len(rows)

    def at(ratio):
        return LEFT + (WIDTH - LEFT - RIGHT) * min(ratio, MOST_SHOWN) / MOST_SHOWN

    parts = ['<rect class="ground" width="100%" height="100%" rx="6"/>',
             text(16, 28, "CPU time of tarvane, median ratio (less is better)",
                  kind="title"), *legend(rows)]
    for ratio in range(MOST_SHOWN + 1):
        parts += [line(at(ratio), TOP - 10, bottom, "one" if ratio == 1 else "grid"),
                  text(at(ratio), TOP - 15, str(ratio), kind="quiet", anchor="middle")]
    for index, row in enumerate(rows):
        parts += drawn_row(row, TOP + STEP * index, at)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {bottom + 12}"'
            f' role="img">\n<style>{STYLE}</style>\n' + "\n".join(parts) + "\n</svg>\n")
