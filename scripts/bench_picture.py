# SPDX-License-Identifier: Apache-2.0
"""Ratios as a picture: bars on a logarithmic scale, the peer at 1.

A bar to the left is faster than the peer, one to the right slower; half and twice are
of one length. Text stays text, so that it can be searched and read aloud. The same
ratios give the same bytes.
"""

import math
from xml.sax.saxutils import escape

label_width, plot_width, ratio_width = 330, 380, 60
row_height, bar_height, head = 17, 11, 46
faster, slower = "#2f7d5b", "#b4532a"
# Beyond this a bar ends in its number alone.
limit = 1024
ticks = (1 / 1000, 1 / 100, 1 / 10, 1 / 4, 1 / 2, 1, 2, 4, 10, 100, 1000)


def tick_shown(value):
    return f"{value:g}" if value >= 1 else f"1/{round(1 / value)}"


class Scale:
    """Maps ratios to places; 1 always lies within."""

    def __init__(self, ratios):
        logs = [self.log(ratio) for ratio in ratios] or [0]
        self.low = min(-1, math.floor(min(logs)))
        self.high = max(1, math.ceil(max(logs)))

    @staticmethod
    def log(ratio):
        return math.log2(min(max(ratio, 1 / limit), limit))

    def x(self, ratio):
        share = (self.log(ratio) - self.low) / (self.high - self.low)
        return label_width + share * plot_width

    def ticks(self):
        """Few enough that their numbers do not touch."""
        shown = []
        for tick in sorted(ticks, key=lambda tick: (tick != 1, abs(math.log(tick)))):
            if (self.low <= math.log2(tick) <= self.high and
                    all(abs(self.x(tick) - self.x(other)) >= 34 for other in shown)):
                shown.append(tick)
        return sorted(shown)


def text(x, y, anchor, content, extra=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{extra}>{escape(content)}</text>'


def axis(scale, height):
    lines = []
    for tick in scale.ticks():
        x = scale.x(tick)
        colour = "#555" if tick == 1 else "#ddd"
        lines.append(f'<line x1="{x:.1f}" y1="{head - 6}" x2="{x:.1f}" y2="{height - 8}" stroke="{colour}"/>')
        lines.append(text(x, head - 11, "middle", tick_shown(tick), ' fill="#555"'))
    return lines


def bar(scale, y, label, ratio):
    one, end = scale.x(1), scale.x(ratio)
    return [text(label_width - 8, y + bar_height - 1, "end", label),
            f'<rect x="{min(one, end):.1f}" y="{y}" width="{abs(end - one):.1f}" height="{bar_height}"'
            f' fill="{faster if ratio <= 1 else slower}"/>',
            text(label_width + plot_width + ratio_width - 6, y + bar_height - 1, "end", f"{ratio:.2f}")]


def picture(title, ratios):
    """@p ratios: pairs of a label and our ratio to the peer, from top to bottom."""
    scale = Scale([ratio for _, ratio in ratios])
    width = label_width + plot_width + ratio_width
    height = head + len(ratios) * row_height + 12
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}"'
             f' viewBox="0 0 {width} {height}" font-family="sans-serif" font-size="12" role="img">',
             f"<title>{escape(title)}</title>",
             f'<rect width="{width}" height="{height}" fill="#fff"/>',
             text(8, 18, "start", title, ' font-weight="bold"'),
             *axis(scale, height)]
    for i, (label, ratio) in enumerate(ratios):
        lines += bar(scale, head + i * row_height, label, ratio)
    return "\n".join(lines + ["</svg>", ""])
