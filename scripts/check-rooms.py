#!/usr/bin/env python3
"""Holds the order of the rooms: no source includes a room above its own. Reads the #include lines.

Usage: scripts/check-rooms.py [--drawing | --write | --arrows | --self-test]
  (none)       every include points downward
  --drawing    that, and docs/rooms.svg shows the includes as they are
  --write      draws docs/rooms.svg
  --arrows     lists the arrows between rooms: includes, from, to
  --self-test  upward includes, planted in a copy of the sources, are found
"""

import collections
import math
import pathlib
import re
import shutil
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DRAWING = "docs/rooms.svg"
LIBRARY, TOOL = "MemoryManager", "tools/imgband"

# Layers from the lowest up. The rooms of one layer lie side by side: none of them includes another.
LAYERS = {
    LIBRARY: [
        [("Platform", "the operating system")],
        [("records", "records, enumerations, result codes")],
        [("base", "helpers, error log, texts, lock")],
        [("layout", "where bytes lie; sample lines")],
        [("tables", "keys and their text; buffers"), ("stores", "block, temporary file, host's file")],
        [("image", "life, geometry, budget, planner")],
        [("bands", "bands, blocks, frames, units")],
        [("transfer", "import and export")],
        [("reports", "names, reports, dumps")],
        [("MemoryManager.h", "all public headers")],
    ],
    TOOL: [
        [("page", "the page that a person opens"), ("interface", "the library's public headers")],
        [("values", "what options and work share")],
        [("system", "files, process, text")],
        [("pictures", "formats, input, output"), ("pixels", "what a job does to lines")],
        [("library", "the tool as a host")],
        [("report", "what a run tells")],
        [("schemes", "jobs and their band loops")],
        [("commands", "main, options, subcommands")],
    ],
}

# The public headers lie together at the top, where a host looks for them; each belongs to a room all the same.
PUBLIC_HEADERS = {
    "ErrorLogFolder.h": "base",
    "BaseBuffer.h": "tables", "CWorkTableList.h": "tables",
    "CImageCtrl.h": "stores", "CImageCtrlIO.h": "stores",
    "CImageObj.h": "image",
    "CImageObjIO.h": "transfer", "ImgObjUty.h": "transfer",
    "MemoryManager.h": "MemoryManager.h",
}  # the others: records
GENERATED_HEADERS = {"MemoryManager/Version.h"}

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')

Include = collections.namedtuple("Include", "file line target house room target_house target_room")


def room_of(path):
    """The house (library or tool) of a file, and its room there."""
    parts = path.split("/")
    if parts[0] == "Platform":
        return LIBRARY, "Platform"
    if parts[0] == LIBRARY:
        return LIBRARY, parts[1] if len(parts) > 2 else PUBLIC_HEADERS.get(parts[1], "records")
    if path.startswith(TOOL + "/"):
        return TOOL, parts[2] if len(parts) > 3 else "commands"
    return None, None


def is_public(path):
    return path == "Platform/PlatformTypes.h" or path.count("/") == 1 and path.startswith(LIBRARY + "/")


def read_includes(root):
    """All includes of our own files, and complaints about those that lead nowhere."""
    includes, complaints = [], []
    files = [f for top in ("Platform", LIBRARY, TOOL) for f in (root / top).rglob("*") if f.suffix in (".h", ".cpp")]
    for file in sorted(files):
        name = file.relative_to(root).as_posix()
        house, room = room_of(name)
        if not any(room == known for layer in LAYERS[house] for known, _ in layer):
            complaints.append(f"{name}:1: no room is called {room}")
            continue
        for number, text in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(text)
            if not match:
                continue
            wanted = match[2]
            found = next((c for c in (root / wanted, root / TOOL / wanted, file.parent / wanted) if c.is_file()), None)
            if found:
                target = found.resolve().relative_to(root.resolve()).as_posix()
            elif wanted in GENERATED_HEADERS:
                target = wanted
            else:
                if match[1] == '"':
                    complaints.append(f"{name}:{number}: there is no {wanted}")
                continue
            includes.append(Include(name, number, target, house, room, *room_of(target)))
    return includes, complaints


def level(house, room):
    for number, layer in enumerate(LAYERS[house]):
        if any(room == known for known, _ in layer):
            return number
    raise ValueError(f"no room is called {room}")


def complaint(include):
    """What is wrong with an include, or None."""
    start = f"{include.file}:{include.line}: {include.room} includes {include.target}: "
    if include.house == LIBRARY and include.target_house != LIBRARY:
        return start + f"{include.target_room or 'that'} is no room of the library"
    if include.house == TOOL and include.target_house == LIBRARY:
        behind = f"{include.target_room} of the library lies behind its interface"
        return None if is_public(include.target) else start + behind
    if include.target_house is None:
        return start + "it lies in no room"
    if include.room == include.target_room:
        return None
    own, other = level(include.house, include.room), level(include.target_house, include.target_room)
    if other > own:
        return start + f"{include.target_room} lies above {include.room}"
    if other == own:
        return start + f"{include.target_room} lies beside {include.room}"
    return None


