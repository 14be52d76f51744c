#!/usr/bin/env python3
"""bench_peers | report.py [--write]: tables of what bench_peers has measured. With --write they go into bench/README.md
too, in place of those that are there, and a plot of the ratios into docs/images/peers.svg."""
import dataclasses
import math
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
README = ROOT / "bench/README.md"
PLOT = ROOT / "docs/images/peers.svg"
BEGIN, END = "<!-- bench-peers: begin -->\n", "<!-- bench-peers: end -->\n"
OWN_SECTION = "Ours"
COLOURS = {"zimg": "#1f77b4", "Pillow": "#e6a700", "libvips": "#2ca02c", "OpenCV": "#d62728", "pixman": "#9467bd"}


@dataclasses.dataclass
class Time:
    library: str
    ms: float
    comparable: bool
    note: str


@dataclasses.dataclass
class Row:
    section: str
    name: str
    times: list

    @property
    def ours(self):
        return self.times[0].ms

    @property
    def peers(self):
        return self.times[1:]

    @property
    def fastest(self):
        """Of those that do the same work, if there are any."""
        return min(self.peers, key=lambda peer: (not peer.comparable, peer.ms))


def read(lines):
    """Turns, versions by library, and rows. Exits if the measuring has not come to its end."""
    turns, versions, rows = 0, {}, {}
    for line in lines:
        kind, *fields = line.rstrip("\n").split("\t")
        if kind == "turns":
            turns = int(fields[0])
        elif kind == "library":
            versions[fields[0]] = fields[1]
        elif kind == "time":
            section, name, library, ms, comparable, note = fields
            row = rows.setdefault((section, name), Row(section, name, []))
            row.times.append(Time(library, float(ms), comparable == "1", note))
        elif kind == "end":
            return turns, versions, list(rows.values())
    sys.exit(1)  # bench_peers has said why


def processor():
    with open("/proc/cpuinfo") as info:
        return next((line.split(":")[1].strip() for line in info if line.startswith("model name")), "an unknown processor")


class Notes:
    """Numbers notes in the order in which they come up."""

    def __init__(self):
        self.texts = []

    def mark(self, note):
        if not note:
            return ""
        if note not in self.texts:
            self.texts.append(note)
        return self.superscript(self.texts.index(note) + 1)

    def lines(self):
        return [f"{self.superscript(i)} {text[0].upper()}{text[1:]}." for i, text in enumerate(self.texts, 1)]

    @staticmethod
    def superscript(number):
        return "".join("⁰¹²³⁴⁵⁶⁷⁸⁹"[int(digit)] for digit in str(number))


def figure(value):
    """Three digits."""
    return f"{value:.{max(0, 2 - math.floor(math.log10(value)))}f}" if value > 0 else "0"


def markdown(head, lines):
    """A table whose columns are lined up, the first to the left and the others to the right."""
    cells = [head] + lines
    widths = [max(len(line[i]) for line in cells) for i in range(len(head))]

    def joined(line):
        return "| " + " | ".join([line[0].ljust(widths[0])] + [c.rjust(w) for c, w in zip(line[1:], widths[1:])]) + " |"

    rule = "|" + "-" * (widths[0] + 2) + "|" + "|".join("-" * (width + 1) + ":" for width in widths[1:]) + "|"
    return [joined(head), rule] + [joined(line) for line in lines]


def peer_table(rows, notes):
    libraries = [library for library in COLOURS if any(peer.library == library for row in rows for peer in row.peers)]

    def cell(row, library):
        for peer in row.peers:
            if peer.library == library:
                return f"{figure(peer.ms)} ({figure(row.ours / peer.ms)}){notes.mark(peer.note)}"
        return "n/a"

    def over_fastest(row):
        mark = "" if row.fastest.comparable else notes.mark(row.fastest.note)
        return figure(row.ours / row.fastest.ms) + mark

    lines = [[row.name, figure(row.ours), *(cell(row, library) for library in libraries), over_fastest(row)]
             for row in rows]
    return markdown(["Task", "PictureZVK", *libraries, "Over the fastest"], lines)


