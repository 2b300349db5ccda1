#!/usr/bin/python3
"""End-to-end tests of the built tnw tool: the bundled examples and inputs made here, read back
with pyshp, exit codes and messages for bad input, every shapefile set checked by
check-shapeset, and the structure of SVG previews.

    test_cli.py --tnw PATH --examples DIR --checker PATH [unittest arguments]
"""

import argparse
import csv
import os
import pty
import re
import select
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ET

import shapefile

TNW = EXAMPLES = CHECKER = None
SVG = "{http://www.w3.org/2000/svg}"


def run(*args):
    """Runs tnw; gives (exit code, stdout, stderr)."""
    done = subprocess.run([TNW, *args], capture_output=True, text=True, timeout=120)
    return done.returncode, done.stdout, done.stderr


def read_set(base):
    """(shape type, shapes as lists of parts of (x, y), [(field, type)], records)."""
    with shapefile.Reader(base, encoding="cp1252") as reader:
        shapes = []
        for shape in reader.shapes() if reader.shp else []:
            starts = list(shape.parts) + [len(shape.points)] if shape.parts else [0, len(shape.points)]
            shapes.append([[tuple(p) for p in shape.points[a:b]] for a, b in zip(starts, starts[1:])])
        fields = [(f[0], f[1]) for f in reader.fields[1:]]
        return reader.shapeType, shapes, fields, [list(r) for r in reader.records()]


def read_dbf(path):
    """(field names and types, records as lists of stripped texts), read from the format."""
    with open(path, "rb") as f:
        data = f.read()
    count, header_len, record_len = struct.unpack_from("<IHH", data, 4)
    fields = []
    for offset in range(32, header_len - 1, 32):
        name = data[offset : offset + 11].split(b"\0")[0].decode("cp1252")
        fields.append((name, chr(data[offset + 11]), data[offset + 16], data[offset + 17]))
    records = []
    for k in range(count):
        row, place = [], header_len + k * record_len + 1
        for _, _, width, _ in fields:
            row.append(data[place : place + width].decode("utf-8", "replace").strip())
            place += width
        records.append(row)
    return fields, records


def read_shp(path):
    """(shape type, records as lists of parts of (x, y)), through pyshp."""
    kind, shapes, _, _ = read_set(os.path.splitext(path)[0])
    return kind, shapes


def example_rows(name):
    """The example's lines with its header."""
    with open(os.path.join(EXAMPLES, name), newline="") as f:
        return list(csv.reader(f))


def numbers(wkt):
    return [float(v) for v in re.findall(r"-?\d+(?:\.\d+)?", wkt)]


def rows(name):
    with open(os.path.join(EXAMPLES, name), newline="") as f:
        return list(csv.reader(f))[1:]


