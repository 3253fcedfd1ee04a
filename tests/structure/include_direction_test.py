# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds the includes under src to the table of folders and their rooms: who may include whom, where the
libraries from outside may be used, and how many sources a folder may keep."""

import re
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2] / "src"

MAY_INCLUDE = {
    "util": [],
    "document": ["util"],
    "timeline": ["document", "util"],
    "formula": ["timeline", "document", "util"],
    "media": ["util"],
    "video": ["media", "timeline", "document", "util"],
    "logger": ["formula", "timeline", "document", "util"],
    "composer": ["video", "media", "formula", "timeline", "document", "util"],
    "report": ["formula", "timeline", "document", "util"],
    "app": ["report", "composer", "logger", "video", "media", "formula", "timeline", "document", "util"],
}
MAY_INCLUDE["demo"] = ["app"] + MAY_INCLUDE["app"]
MAY_INCLUDE["shell"] = ["demo"] + MAY_INCLUDE["demo"]
MAY_INCLUDE["cli"] = ["demo"] + MAY_INCLUDE["demo"]

# Row by row: a room may include the rooms of the rows before its own, and what its folder may. What lies in the
# folder itself is its main.cpp, which may include them all.
ROOMS = {
    "timeline": [["form"], ["records"], ["edits"], ["files"]],
    "app": [["settings"], ["vaults"], ["event"], ["start"]],
    "shell": [["kit"], ["keys"], ["filter"],
              ["panes/timeline", "panes/collection", "panes/code_window", "panes/inspector", "panes/side_bar"],
              ["event"], ["window"], ["program"]],
}
for folder, rows in ROOMS.items():
    before = []
    for row in rows:
        for room in row:
            MAY_INCLUDE[f"{folder}/{room}"] = before + MAY_INCLUDE[folder]
        before = before + [f"{folder}/{room}" for room in row]
    MAY_INCLUDE[f"{folder}/main.cpp"] = before + MAY_INCLUDE[folder]

MOST_SOURCES = 36

# library: (includes that mean it, folders that may use it, whether headers that other folders include may as well)
OUTSIDE = {
    "Qt": (re.compile(r"^(Q[A-Z]\w*|Qt\w*/.*|q[a-z]+\.h)$"), ["shell"], True),
    "XCB": (re.compile(r"^xcb/"), ["shell"], False),
    "FFmpeg": (re.compile(r"^lib(av\w+|sw\w+|postproc)/"), ["media"], False),
    "GStreamer": (re.compile(r"^(gst|glib|glib-object|gio)([/.]|$)"), ["media"], False),
    "cairo": (re.compile(r"^(cairo|pango)"), ["demo"], True),
    "expat": (re.compile(r"^expat"), ["util"], False),
    "simdjson": (re.compile(r"^simdjson"), ["util"], False),
    "libuuid": (re.compile(r"^uuid/"), ["util"], False),
    "xxHash": (re.compile(r"^xxh"), ["util"], False),
    "CLI11": (re.compile(r"^CLI/"), ["cli"], True),
}

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)


def includes_of(path):
    text = COMMENT.sub("", path.read_text(encoding="utf-8"))
    for match in INCLUDE.finditer(text):
        yield match.group(1) or match.group(2), match.group(1) is not None


def outside_faults(place, folder, include):
    for library, (pattern, folders, _) in OUTSIDE.items():
        if pattern.match(include) and folder not in folders:
            yield f"{place}: <{include}> is {library}, which only {', '.join(folders)} may use"


def kept_inside(include):
    """The library that the include brings and that must not leave its folder, or nothing."""
    return next((library for library, (pattern, _, in_headers) in OUTSIDE.items()
                 if not in_headers and pattern.match(include)), None)


def escapes(included):
    """included: file -> its includes. Headers that bring a library, themselves or by others of their folder,
    and are included from another folder."""
    brings = {}
    grows = True
    while grows:
        grows = False
        for place, includes in included.items():
            if place in brings or not place.endswith(".h"):
                continue
            libraries = [kept_inside(one) or brings.get(one) for one in includes]
            library = next(filter(None, libraries), None)
            if library:
                brings[place] = library
                grows = True
    for place, includes in included.items():
        for one in includes:
            if one in brings and one.split("/")[0] != place.split("/")[0]:
                yield f'{place}: "{one}" brings {brings[one]} out of {one.split("/")[0]}'


def find_cycle(edges):
    """One path of folders that comes back to where it started, or nothing."""
    done = set()

    def follow(folder, path):
        if folder in path:
            return path[path.index(folder):] + [folder]
        if folder in done:
            return None
        for other in sorted(edges.get(folder, ())):
            cycle = follow(other, path + [folder])
            if cycle:
                return cycle
        done.add(folder)
        return None

    return next(filter(None, (follow(folder, []) for folder in sorted(edges))), None)


def row_of(place, table):
    """The row of the table in which a file, named from the include root, lies; None where there is none. A folder
    that has rooms keeps no file of its own but those that have a row."""
    folder, _, rest = place.partition("/")
    if not rest or folder not in table:
        return None
    if not any(row.startswith(folder + "/") for row in table):
        return folder
    rows = [row for row in table if place == row or place.rpartition("/")[0] == row != folder]
    return rows[0] if rows else None


def faults_in(sources, table):
    faults = []
    edges = {}
    included = {}
    counts = {}
    for path in sorted(sources.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        place = path.relative_to(sources).as_posix()
        own = row_of(place, table)
        if own is None:
            faults.append(f"{place}: not in a folder of the table")
            continue
        if path.suffix == ".cpp":
            counts[own] = counts.get(own, 0) + 1
        folder = place.split("/")[0]
        included[place] = [include for include, _ in includes_of(path)]
        for include, quoted in includes_of(path):
            target = include.split("/")[0]
            if (sources / include).is_file() and target in table:
                row = row_of(include, table) or target
                edges.setdefault(own, set()).update({row} - {own})
                if row != own and row not in table[own] and (target == folder or target not in table[own]):
                    faults.append(f'{place}: "{include}" looks up: {own} may not include {row}')
            elif quoted and not include.endswith(".moc") and "/" in include and target in table:
                faults.append(f'{place}: "{include}" is not there')
            elif quoted and (path.parent / include).is_file() or ".." in include:
                faults.append(f'{place}: "{include}" is not written from the include root')
            else:
                faults.extend(outside_faults(place, folder, include))
    for row, count in counts.items():
        if count > MOST_SOURCES:
            faults.append(f"{row}: {count} sources, of which it may keep {MOST_SOURCES}")
    faults.extend(escapes(included))
    cycle = find_cycle(edges)
    if cycle:
        faults.append("cycle: " + " -> ".join(cycle))
    return faults


class include_direction(unittest.TestCase):
    def test_sources(self):
        self.assertTrue(any(SOURCES.rglob("*.h")), f"no headers under {SOURCES}")
        faults = faults_in(SOURCES, MAY_INCLUDE)
        self.assertEqual(faults, [], "\n" + "\n".join(faults))

    def test_table_has_no_cycle(self):
        self.assertIsNone(find_cycle({folder: set(others) for folder, others in MAY_INCLUDE.items()}))


class faults_are_found(unittest.TestCase):
    """Each case: files of a made-up tree, and what must be found in it."""

    CASES = [
        ({"timeline/records/a.cpp": '#include "util/u.h"\n#include <vector>'}, None),
        ({"media/a.cpp": "#include <libavcodec/avcodec.h>\n#include <gst/gst.h>"}, None),
        ({"shell/kit/a.h": "#include <QWidget>\n#include <QtGlobal>"}, None),
        ({"demo/a.cpp": "#include <cairo/cairo.h>"}, None),
        ({"shell/kit/a.cpp": '#include "a.moc"'}, None),
        ({"util/a.cpp": '/*\n#include "timeline/records/t.h"\n*/ // #include <QString>'}, None),
        ({"util/a.h": '#include "timeline/records/t.h"'}, "looks up"),
        ({"util/a.h": "#include <timeline/records/t.h>"}, "looks up"),
        ({"media/a.cpp": '  #  include "timeline/records/t.h"'}, "looks up"),
        ({"logger/a.cpp": '#include "video/v.h"', "video/v.h": ""}, "looks up"),
        ({"util/u.h": '#include "timeline/records/t.h"', "timeline/records/t.h": '#include "util/u.h"'}, "cycle: timeline/records -> util"),
        ({"app/event/a.cpp": "#include <QString>"}, "is Qt"),
        ({"cli/a.cpp": "#include <QtCore/QString>"}, "is Qt"),
        ({"video/a.cpp": "#include <libavutil/frame.h>"}, "is FFmpeg"),
        ({"shell/kit/a.cpp": "#include <gst/app/gstappsrc.h>"}, "is GStreamer"),
        ({"media/a.h": "#include <gst/gst.h>", "media/a.cpp": '#include "media/a.h"'}, None),
        ({"media/a.h": 'extern "C" {\n#include <libavutil/frame.h>\n}', "video/a.cpp": '#include "media/a.h"'},
         "brings FFmpeg out of media"),
        ({"media/a.h": "#include <gst/gst.h>", "media/b.h": '#include "media/a.h"',
          "app/event/a.h": '#include "media/b.h"'}, "brings GStreamer out of media"),
        ({"shell/kit/a.cpp": "#include <cairo.h>"}, "is cairo"),
        ({"util/a.cpp": '#include "u.h"'}, "not written from the include root"),
        ({"util/a.cpp": '#include "util/missing.h"'}, "is not there"),
        ({"helpers/a.cpp": ""}, "not in a folder"),
        ({"timeline/a.cpp": ""}, "not in a folder"),
        ({"timeline/sheets/a.cpp": ""}, "not in a folder"),
        ({"shell/main.cpp": '#include "shell/program/p.h"', "shell/program/p.h": ""}, None),
        ({"app/event/a.cpp": '#include "timeline/records/t.h"'}, None),
        ({"timeline/edits/a.cpp": '#include "timeline/records/t.h"'}, None),
        ({"timeline/form/a.h": '#include "timeline/records/t.h"'},
         "looks up: timeline/form may not include timeline/records"),
        ({"timeline/records/t.h": '#include "timeline/edits/e.h"',
          "timeline/edits/e.h": '#include "timeline/records/t.h"'}, "cycle: timeline/edits -> timeline/records"),
        ({"shell/event/a.cpp": '#include "shell/panes/timeline/p.h"', "shell/panes/timeline/p.h": ""}, None),
        ({"shell/panes/inspector/a.cpp": '#include "shell/panes/timeline/p.h"', "shell/panes/timeline/p.h": ""},
         "looks up: shell/panes/inspector may not include shell/panes/timeline"),
        ({"shell/window/a.cpp": '#include "shell/program/p.h"', "shell/program/p.h": ""}, "looks up"),
        ({f"app/event/a{number}.cpp": "" for number in range(MOST_SOURCES + 1)}, "app/event: 37 sources"),
    ]

    def test_cases(self):
        for files, expected in self.CASES:
            with self.subTest(files=files), tempfile.TemporaryDirectory() as temporary:
                for name, text in ({"util/u.h": "", "timeline/records/t.h": ""} | files).items():
                    path = Path(temporary) / name
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_text(text, encoding="utf-8")
                faults = faults_in(Path(temporary), MAY_INCLUDE)
                if expected is None:
                    self.assertEqual(faults, [])
                else:
                    self.assertTrue(any(expected in fault for fault in faults), faults)


if __name__ == "__main__":
    unittest.main()