def own_table(rows):
    lines = [[row.name, figure(row.ours), figure(row.peers[0].ms), figure(row.ours / row.peers[0].ms)] for row in rows]
    return markdown(["Task: first / second", "First", "Second", "Ratio"], lines)


def report(turns, versions, rows):
    notes = Notes()
    lines = []
    for section in dict.fromkeys(row.section for row in rows):
        part = [row for row in rows if row.section == section]
        lines += [f"### {section} beside other libraries" if section != OWN_SECTION else "### Ours beside ours", ""]
        lines += own_table(part) if section == OWN_SECTION else peer_table(part, notes)
        lines.append("")
    lines += [line + "  " for line in notes.lines()] + [""]
    known = ", ".join(f"{library} {version}" for library, version in versions.items())
    lines.append(f"Milliseconds of the processor on one thread (of two threads: on the wall); in brackets, ours over "
                 f"theirs. The least of {turns} turn{'s' if turns > 1 else ''} on {processor()}, with {known}.")
    return "\n".join(lines) + "\n"


def plot(rows):
    """Ours over each other library, a line for each row, on a logarithmic scale."""
    rows = [row for row in rows if row.section != OWN_SECTION]
    left, top, step, width = 250, 50, 18, 560
    ratios = [row.ours / peer.ms for row in rows for peer in row.peers]
    low, high = math.floor(math.log2(min(ratios))), math.ceil(math.log2(max(ratios)))
    bottom = top + step * len(rows)

    def across(ratio):
        return left + width * (math.log2(ratio) - low) / (high - low)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 30}" height="{bottom + 40}" '
           'font-family="sans-serif" font-size="11">',
           '<rect width="100%" height="100%" fill="white"/>']
    for i, (library, colour) in enumerate(COLOURS.items()):
        x = left + 90 * i
        out.append(f'<circle cx="{x}" cy="14" r="4.5" fill="{colour}"/><text x="{x + 9}" y="18">{library}</text>')
    out.append('<text x="10" y="18">Our time over theirs</text>')
    out.append(f'<circle cx="{left}" cy="32" r="4" fill="white" stroke="#555"/>'
               f'<text x="{left + 9}" y="36">not quite the same work</text>')
    for power in range(low, high + 1):
        x = across(2.0 ** power)
        colour, label = ("#000", "1") if power == 0 else ("#ddd", f"{2 ** power}" if power > 0 else f"1/{2 ** -power}")
        out.append(f'<line x1="{x:.1f}" y1="{top}" x2="{x:.1f}" y2="{bottom}" stroke="{colour}"/>'
                   f'<text x="{x:.1f}" y="{bottom + 16}" text-anchor="middle">{label}</text>')
    for i, row in enumerate(rows):
        y = top + step * i + step / 2
        out.append(f'<text x="{left - 12}" y="{y + 4}" text-anchor="end">{row.name}</text>')
        for peer in row.peers:
            colour = COLOURS[peer.library]
            out.append(f'<circle cx="{across(row.ours / peer.ms):.1f}" cy="{y}" r="4.5" stroke="{colour}" '
                       f'fill="{colour if peer.comparable else "white"}"/>')
    return "\n".join(out) + "\n</svg>\n"


def main():
    if sys.argv[1:] not in ([], ["--write"]):
        print(f"report.py: unknown option {' '.join(sys.argv[1:])}", file=sys.stderr)
        sys.exit(2)
    turns, versions, rows = read(sys.stdin)
    text = report(turns, versions, rows)
    print(text, end="")
    if sys.argv[1:]:
        before, rest = README.read_text().split(BEGIN)
        image = f"![Our time over that of other libraries](../{PLOT.relative_to(ROOT)})\n\n"
        README.write_text(before + BEGIN + image + text + END + rest.split(END)[1])
        PLOT.write_text(plot(rows))


if __name__ == "__main__":
    main()