def check_order(root):
    includes, complaints = read_includes(root)
    complaints += [text for text in map(complaint, includes) if text]
    return includes, complaints


def arrows(includes):
    """Include lines between different rooms, counted: {house: {(from, to): count}}."""
    counts = {house: collections.Counter() for house in LAYERS}
    for i in includes:
        target = "interface" if i.house == TOOL and i.target_house == LIBRARY else i.target_room
        if i.room != target and target:
            counts[i.house][i.room, target] += 1
    return counts


# --- the drawing -------------------------------------------------------------------------------------------------

BOX_WIDTH, BOX_HEIGHT, GAP, SPREAD, MARGIN, HEAD = 226, 50, 22, 24, 24, 64

STYLE = """
  svg { --paper: #ffffff; --ink: #1d2733; --soft: #5b6774; --box: #f2f5f8; --edge: #9aa7b4; --layer: #e3e9ef;
        --light: 38%; font-family: system-ui, "DejaVu Sans", sans-serif; }
  @media (prefers-color-scheme: dark) {
    svg { --paper: #12171d; --ink: #e8edf2; --soft: #9fadba; --box: #1f2831; --edge: #56646f; --layer: #2b3640;
          --light: 66%; } }
  .paper { fill: var(--paper) } .layer { fill: var(--layer) } .box { fill: var(--box); stroke: var(--edge) }
  .house { fill: var(--ink); font-size: 17px; font-weight: 600 } .note { fill: var(--soft); font-size: 12px }
  .room { fill: var(--ink); font-size: 15px; font-weight: 600 } .what { fill: var(--soft); font-size: 11.5px }
  .arrow { fill: none; stroke: hsl(var(--hue) 55% var(--light)) } .head { fill: hsl(var(--hue) 55% var(--light)) }
  .count { fill: hsl(var(--hue) 55% var(--light)); font-size: 12px; font-weight: 600; text-anchor: middle;
           stroke: var(--paper); stroke-width: 4px; paint-order: stroke }
"""


def ports(rows, counts):
    """Where each arrow leaves and meets the right edge of a box, so that arrows at one box do not cross."""
    places = {}
    for room, row in rows.items():
        ends = [(row - rows[a], (a, b)) for a, b in counts if b == room]
        arriving = [edge for _, edge in sorted(ends)]
        ends = [(rows[b] - row, (a, b)) for a, b in counts if a == room]
        leaving = [edge for _, edge in sorted(ends, reverse=True)]
        together = arriving + leaving
        step = (BOX_HEIGHT - 12) / max(len(together) - 1, 1)
        top = BOX_HEIGHT / 2 - step * (len(together) - 1) / 2
        for place, edge in enumerate(together):
            places[room, edge] = row * (BOX_HEIGHT + GAP) + top + place * step
    return places


def draw_house(title, note, layers, counts):
    """The boxes of one house from the top down, with its arrows as arcs on their right: width, height, SVG lines."""
    svg = [f'<text class="house" x="0" y="16">{title}</text>', f'<text class="note" x="0" y="36">{note}</text>']
    rows, words = {}, {}
    for layer in reversed(layers):
        first = len(rows)
        for room, what in layer:
            rows[room], words[room] = len(rows), what
        if len(layer) > 1:
            y, height = HEAD + first * (BOX_HEIGHT + GAP) - 8, len(layer) * (BOX_HEIGHT + GAP) - GAP + 16
            svg.append(f'<rect class="layer" x="-8" y="{y}" width="{BOX_WIDTH + 16}" height="{height}" rx="10"/>')
    for room, row in rows.items():
        y = HEAD + row * (BOX_HEIGHT + GAP)
        svg += [f'<rect class="box" x="0" y="{y}" width="{BOX_WIDTH}" height="{BOX_HEIGHT}" rx="6"/>',
                f'<text class="room" x="12" y="{y + 21}">{room}</text>',
                f'<text class="what" x="12" y="{y + 39}">{words[room]}</text>']
    places = ports(rows, counts)
    labels, widest = [], 0
    for (a, b), count in sorted(counts.items(), key=lambda item: (rows[item[0][0]] - rows[item[0][1]], item[0])):
        start, end = HEAD + places[a, (a, b)], HEAD + places[b, (a, b)]
        reach = 20 + SPREAD * 4 / 3 * (rows[b] - rows[a])
        width, hue = 1 + 0.5 * math.log2(count), 205 + 47 * rows[a]
        x, tip = BOX_WIDTH, BOX_WIDTH + 7
        svg.append(f'<g style="--hue: {hue % 360}"><path class="arrow" stroke-width="{width:.1f}" '
                   f'd="M{x} {start:.1f} C{x + reach:.1f} {start:.1f} {x + reach:.1f} {end:.1f} {tip} {end:.1f}"/>'
                   f'<path class="head" d="M{x} {end:.1f} l9 -4 v8 z"/></g>')
        labels.append(f'<text class="count" style="--hue: {hue % 360}" x="{x + 0.75 * reach + 1:.1f}" '
                      f'y="{(start + end) / 2 + 4:.1f}">{count}</text>')
        widest = max(widest, 0.75 * reach)
    return BOX_WIDTH + widest + 24, HEAD + len(rows) * (BOX_HEIGHT + GAP), svg + labels