class ToolCase(unittest.TestCase):
    def setUp(self):
        self._tmp = tempfile.TemporaryDirectory(prefix="tnw-cli-")
        self.addCleanup(self._tmp.cleanup)
        self.dir = self._tmp.name

    def path(self, name):
        return os.path.join(self._tmp.name, name)

    def write(self, name, text, newline=""):
        with open(self.path(name), "w", newline=newline, encoding="cp1252") as f:
            f.write(text)
        return self.path(name)

    def example(self, name):
        return os.path.join(EXAMPLES, name)

    def check_set(self, base, *options):
        done = subprocess.run([CHECKER, "--quiet", *options, base], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def convert_ok(self, *args):
        code, out, err = run("convert", *args)
        self.assertEqual((code, out), (0, ""), err)
        return err

    def convert(self, source, target, *options, checks=()):
        """Converts with success and silence on stdout; a written set must pass the checker."""
        code, out, err = run("convert", source, self.path(target), *options)
        self.assertEqual((code, out), (0, ""), err)
        base = os.path.splitext(self.path(target))[0]
        if target.endswith((".shp", ".dbf")):
            done = subprocess.run([CHECKER, "--quiet", *checks, base], capture_output=True, text=True)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return base, err

    def fails(self, expected_code, *args):
        """Runs a command that must fail with one plain sentence on stderr; gives that line."""
        code, out, err = run(*args)
        self.assertEqual(code, expected_code, err)
        lines = err.strip().splitlines()
        self.assertEqual(len(lines), 1, err)
        self.assertRegex(lines[0], r"^tnw: .*\.$")
        return lines[0]


class ConvertExamples(ToolCase):
    def test_yield_log_becomes_points_with_its_columns_and_places(self):
        base, err = self.convert(self.example("yield.csv"), "out/yield.shp")
        source = rows("yield.csv")
        self.assertIn("read %d records" % len(source), err)
        kind, shapes, fields, records = read_set(base)
        self.assertEqual((kind, len(shapes), len(records)), (1, len(source), len(source)))
        # The units header makes numbers of the measured columns and text of the crop; the
        # position becomes the geometry, not columns.
        self.assertEqual(fields, [("Yield", "N"), ("Moisture", "N"), ("Speed", "N"),
                                  ("Elevation", "N"), ("Crop", "C")])
        for shape, record, row in zip(shapes, records, source):
            self.assertEqual(shape, [[(float(row[0]), float(row[1]))]])
            self.assertAlmostEqual(record[0], float(row[2]), places=9)
            self.assertEqual(record[4], row[6])

    def test_boundaries_become_polygons_and_their_text_is_found(self):
        source = rows("boundaries.csv")
        for options, columns in ((["--geometry", "region"], ["Field", "Area", "Crop"]),):
            base, _ = self.convert(self.example("boundaries.csv"), "f.shp", "--wkt-col", "3",
                                   *options, checks=["--winding"])
            kind, shapes, fields, records = read_set(base)
            self.assertEqual(kind, 5)
            # Home 40 has a pond cut out of it; Creek is two polygons.
            self.assertEqual([len(s) for s in shapes], [2, 1, 2])
            for shape, row in zip(shapes, source):
                self.assertEqual(sorted(v for ring in shape for p in ring for v in p),
                                 sorted(numbers(row[2])))
            self.assertEqual([f[0] for f in fields], columns)
            self.assertEqual([r[0] for r in records], [r[0] for r in source])

    def test_a_value_cut_to_its_field_is_named_with_exit_1(self):
        # The well-known text is longer than a dBase field: kept cut, named, and exit 1.
        code, _, err = run("convert", self.example("boundaries.csv"), self.path("f.shp"),
                           "--wkt-col", "3", "--include-invisible")
        self.assertEqual(code, 1)
        self.assertIn("record 1 of " + self.example("boundaries.csv") +
                      ": the value of Boundary does not fit its field of 254 bytes", err)
        kind, _, fields, records = read_set(self.path("f"))
        self.assertEqual(kind, 5)
        self.assertEqual([f[0] for f in fields], ["Field", "Area", "Boundary", "Crop"])
        self.assertTrue(records[0][2].startswith("POLYGON("))

    def test_table_and_text_copies_read_back(self):
        source = rows("yield.csv")
        base, _ = self.convert(self.example("yield.csv"), "table.dbf")
        self.assertFalse(os.path.exists(base + ".shp"))
        self.convert(base + ".dbf", "table.csv")
        with open(self.path("table.csv"), newline="") as f:
            lines = list(csv.reader(f))
        self.assertEqual(lines[0], ["Yield", "Moisture", "Speed", "Elevation", "Crop"])
        self.assertEqual([[float(v) for v in line[:4]] + line[4:] for line in lines[1:]],
                         [[float(v) for v in row[2:6]] + row[6:] for row in source])

        self.convert(self.example("yield.csv"), "copy.txt", "--delimiter", ";")
        with open(self.path("copy.txt"), "rb") as f:
            lines = f.read().split(b"\r\n")
        self.assertEqual(lines[0], b"Longitude;Latitude;Yield;Moisture;Speed;Elevation;Crop")
        cells = lines[1].decode().split(";")
        self.assertEqual([float(c) for c in cells[:6]] + cells[6:],
                         [float(v) for v in source[0][:6]] + ['"Corn"'])
        # The copy's delimiter is found again when it is read.
        again, _ = self.convert(self.path("copy.txt"), "again.shp")
        direct, _ = self.convert(self.example("yield.csv"), "direct.shp")
        self.assertEqual(read_set(again)[:2], read_set(direct)[:2])

    def test_polygons_as_text_carry_their_geometry_as_well_known_text(self):
        self.convert(self.example("boundaries.csv"), "b.csv", "--wkt-col", "3")
        with open(self.path("b.csv"), newline="") as f:
            lines = list(csv.reader(f))
        self.assertEqual(lines[0], ["Field", "Area", "Crop", "Geometry"])
        for line, row in zip(lines[1:], rows("boundaries.csv")):
            self.assertEqual(line[3].split("(")[0].strip(), row[2].split("(")[0].strip())
            self.assertEqual(numbers(line[3]), numbers(row[2]))


class ConvertOptions(ToolCase):
    def test_centroids_offsets_and_projection_move_the_geometry(self):
        base, _ = self.convert(self.example("boundaries.csv"), "c.shp", "--wkt-col", "3",
                               "--centroids")
        kind, shapes, _, _ = read_set(base)
        self.assertEqual(kind, 1)
        for shape, row in zip(shapes, rows("boundaries.csv")):
            (x, y), = shape[0]
            xs, ys = numbers(row[2])[0::2], numbers(row[2])[1::2]
            self.assertTrue(min(xs) < x < max(xs) and min(ys) < y < max(ys))

        base, _ = self.convert(self.example("yield.csv"), "o.shp", "--x-offset", "0.5",
                               "--y-offset", "-0.25")
        (x, y), = read_set(base)[1][0][0]
        first = rows("yield.csv")[0]
        self.assertAlmostEqual(x, float(first[0]) + 0.5, places=9)
        self.assertAlmostEqual(y, float(first[1]) - 0.25, places=9)

        # The .prj says the projection, which the checker's WGS 84 text does not.
        base, _ = self.convert(self.example("boundaries.csv"), "p.shp", "--wkt-col", "3",
                               "--projection", "utm:15n", checks=["--no-sidecars"])
        with open(base + ".prj") as f:
            self.assertTrue(f.read().startswith('PROJCS["WGS_1984_UTM_Zone_15N",'))
        # Central Iowa, near the middle of zone 15 (-96 to -90 degrees).
        for x, y in (p for shape in read_set(base)[1] for ring in shape for p in ring):
            self.assertTrue(400_000 < x < 600_000 and 4_600_000 < y < 4_700_000, (x, y))
        self.assertIn("projected", run("info", base + ".shp")[1])

    def test_text_inputs_of_other_shapes(self):
        cases = [  # file, text, options, fields, first column, points
            ("raw.txt", '"a;b";-93.5;42.25\r\nplain;-93.75;42.5\r\n',
             ["--header-rows", "0", "--lon-col", "2", "--lat-col", "3", "--delimiter", "semicolon"],
             ["Field1", "Field2", "Field3"], ["a;b", "plain"],
             [(-93.5, 42.25), (-93.75, 42.5)]),
            ("t.tsv", "X\tY\tRate (gal/ac)\n-90.5\t40.5\t12.5\n-90.25\t40.75\t7\n", [],
             ["Rate"], [12.5, 7.0], [(-90.5, 40.5), (-90.25, 40.75)]),
            ("log.dat", "Longitude,Latitude,Name\n1.5,2.5,x\n", ["--from", "CSV", "--to", "shp"],
             ["Name"], ["x"], [(1.5, 2.5)]),
        ]
        for name, text, options, fields, first, points in cases:
            with self.subTest(name):
                base, _ = self.convert(self.write(name, text), name[:-4] + ".shp", *options)
                _, shapes, got_fields, records = read_set(base)
                self.assertEqual([f[0] for f in got_fields], fields)
                self.assertEqual([r[0] for r in records], first)
                self.assertEqual([s[0][0] for s in shapes], points)

    def test_text_output_options(self):
        self.convert(self.example("yield.csv"), "n.csv", "--no-header", "--no-lonlat",
                     "--geometry-text")
        with open(self.path("n.csv"), newline="") as f:
            first = next(csv.reader(f))
        row = rows("yield.csv")[0]
        self.assertEqual(float(first[0]), float(row[2]))
        self.assertEqual(numbers(first[-1]), [float(row[0]), float(row[1])])


class Failures(ToolCase):
    def test_refused_commands_tell_why_in_one_sentence(self):
        y = self.example("yield.csv")
        x = self.path("x.shp")
        cases = [  # exit code, arguments, a text the sentence holds
            (3, ["convert", self.path("nope.csv"), x], "nope.csv"),
            (3, ["info", self.path("nope.dbf")], ""),
            (3, ["preview", self.path("nope.shp"), self.path("x.svg")], ""),
            (4, ["convert", y, self.path("x.xlsx")], ".xlsx"),
            (4, ["info", self.write("notes.doc", "x")], ""),
            (4, ["preview", y, self.path("map.png")], ""),
            (5, ["convert", y, "/proc/tnw-test/x.shp"], "/proc/tnw-test"),
            (2, ["convert", self.write("plain.csv", "Name,Rate (gal/ac)\na,1\n"), x], "no geometry"),
        ] + [(2, ["convert", y, x, *bad], "") for bad in (
            ["--bogus"], ["--geometry", "blob"], ["--lon-col", "0"], ["--lon-col", "1"],
            ["--wkt-col", "99"], ["--delimiter", "ab"], ["--no-header"],
            ["--projection", "mars:1"], ["--from", "xls"])] + [
            (2, ["convert", y, self.path("x.csv"), "--centroids"], ""),
            (2, ["convert", y], ""), (2, [], "")]
        for code, args, text in cases:
            with self.subTest(args=args):
                self.assertIn(text, self.fails(code, *args))
        self.assertFalse(os.path.exists(x))
        # As a table, or with the geometry left out on purpose, the plain file converts.
        self.convert(self.path("plain.csv"), "y.shp", "--geometry", "none")
        self.assertFalse(os.path.exists(self.path("y.shp")))

    def test_output_that_would_replace_the_input(self):
        base, _ = self.convert(self.example("yield.csv"), "t.dbf")
        before = os.path.getsize(base + ".dbf")
        self.fails(2, "convert", base + ".dbf", base + ".shp")
        self.assertEqual(os.path.getsize(base + ".dbf"), before)

    def test_bad_records_are_told_counted_and_skipped(self):
        cases = [  # name, text, options, messages, points left
            ("bad.csv", "Longitude,Latitude,Yield (bu/ac)\n-93.5,42.1,150\n-93.6\n-93.7,42.2,160\n",
             [], ["data row 2 of", "1 data row of"], 2),
            ("w.csv", 'Name,Shape\na,"POLYGON((0 0,1 0,1 1,0 0))"\nb,"POLYGON((0 0,1 0"\n'
                      'c,"POLYGON((2 2,3 2,3 3,2 2))"\n',
             ["--wkt-col", "2"], ["record 2 of", "1 record could not be written"], 2),
        ]
        for name, text, options, messages, left in cases:
            with self.subTest(name):
                base = self.path(name[:-4])
                code, _, err = run("convert", self.write(name, text), base + ".shp", *options)
                self.assertEqual(code, 1, err)
                for message in messages:
                    self.assertIn(message, err)
                subprocess.run([CHECKER, "--quiet", base], check=True, capture_output=True)
                self.assertEqual(len(read_set(base)[1]), left)

    def test_damaged_shapefiles_are_refused_in_one_sentence(self):
        base, _ = self.convert(self.example("boundaries.csv"), "f.shp", "--wkt-col", "3")
        with open(base + ".shp", "rb") as f:
            data = bytearray(f.read())
        huge = bytearray(data)
        struct.pack_into("<i", huge, 100 + 8 + 36, 0x7FFFFFFF)  # parts of record 1
        for name, damaged, text in (("cut", data[:-20], "record 3"), ("huge", huge, ""),
                                    ("junk", b"not a shapefile at all" * 10, "")):
            with open(self.path(name + ".shp"), "wb") as f:
                f.write(damaged)
            self.assertIn(text, self.fails(3, "preview", self.path(name + ".shp"),
                                           self.path(name + ".svg")))

    def test_debug_mode_shows_the_library_report_in_full(self):
        src = self.write("bad.csv", "Longitude,Latitude\n1\n")
        code, _, err = run("--debug", "convert", src, self.path("d.shp"))
        self.assertEqual(code, 1)
        self.assertIn("[box] Debug Mode Error Handler", err)
        self.assertIn("Subscript out of range", err)
        code, _, err = run("convert", src, self.path("d.shp"))
        self.assertNotIn("[box]", err)

    def test_help_of_each_command_tells_the_exit_codes(self):
        for command in ([], ["convert"], ["info"], ["preview"]):
            code, out, _ = run(*command, "--help")
            self.assertEqual(code, 0)
            self.assertIn("3  an input file is missing", out)


class GPLLogs(ToolCase):
    def test_log_with_a_companion_to_a_checked_set_and_records_to_a_log_and_back(self):
        from osgeo import ogr
        # The companion table, written by GDAL.
        companion = self.write("companion.csv", "Variety,Rate\nP1197,32.5\nDKC62,34\n")
        subprocess.run(["ogr2ogr", "-f", "ESRI Shapefile", self.path("log.dbf"), companion],
                       check=True)
        os.rename(self.path("log.dbf"), self.path("log.gpd"))
        lines = ["%d, 42.5,-93.2%d, 300,1,2,0,x,%d,0, 90,0,0,0" % (t, t, r)
                 for t, r in ((1, 1), (2, 2), (3, 2))]
        src = self.write("log.gpl", "\r\n".join(["GPL11", "Time", "STAR", lines[0], "STOP",
                                                 "STAR", *lines[1:], "STOP", ""]), newline="")
        err = self.convert_ok(src, self.path("log.shp"))
        self.assertIn("read 3 records, 2 start rows and 2 stop rows from", err)
        self.check_set(self.path("log"))
        source = ogr.Open(self.path("log.shp"))
        got = [(f.GetField("Variety"), f.GetGeometryRef().GetX()) for f in source.GetLayer()]
        self.assertEqual(got, [("P1197", -93.21), ("DKC62", -93.22), ("DKC62", -93.23)])
        # Records written to a log by the tool read back value for value: places, elevation.
        self.convert_ok(self.example("yield.csv"), self.path("y.gpl"))
        self.convert_ok(self.path("y.gpl"), self.path("y.shp"), "--include-invisible")
        self.convert_ok(self.example("yield.csv"), self.path("direct.shp"))
        self.assertEqual(read_shp(self.path("y.shp")), read_shp(self.path("direct.shp")))
        self.assertEqual([float(r[1]) for r in read_dbf(self.path("y.dbf"))[1]],
                         [float(r[5]) for r in example_rows("yield.csv")[1:]])


class Info(ToolCase):
    def test_sets_tables_and_text(self):
        fields, _ = self.convert(self.example("boundaries.csv"), "fields.shp", "--wkt-col", "3")
        points, _ = self.convert(self.example("yield.csv"), "y.shp")
        table, _ = self.convert(self.example("yield.csv"), "table.dbf")
        empty, _ = self.convert(self.write("e.csv", "Longitude,Latitude,Name\n"), "e.shp")
        wkt = [v for row in rows("boundaries.csv") for v in numbers(row[2])]
        count = len(rows("yield.csv"))
        lit = re.escape
        cases = [  # arguments, patterns the report holds
            ([fields + ".shp"], [lit("Region (shape type 5)"), "degrees", lit("Records:  3 "),
                                 lit("x %.7f to %.7f, y %.7f to %.7f" % (
                                     min(wkt[0::2]), max(wkt[0::2]), min(wkt[1::2]), max(wkt[1::2]))),
                                 r"\n  Field +C 7\n  Area +N 24\.15\n  Crop +C 8\n"]),
            ([points + ".shp"], [lit("Point (shape type 1)"), "Records:  %d " % count]),
            ([empty + ".shp"], [lit("none (no shapes)"), "Records:  0 "]),
            ([table + ".dbf"], ["Records:  %d\n" % count,
                                lit("Schema:   Yield~N~24~15~|Moisture~N~24~15~|Speed~N~24~15~|"
                                    "Elevation~N~24~15~|Crop~C~4~0~\n")]),
            ([self.example("boundaries.csv"), "--wkt-col", "3"],
             ["well-known text in field 3", "Records:  3\n", "Boundary +text +field 3, hidden"]),
        ]
        for args, patterns in cases:
            with self.subTest(args[0]):
                code, out, err = run("info", *args)
                self.assertEqual(code, 0, err)
                for pattern in patterns:
                    self.assertRegex(out, pattern)


def read_fgp(path):
    """(regions, lines, points) of an FGP main file, each point (fsn row, lon, lat), read from
    the format as docs/fgp-format.md gives it."""
    with open(path, "rb") as f:
        data = f.read()
    assert data[:8] == b"\x89FGP\r\n\x1a\n"
    regions, lines, points, vertices = struct.unpack_from("<iiiq", data, 12)
    records = [struct.unpack_from("<iiidddd", data, 32 + 52 * k) for k in range(vertices + points)]
    record = [(r[0], r[4], r[5]) for r in records]
    table = 32 + 52 * (vertices + points)
    parts = [struct.unpack_from("<qi", data, table + 12 * k) for k in range(regions + lines)]
    as_lists = [record[first : first + count] for first, count in parts]
    return as_lists[:regions], as_lists[regions:], record[vertices:]


class FGPSets(ToolCase):
    @staticmethod
    def table(path):
        with open(path, "rb") as dbf, shapefile.Reader(dbf=dbf, encoding="cp1252") as reader:
            return [f[0] for f in reader.fields[1:]], [list(r) for r in reader.records()]

    def test_sample_becomes_a_shapefile_set_of_each_kind(self):
        regions, lines, points = read_fgp(self.example("spray.fgp"))
        _, samples = self.table(self.example("spray.fsn"))
        closed = [r + r[:1] * (r[0][1:] != r[-1][1:]) for r in regions]
        cases = (
            ("regions", [], 5, [[(v[1], v[2]) for v in r] for r in closed]),
            ("lines", [], 3, [[(v[1], v[2]) for v in line] for line in lines]),
            ("points", [], 1, [[(p[1], p[2])] for p in points]),
            ("lines", ["--as-sites"], 1, [[(v[1], v[2])] for line in lines for v in line]),
        )
        for phase, options, shape_type, shapes in cases:
            with self.subTest(phase=phase, options=options):
                base, _ = self.convert(self.example("spray.fgp"), phase + "".join(options) + ".shp",
                                       "--phase", phase, *options)
                kind, got, fields, records = read_set(base)
                self.assertEqual((kind, len(got)), (shape_type, len(shapes)))
                # The writer may turn a ring around to wind it as the format asks.
                for parts, expected in zip(got, shapes):
                    self.assertIn(parts[0], (expected, expected[::-1]))
        # Each site carries its own sample row.
        rate = [f[0] for f in fields].index("Rate_Act")
        self.assertEqual([r[rate] for r in records],
                         [samples[v[0] - 1][0] for line in lines for v in line])

    def test_all_kinds_as_text_with_times_and_attributes(self):
        self.convert(self.example("spray.fgp"), "all.csv", "--as-sites")
        with open(self.path("all.csv"), newline="") as f:
            records = list(csv.DictReader(f))
        self.assertEqual(len(records), 2 + 240 + 5)
        self.assertTrue(records[0]["Geometry"].startswith("POLYGON (("))
        site, point = records[2], records[-1]
        self.assertEqual(float(site["UTCTime"]), 1718182800)  # 09:00 on the row's day
        self.assertEqual((site["Date"], site["Operator"]), ("2024-06-12", "R. Lind"))
        self.assertEqual(float(point["UTCTime"]), 1718380800 + 1200)  # a full time stays

    def test_info_tells_the_parts_and_the_side_tables(self):
        code, out, err = run("info", self.example("spray.fgp"))
        self.assertEqual(code, 0, err)
        for line in ("Regions:  2\n", "Lines:    8 (240 vertices)\n", "Points:   5\n",
                     "Records:  15\n", "spray.fsn, 263 rows: Rate~N~8~2~|"):
            self.assertIn(line, out)
        code, out, _ = run("info", self.example("spray.fgp"), "--as-sites", "--phase", "lines")
        self.assertIn("Records:  240\n", out)

    def test_points_become_a_set_with_both_side_tables_and_read_back(self):
        src = self.write("pts.csv", "Longitude,Latitude,Rate,NDVI,Crop\n"
                                    "-93.5,42.25,12.5,.61,corn\n-93.6,42.5,13,.7,soy\n")
        _, err = self.convert(src, "out.fgp")
        self.assertIn("0 regions, 0 lines, 2 points", err)
        self.assertEqual(read_fgp(self.path("out.fgp"))[2], [(1, -93.5, 42.25), (2, -93.6, 42.5)])
        self.assertEqual(self.table(self.path("out.fsn")), (["Rate", "NDVI"], [[12.5, .61], [13, .7]]))
        self.assertEqual(self.table(self.path("out.fdt")), (["Crop"], [["corn"], ["soy"]]))
        self.convert(self.path("out.fgp"), "back.csv")
        with open(self.path("back.csv"), newline="") as f:
            back = [(float(r["Rate_Act"]), float(r["NDVI"]), r["Crop"]) for r in csv.DictReader(f)]
        self.assertEqual(back, [(12.5, .61, "corn"), (13, .7, "soy")])

    def test_damaged_sets_and_bad_options(self):
        with open(self.example("spray.fgp"), "rb") as f:
            data = f.read()
        with open(self.path("cut.fgp"), "wb") as f:
            f.write(data[:-5])
        self.assertIn("cut.fgp", self.fails(3, "convert", self.path("cut.fgp"), self.path("x.shp")))
        self.fails(2, "convert", self.example("spray.fgp"), self.path("x.shp"), "--phase", "roads")


class Previews(ToolCase):
    def marks(self, source, *options):
        code, _, err = run("preview", source, self.path("p.svg"), *options)
        self.assertEqual(code, 0, err)
        root = ET.parse(self.path("p.svg")).getroot()  # well-formed, or this raises
        self.assertEqual(root.tag, SVG + "svg")
        legend = [e for e in root.iter() if e.get("id") == "legend"]
        return [e for e in root.iter() if e.get("class") == "mark"], legend[0] if legend else None

    def test_points_coloured_by_a_number_with_the_legend_range(self):
        base, _ = self.convert(self.example("yield.csv"), "yield.shp")
        marks, legend = self.marks(base + ".shp", "--color-by", "yield")
        values = [float(r[2]) for r in rows("yield.csv")]
        self.assertTrue(all(m.tag == SVG + "circle" for m in marks))
        self.assertEqual([float(m.get("data-value")) for m in marks], values)
        self.assertEqual(legend.get("data-column"), "Yield")
        self.assertAlmostEqual(float(legend.get("data-min")), min(values), places=6)
        self.assertAlmostEqual(float(legend.get("data-max")), max(values), places=6)
        # The lowest and highest values get the two ends of the scale.
        colours = {float(m.get("data-value")): m.get("fill") for m in marks}
        self.assertEqual((colours[min(values)], colours[max(values)]), ("#440154", "#fde725"))
        self.assertIn("Yield, Moisture, Speed, Elevation, Crop",
                      self.fails(2, "preview", base + ".shp", self.path("y.svg"), "--color-by", "Rate"))

    def test_polygons_coloured_by_text(self):
        base, _ = self.convert(self.example("boundaries.csv"), "f.shp", "--wkt-col", "3")
        marks, legend = self.marks(base + ".shp", "--color-by", "Crop")
        self.assertTrue(all(m.tag == SVG + "path" and "Z" in m.get("d") for m in marks))
        self.assertEqual([m.get("data-value") for m in marks], ["Corn", "Soybeans", "Corn"])
        fills = [m.get("fill") for m in marks]
        self.assertTrue(fills[0] == fills[2] != fills[1])
        self.assertEqual(legend.get("data-categories"), "2")

    def test_text_input_is_drawn_directly_and_odd_text_stays_well_formed(self):
        src = self.write("odd.csv", 'Longitude,Latitude,Note\n1,1,"<a & b>"\n2,2,"it\'s ""x"""\n')
        marks, _ = self.marks(src, "--color-by", "Note")
        self.assertEqual([m.get("data-value") for m in marks], ["<a & b>", "it's \"\"x\"\""])
        marks, legend = self.marks(self.example("yield.csv"))
        self.assertEqual((len(marks), legend), (len(rows("yield.csv")), None))


class Summaries(ToolCase):
    def test_logs_become_regions_of_one_point_set_in_the_columns_units(self):
        north = self.write("north.csv", "Longitude,Latitude,Yield (bu/ac),Width (m),Duration (min),"
                           "Engaged,Crop\n-93.5,42.0,150.5,9.15,0.5,0,Corn\n"
                           "-93.4,42.1,160.25,9.144,0.25,1,Corn\n")
        south = self.write("south.csv", "Lon,Lat,Elevation (m),Moisture (%)\n1,2,304.8,15.5\n")
        code, out, err = run("summary", north, south, "--lon-col", "1", "--lat-col", "2",
                             self.path("out/s.shp"))
        self.assertEqual(code, 0, err)
        self.assertIn("wrote a summary of 3 points in 2 regions", err)
        self.check_set(self.path("out/s"))
        fields, records = read_dbf(self.path("out/s.dbf"))
        self.assertEqual([f[0] for f in fields],
                         ["Elevation", "Width", "Distance", "Duration", "UTC", "Engaged", "Mappable",
                          "Yield", "Moisture"])
        # Metres and minutes become the feet, inches and seconds of the fixed columns, rounded to
        # their fields (9.15 m is 360.24 in); a log without a quantity gives 0, one without
        # Engaged counts as engaged.
        self.assertEqual(records, [["0", "360", "0", "30", "0", "N", "1", "150.5", "0"],
                                   ["0", "360", "0", "15", "0", "Y", "1", "160.25", "0"],
                                   ["1000", "0", "0", "0", "0", "Y", "1", "0", "15.5"]])
        self.assertEqual([shape[0] for shape in read_shp(self.path("out/s.shp"))[1]],
                         [[(-93.5, 42.0)], [(-93.4, 42.1)], [(1.0, 2.0)]])

    def test_refusals(self):
        log = self.example("yield.csv")
        self.assertIn("shapefile set", self.fails(4, "summary", log, self.path("s.dbf")))
        self.convert_ok(log, self.path("s.dbf"))
        self.assertIn("choose another name",
                      self.fails(2, "summary", self.path("s.dbf"), self.path("s.shp")))
        self.fails(2, "summary", self.path("s.shp"))
        no_places = self.write("t.csv", "A,B\n1,2\n")
        self.assertIn("no positions", self.fails(2, "summary", no_places, self.path("s.shp")))
        feet = self.write("f.csv", "Longitude,Latitude,Width (bu/ac)\n1,2,3\n")
        self.assertIn("can't turn into inches", self.fails(3, "summary", feet, self.path("s.shp")))


class Progress(ToolCase):
    def on_terminal(self, *args):
        """Runs tnw with stderr on a pseudo-terminal; gives what it drew there."""
        controller, terminal = pty.openpty()
        proc = subprocess.Popen([TNW, *args], stdout=subprocess.DEVNULL, stderr=terminal)
        os.close(terminal)
        seen = b""
        while select.select([controller], [], [], 60)[0]:
            try:
                chunk = os.read(controller, 65536)
            except OSError:
                break
            if not chunk:
                break
            seen += chunk
        self.assertEqual(proc.wait(timeout=60), 0)
        os.close(controller)
        return seen.decode(errors="replace")

    def test_bar_on_a_terminal_only_and_not_when_quiet(self):
        seen = self.on_terminal("convert", self.example("yield.csv"), self.path("a.shp"))
        for text in ("converting [", "100%", "read 3020 records"):
            self.assertIn(text, seen)
        self.assertEqual(self.on_terminal("--quiet", "convert", self.example("yield.csv"),
                                          self.path("b.shp")), "")
        _, err = self.convert(self.example("yield.csv"), "c.shp")
        self.assertEqual(len(err.strip().splitlines()), 1)

    def test_summary_bar_names_the_region(self):
        log = self.example("yield.csv")
        seen = self.on_terminal("summary", log, log, self.path("s.shp"))
        self.assertIn("writing Regions 2 / 2 [", seen)


def read_plan(path):
    """(header, data lines as (sequence, polygon, lon, lat, rate)) of a plan-grid file."""
    def degrees(text):  # "-96. 30", "7. .15": whole degrees, ".", minutes
        whole, minutes = text.split(".", 1)
        return (-1 if whole.startswith("-") else 1) * (abs(int(whole)) + float(minutes) / 60)
    with open(path, "rb") as f:
        lines = f.read().decode("cp1252").split("\r\n")
    assert lines[:3] + lines[12:13] + lines[-2:] == \
        ["[HEADER]", "FileType=PlanGridData", "Version=01.00.00", "[DATA]", "[END]", ""], lines
    header = dict(line.split("=", 1) for line in lines[3:12])
    data = [line.split("; ") for line in lines[13:-2]]
    assert all(d[1] == "P" for d in data)
    return header, [(int(d[0]), int(d[2]), degrees(d[3]), degrees(d[4]), float(d[5])) for d in data]


def gdal_features(path):
    """(OGR geometry, {field: value}) of every feature GDAL reads from a file."""
    from osgeo import ogr
    source = ogr.Open(path)
    return [(f.GetGeometryRef().Clone(), f.items()) for f in source.GetLayer(0)]


def points_of(geometry):
    """The kind and point lists of a geometry, parts and rings in order."""
    parts = [points_of(geometry.GetGeometryRef(k)) for k in range(geometry.GetGeometryCount())]
    return (geometry.GetGeometryName(), parts or geometry.GetPoints())


# Records of each shape kind, rings wound as the format wants them.
SHAPE_SETS = {
    "POINT": ["POINT (-93.5 42.25)", "POINT (0.125 -0.5)"],
    "MULTIPOINT": ["MULTIPOINT ((1 2),(3 4),(5 6))", "MULTIPOINT ((-7.5 8))"],
    "LINESTRING": ["LINESTRING (0 0,1 1,2 0)", "MULTILINESTRING ((0 0,0 5),(1 1,2 2,3 1))"],
    "POLYGON": ["POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 2))",
                "MULTIPOLYGON (((20 0,20 5,25 5,20 0)),"
                "((30 0,30 10,40 10,40 0,30 0),(32 2,34 2,34 4,32 2),(36 6,38 6,38 8,36 6)))",
                "POLYGON ((-0.75 51.5,-0.5 51.75,-0.25 51.5,-0.75 51.5))"],
}


def write_set(writer, base, kind, wkts):
    """A shapefile set of the records written by GDAL, pyshp or shapelib's tools."""
    import shapefile
    from osgeo import ogr
    geometries = [ogr.CreateGeometryFromWkt(w) for w in wkts]
    rings = [[p for p in re.findall(r"\(([^()]*)\)", w)] for w in wkts]
    rings = [[[tuple(map(float, xy.split())) for xy in r.split(",")] for r in rs] for rs in rings]
    if writer == "gdal":
        source = ogr.GetDriverByName("ESRI Shapefile").CreateDataSource(base + ".shp")
        layer = source.CreateLayer("x", geom_type=geometries[0].GetGeometryType())
        layer.CreateField(ogr.FieldDefn("NAME", ogr.OFTString))
        layer.CreateField(ogr.FieldDefn("RATE", ogr.OFTReal))
        for k, geometry in enumerate(geometries):
            feature = ogr.Feature(layer.GetLayerDefn())
            feature.SetField("NAME", "rec %d" % k)
            feature.SetField("RATE", 100.125 + k)
            feature.SetGeometry(geometry)
            layer.CreateFeature(feature)
        layer = source = None
    elif writer == "pyshp":
        with shapefile.Writer(base, shapeType={"POINT": 1, "LINESTRING": 3, "POLYGON": 5,
                                               "MULTIPOINT": 8}[kind]) as w:
            w.field("NAME", "C", 20)
            w.field("RATE", "N", 10, 3)
            for k, parts in enumerate(rings):
                {"POINT": lambda: w.point(*parts[0][0]), "LINESTRING": lambda: w.line(parts),
                 "MULTIPOINT": lambda: w.multipoint([p[0] for p in parts]),
                 "POLYGON": lambda: w.poly(parts)}[kind]()
                w.record("rec %d" % k, 100.125 + k)
    else:
        run_ = lambda *a: subprocess.run(a, check=True, capture_output=True)
        run_("shpcreate", base, {"POINT": "point", "LINESTRING": "arc", "POLYGON": "polygon",
                                 "MULTIPOINT": "multipoint"}[kind])
        run_("dbfcreate", base, "-s", "NAME", "20", "-n", "RATE", "10", "3")
        for k, parts in enumerate(rings):
            glue = [] if kind == "MULTIPOINT" else ["+"]
            run_("shpadd", base, *sum((glue * (n > 0) + ["%r" % v for xy in part for v in xy]
                                       for n, part in enumerate(parts)), []))
            run_("dbfadd", base + ".dbf", "rec %d" % k, "%r" % (100.125 + k))
    return base + ".shp"


class ShapeSetInput(ToolCase):
    def test_sets_of_other_writers_read_as_gdal_reads_them(self):
        from osgeo import ogr
        for writer in ("gdal", "pyshp", "shapelib"):
            for kind, wkts in SHAPE_SETS.items():
                where = writer + " " + kind
                source = write_set(writer, self.path(where), kind, wkts)
                expected = gdal_features(source)
                self.convert_ok(source, self.path(where + ".csv"), "--geometry-text", "--no-lonlat")
                with open(self.path(where + ".csv"), newline="", encoding="cp1252") as f:
                    rows = list(csv.DictReader(f))
                self.assertEqual(len(rows), len(wkts), where)
                for row, (geometry, values) in zip(rows, expected):
                    self.assertEqual((row["NAME"], float(row["RATE"])),
                                     (values["NAME"], values["RATE"]), where)
                    self.assertEqual(points_of(ogr.CreateGeometryFromWkt(row["Geometry"])),
                                     points_of(geometry), where)
                # A new set holds what the input held.
                self.convert_ok(source, self.path(where + " copy.shp"))
                self.assertEqual([(points_of(g), v) for g, v in
                                  gdal_features(self.path(where + " copy.shp"))],
                                 [(points_of(g), v) for g, v in expected], where)

    def test_a_set_with_a_dbf_of_another_length_or_none_is_refused(self):
        source = write_set("pyshp", self.path("lines"), "LINESTRING", SHAPE_SETS["LINESTRING"])
        write_set("pyshp", self.path("other"), "POINT", SHAPE_SETS["POINT"] * 2)
        os.replace(self.path("other.dbf"), self.path("lines.dbf"))
        self.assertIn("2 records", self.fails(3, "convert", source, self.path("x.csv")))
        os.remove(self.path("lines.dbf"))
        self.assertIn("no .dbf", self.fails(3, "preview", source, self.path("x.svg")))
        self.assertFalse(os.path.exists(self.path("x.csv")))


class Plans(ToolCase):
    def test_plans_read_back_as_their_inputs_hold_them(self):
        from osgeo import ogr
        zones = write_set("gdal", self.path("zones"), "POLYGON", SHAPE_SETS["POLYGON"])
        sources = [(self.example("boundaries.csv"), ["--rate", "Area", "--wkt-col", "3"],
                    [(float(r[1]), ogr.CreateGeometryFromWkt(r[2]))
                     for r in example_rows("boundaries.csv")[1:]]),
                   (zones, ["--rate", "rate"], [(v["RATE"], g) for g, v in gdal_features(zones)])]
        for source, options, records in sources:
            err = self.convert_ok(source, self.path("plan.fpd"), *options)
            self.assertIn("hole", err)
            header, data = read_plan(self.path("plan.fpd"))
            # One polygon per part, its outer ring less the closing point; holes left out.
            expected = [(number, x, y, round(rate, 2)) for number, (rate, ring) in enumerate(
                ((rate, p.GetGeometryRef(0).GetPoints()[:-1]) for rate, g in records
                 for p in ([g] if g.GetGeometryName() == "POLYGON"
                           else [g.GetGeometryRef(k) for k in range(g.GetGeometryCount())])), 1)
                for x, y in ring]
            self.assertEqual([d[0] for d in data], list(range(1, len(expected) + 1)))
            for (_, polygon, lon, lat, rate), (number, x, y, expected_rate) in zip(data, expected):
                self.assertEqual((polygon, rate), (number, expected_rate))
                self.assertAlmostEqual(lon, x, delta=1e-7)
                self.assertAlmostEqual(lat, y, delta=1e-7)
            rates = [round(rate, 2) for rate, _ in records]
            self.assertEqual((header["NumberOfPolygons"], header["NumberOfPoints"]),
                             (str(expected[-1][0]), str(len(data))))
            self.assertEqual((float(header["RateMin"]), float(header["RateMax"])),
                             (min(rates), max(rates)))
        # Just under the prime meridian the sign stays.
        self.assertEqual(data[-3][2:4], (-0.75, 51.5))

    def test_rate_column_failures_leave_no_plan(self):
        boundaries, plan = self.example("boundaries.csv"), self.path("plan.fpd")
        for options, expected in [(["--rate", "Nope"], "Field, Area, Boundary, Crop"),
                                  ([], "--rate COLUMN"), (["--rate", "Crop"], '"Corn"')]:
            line = self.fails(2, "convert", boundaries, plan, "--wkt-col", "3", *options)
            self.assertIn(expected, line)
            self.assertFalse(os.path.exists(plan), options)
        self.assertIn("--rate applies to plan-grid file",
                      self.fails(2, "convert", boundaries, self.path("x.csv"), "--rate", "Area"))


class Examples(unittest.TestCase):
    def test_generator_makes_the_bundled_files_again(self):
        script = os.path.join(EXAMPLES, "..", "scripts", "make_examples.py")
        with tempfile.TemporaryDirectory(prefix="tnw-examples-") as folder:
            subprocess.run([sys.executable, script, folder], check=True)
            for name in ("yield.csv", "boundaries.csv", "spray.fgp", "spray.fdt", "spray.fsn"):
                with open(os.path.join(folder, name), "rb") as made, \
                        open(os.path.join(EXAMPLES, name), "rb") as bundled:
                    self.assertEqual(made.read(), bundled.read(), name)


def main():
    global TNW, EXAMPLES, CHECKER
    parser = argparse.ArgumentParser()
    for option in ("--tnw", "--examples", "--checker"):
        parser.add_argument(option, required=True)
    args, rest = parser.parse_known_args()
    TNW, EXAMPLES, CHECKER = args.tnw, args.examples, args.checker
    unittest.main(argv=[sys.argv[0], *rest], verbosity=1)


if __name__ == "__main__":
    main()