def drawing(includes):
    counts = arrows(includes)
    x, height, body = MARGIN, 0, []
    for house, title in ((LIBRARY, "The library"), (TOOL, "The tool")):
        note = f"{house}/, {sum(counts[house].values())} includes from room to room"
        width, house_height, svg = draw_house(title, note, LAYERS[house], counts[house])
        body += [f'<g transform="translate({x:.0f} {MARGIN})">', *svg, "</g>"]
        x, height = x + width + MARGIN, max(height, house_height)
    height += MARGIN
    notes = "An arrow points from a room to one that it includes; its number counts the lines that do so.", \
            "Rooms on a common ground lie side by side: none of them includes another."
    for number, text in enumerate(notes):
        body.append(f'<text class="note" x="{MARGIN}" y="{height + 18 * number + 6}">{text}</text>')
    size = f"{x:.0f} {height + 42}"
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {size}" width="{size.split()[0]}" '
        f'height="{size.split()[1]}" role="img" aria-label="The rooms of library and tool">',
        "<!-- Made from the includes by scripts/check-rooms.py -->", f"<style>{STYLE}</style>",
        f'<rect class="paper" width="{size.split()[0]}" height="{size.split()[1]}"/>', *body, "</svg>", ""])


# --- the self-test -----------------------------------------------------------------------------------------------

PLANTED = [  # file, the include that is added to it, what must be said about it
    ("MemoryManager/base/ErrorLog.cpp", "MemoryManager/ImgObjUty.h", "transfer lies above base"),
    ("MemoryManager/ExternalImage.h", "MemoryManager/CImageObj.h", "image lies above records"),
    ("MemoryManager/CWorkTableList.h", "MemoryManager/CImageCtrl.h", "stores lies beside tables"),
    ("Platform/posix/Files.cpp", "MemoryManager/ResultCodes.h", "records lies above Platform"),
    ("MemoryManager/reports/Dumps.cpp", "tools/imgband/values/Failure.h", "values is no room of the library"),
    ("MemoryManager/image/Planner.cpp", "MemoryManager/image/Nowhere.h", "there is no"),
    ("tools/imgband/values/Failure.cpp", "system/Files.h", "system lies above values"),
    ("tools/imgband/pictures/Formats.h", "pixels/Workers.h", "pixels lies beside pictures"),
    ("tools/imgband/library/Library.cpp", "MemoryManager/base/PlatformHelpers.h", "behind its interface"),
    ("tools/imgband/library/Library.cpp", "Platform/Platform.h", "behind its interface"),
    ("tools/imgband/page/Page.cpp", "values/Failure.h", "values lies above page"),
    ("MemoryManager/cellar/New.cpp", "MemoryManager/ResultCodes.h", "no room is called cellar"),
]


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder)
        for top in ("Platform", LIBRARY, TOOL):
            shutil.copytree(ROOT / top, copy / top)
        already = set(check_order(copy)[1])
        for name, include, expected in PLANTED:
            file = copy / name
            file.parent.mkdir(exist_ok=True)
            before = file.read_text(encoding="utf-8") if file.exists() else None
            file.write_text(f'#include "{include}"\n' + (before or ""), encoding="utf-8")
            new = [text for text in check_order(copy)[1] if text.startswith(name + ":1:") and text not in already]
            if len(new) != 1 or expected not in new[0]:
                sys.exit(f'{name} includes {include}: expected "{expected}", got {new}')
            file.unlink() if before is None else file.write_text(before, encoding="utf-8")
    print(f"{len(PLANTED)} planted includes were found")


def main(arguments):
    option = arguments[0] if arguments else ""
    if len(arguments) > 1 or option not in ("", "--drawing", "--write", "--arrows", "--self-test"):
        sys.exit(__doc__)
    if option == "--self-test":
        return self_test()
    includes, complaints = check_order(ROOT)
    if option == "--arrows":
        for house, counts in arrows(includes).items():
            for (a, b), count in sorted(counts.items()):
                print(f"{count:4} {house}: {a} -> {b}")
        return None
    if complaints:
        sys.exit("\n".join(complaints))
    if option == "--write":
        (ROOT / DRAWING).write_text(drawing(includes), encoding="utf-8")
    elif option == "--drawing" and (ROOT / DRAWING).read_text(encoding="utf-8") != drawing(includes):
        sys.exit(f"{DRAWING} does not show the includes as they are: scripts/check-rooms.py --write")
    counts = arrows(includes)
    print(", ".join(f"{house}: {sum(c.values())} includes from room to room" for house, c in counts.items()),
          "none upward", sep=", ")
    return None


if __name__ == "__main__":
    main(sys.argv[1:])
