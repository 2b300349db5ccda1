#!/usr/bin/python3
"""End-to-end tests of the built tnw tool: the bundled examples and inputs made here, exit
codes and messages for bad input, every shapefile set checked by check-shapeset, and the
structure of SVG previews.

    test_cli.py --tnw PATH --examples DIR --checker PATH [unittest arguments]
"""

import argparse
import csv
import math
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

TNW = EXAMPLES = CHECKER = None
SVG = "{http://www.w3.org/2000/svg}"


def run(*args, stdin=None):
    """Runs tnw; gives (exit code, stdout, stderr)."""
    done = subprocess.run([TNW, *args], capture_output=True, text=True, timeout=120, stdin=stdin)
    return done.returncode, done.stdout, done.stderr


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
        start = header_len + k * record_len + 1
        row, place = [], start
        for _, _, width, _ in fields:
            row.append(data[place : place + width].decode("cp1252").strip())
            place += width
        records.append(row)
    return fields, records


def read_shp(path):
    """(shape type, list of records as lists of parts of (x, y))."""
    with open(path, "rb") as f:
        data = f.read()
    shape_type = struct.unpack_from("<i", data, 32)[0]
    records, offset = [], 100
    while offset < len(data):
        length = struct.unpack_from(">i", data, offset + 4)[0] * 2
        content = data[offset + 8 : offset + 8 + length]
        kind = struct.unpack_from("<i", content, 0)[0]
        if kind == 1:
            records.append([[struct.unpack_from("<2d", content, 4)]])
        elif kind in (3, 5):
            parts, points = struct.unpack_from("<2i", content, 36)
            starts = list(struct.unpack_from("<%di" % parts, content, 44)) + [points]
            xy = [struct.unpack_from("<2d", content, 44 + 4 * parts + 16 * i) for i in range(points)]
            records.append([xy[starts[p] : starts[p + 1]] for p in range(parts)])
        elif kind == 8:
            points = struct.unpack_from("<i", content, 36)[0]
            records.append([[struct.unpack_from("<2d", content, 40 + 16 * i)] for i in range(points)])
        offset += 8 + length
    return shape_type, records


def wkt_numbers(text):
    return [float(v) for v in re.findall(r"-?\d+(?:\.\d+)?", text)]


def example_rows(name):
    with open(os.path.join(EXAMPLES, name), newline="") as f:
        return list(csv.reader(f))


class ToolCase(unittest.TestCase):
    def setUp(self):
        self._tmp = tempfile.TemporaryDirectory(prefix="tnw-cli-")
        self.dir = self._tmp.name

    def tearDown(self):
        self._tmp.cleanup()

    def path(self, name):
        return os.path.join(self.dir, name)

    def write(self, name, text, newline="\n"):
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
        self.assertEqual(code, 0, err)
        self.assertEqual(out, "")
        return err

    def fails(self, expected_code, *args):
        """Runs a command that must fail with one plain sentence on stderr; gives that line."""
        code, out, err = run(*args)
        self.assertEqual(code, expected_code, err)
        lines = err.strip().splitlines()
        self.assertEqual(len(lines), 1, err)
        self.assertTrue(lines[0].startswith("tnw: ") and lines[0].endswith("."), lines[0])
        return lines[0]


class ConvertExamples(ToolCase):
    def test_yield_log_becomes_a_point_set_with_its_columns_and_places(self):
        err = self.convert_ok(self.example("yield.csv"), self.path("out/yield.shp"))
        base = self.path("out/yield")
        self.check_set(base)
        rows = example_rows("yield.csv")[1:]
        self.assertIn("read %d records" % len(rows), err)
        shape_type, shapes = read_shp(base + ".shp")
        self.assertEqual(shape_type, 1)
        self.assertEqual(len(shapes), len(rows))
        for k in (0, len(rows) // 2, len(rows) - 1):
            (x, y), = shapes[k][0]
            self.assertEqual((x, y), (float(rows[k][0]), float(rows[k][1])))
        fields, records = read_dbf(base + ".dbf")
        # The units header makes numbers of the measured columns and text of the crop; the
        # position becomes the geometry, not columns.
        self.assertEqual([(f[0], f[1]) for f in fields],
                         [("Yield", "N"), ("Moisture", "N"), ("Speed", "N"), ("Elevation", "N"),
                          ("Crop", "C")])
        for k in (0, len(rows) - 1):
            self.assertAlmostEqual(float(records[k][0]), float(rows[k][2]), places=9)
            self.assertEqual(records[k][4], rows[k][6])

    def test_boundaries_become_polygons_wound_for_the_format(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("fields.shp"),
                        "--geometry", "region", "--wkt-col", "3")
        self.check_set(self.path("fields"), "--winding")
        rows = example_rows("boundaries.csv")[1:]
        shape_type, shapes = read_shp(self.path("fields.shp"))
        self.assertEqual(shape_type, 5)
        # Home 40 has a pond cut out of it; Creek is two polygons.
        self.assertEqual([len(s) for s in shapes], [2, 1, 2])
        for shape, row in zip(shapes, rows):
            written = sorted(v for ring in shape for point in ring for v in point)
            self.assertEqual(written, sorted(wkt_numbers(row[2])))
        fields, records = read_dbf(self.path("fields.dbf"))
        # The text of the geometry stays out of the table: it is the geometry.
        self.assertEqual([f[0] for f in fields], ["Field", "Area", "Crop"])
        self.assertEqual([r[0] for r in records], [r[0] for r in rows])

    def test_kind_of_the_geometry_is_found_in_the_text_and_hidden_columns_can_be_kept(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("f.shp"), "--wkt-col", "3",
                        "--include-invisible")
        self.check_set(self.path("f"))
        self.assertEqual(read_shp(self.path("f.shp"))[0], 5)
        fields, records = read_dbf(self.path("f.dbf"))
        self.assertEqual([f[0] for f in fields], ["Field", "Area", "Boundary", "Crop"])
        self.assertTrue(records[0][2].startswith("POLYGON("))

    def test_table_to_text_and_text_to_table(self):
        self.convert_ok(self.example("yield.csv"), self.path("table.dbf"))
        self.assertFalse(os.path.exists(self.path("table.shp")))
        self.check_set(self.path("table"))
        rows = example_rows("yield.csv")[1:]
        fields, records = read_dbf(self.path("table.dbf"))
        self.assertEqual(len(records), len(rows))

        self.convert_ok(self.path("table.dbf"), self.path("table.csv"))
        with open(self.path("table.csv"), newline="") as f:
            lines = list(csv.reader(f))
        self.assertEqual(lines[0], ["Yield", "Moisture", "Speed", "Elevation", "Crop"])
        self.assertEqual(len(lines), len(rows) + 1)
        for line, row in zip(lines[1:], rows):
            self.assertEqual([float(v) for v in line[:4]], [float(v) for v in row[2:6]])
            self.assertEqual(line[4], row[6])

    def test_text_copy_with_another_delimiter_keeps_the_places_and_reads_back(self):
        self.convert_ok(self.example("yield.csv"), self.path("copy.txt"), "--delimiter", ";")
        with open(self.path("copy.txt"), "rb") as f:
            lines = f.read().split(b"\r\n")
        self.assertEqual(lines[0], b"Longitude;Latitude;Yield;Moisture;Speed;Elevation;Crop")
        first = example_rows("yield.csv")[1]
        cells = lines[1].decode().split(";")
        self.assertEqual([float(c) for c in cells[:6]], [float(v) for v in first[:6]])
        self.assertEqual(cells[6], '"Corn"')
        # The copy's delimiter is found again when it is read.
        self.convert_ok(self.path("copy.txt"), self.path("again.shp"))
        self.convert_ok(self.example("yield.csv"), self.path("direct.shp"))
        self.check_set(self.path("again"))
        self.assertEqual(read_shp(self.path("again.shp")), read_shp(self.path("direct.shp")))

    def test_polygons_as_text_carry_their_geometry_as_well_known_text(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("b.csv"), "--wkt-col", "3")
        with open(self.path("b.csv"), newline="") as f:
            lines = list(csv.reader(f))
        self.assertEqual(lines[0], ["Field", "Area", "Crop", "Geometry"])
        source = example_rows("boundaries.csv")[1:]
        for line, row in zip(lines[1:], source):
            self.assertTrue(line[3].startswith(row[2].split("(")[0]))
            self.assertEqual(wkt_numbers(line[3]), wkt_numbers(row[2]))


class ConvertOptions(ToolCase):
    def test_centroids_make_a_point_inside_each_field(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("c.shp"), "--wkt-col", "3",
                        "--centroids")
        self.check_set(self.path("c"))
        shape_type, shapes = read_shp(self.path("c.shp"))
        self.assertEqual(shape_type, 1)
        for shape, row in zip(shapes, example_rows("boundaries.csv")[1:]):
            (x, y), = shape[0]
            numbers = wkt_numbers(row[2])
            xs, ys = numbers[0::2], numbers[1::2]
            self.assertTrue(min(xs) < x < max(xs) and min(ys) < y < max(ys))

    def test_offsets_move_every_point(self):
        self.convert_ok(self.example("yield.csv"), self.path("o.shp"), "--x-offset", "0.5",
                        "--y-offset", "-0.25")
        self.check_set(self.path("o"))
        first = example_rows("yield.csv")[1]
        (x, y), = read_shp(self.path("o.shp"))[1][0][0]
        self.assertAlmostEqual(x, float(first[0]) + 0.5, places=9)
        self.assertAlmostEqual(y, float(first[1]) - 0.25, places=9)

    def test_projection_puts_polygons_in_utm_metres(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("p.shp"), "--wkt-col", "3",
                        "--projection", "utm:15n")
        self.check_set(self.path("p"))
        for shape in read_shp(self.path("p.shp"))[1]:
            for ring in shape:
                for x, y in ring:
                    # Central Iowa, near the middle of zone 15 (-96 to -90 degrees).
                    self.assertTrue(400_000 < x < 600_000 and 4_600_000 < y < 4_700_000, (x, y))
        code, out, _ = run("info", self.path("p.shp"))
        self.assertIn("projected", out)

    def test_headerless_semicolon_text_with_crlf_and_quoted_delimiters(self):
        src = self.write("raw.txt", '"a;b";-93.5;42.25\r\nplain;-93.75;42.5\r\n', newline="")
        self.convert_ok(src, self.path("raw.shp"), "--header-rows", "0", "--lon-col", "2",
                        "--lat-col", "3", "--delimiter", "semicolon")
        self.check_set(self.path("raw"))
        fields, records = read_dbf(self.path("raw.dbf"))
        self.assertEqual([f[0] for f in fields], ["Field1", "Field2", "Field3"])
        self.assertEqual([r[0] for r in records], ["a;b", "plain"])
        self.assertEqual([s[0][0] for s in read_shp(self.path("raw.shp"))[1]],
                         [(-93.5, 42.25), (-93.75, 42.5)])

    def test_tab_separated_input_is_known_by_its_extension(self):
        src = self.write("t.tsv", "X\tY\tRate (gal/ac)\n-90.5\t40.5\t12.5\n-90.25\t40.75\t7\n")
        self.convert_ok(src, self.path("t.shp"))
        self.check_set(self.path("t"))
        fields, records = read_dbf(self.path("t.dbf"))
        self.assertEqual([(f[0], f[1]) for f in fields], [("Rate", "N")])
        self.assertEqual([float(r[0]) for r in records], [12.5, 7.0])

    def test_kinds_can_be_named_whatever_the_extension(self):
        src = self.write("log.dat", "Longitude,Latitude,Name\n1.5,2.5,x\n")
        self.convert_ok(src, self.path("out.bin"), "--from", "CSV", "--to", "shp")
        self.check_set(self.path("out"))
        code, out, _ = run("info", self.path("out.shp"))
        self.assertEqual(code, 0)
        self.assertIn("Records:  1", out)

    def test_text_output_options(self):
        self.convert_ok(self.example("yield.csv"), self.path("n.csv"), "--no-header",
                        "--no-lonlat", "--geometry-text")
        with open(self.path("n.csv"), newline="") as f:
            first = next(csv.reader(f))
        row = example_rows("yield.csv")[1]
        self.assertEqual(float(first[0]), float(row[2]))
        self.assertEqual(wkt_numbers(first[-1]), [float(row[0]), float(row[1])])


class Failures(ToolCase):
    def test_missing_input(self):
        line = self.fails(3, "convert", self.path("nope.csv"), self.path("x.shp"))
        self.assertIn("nope.csv", line)
        self.fails(3, "info", self.path("nope.dbf"))
        self.fails(3, "preview", self.path("nope.shp"), self.path("x.svg"))

    def test_unknown_extension(self):
        line = self.fails(4, "convert", self.example("yield.csv"), self.path("x.xlsx"))
        self.assertIn(".xlsx", line)
        self.fails(4, "info", self.write("notes.doc", "x"))
        self.fails(4, "preview", self.example("yield.csv"), self.path("map.png"))

    def test_bad_options(self):
        yield_csv = self.example("yield.csv")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--bogus")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--geometry", "blob")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--lon-col", "0")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--lon-col", "1")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--wkt-col", "99")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--delimiter", "ab")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--no-header")
        self.fails(2, "convert", yield_csv, self.path("x.csv"), "--centroids")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--projection", "mars:1")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--projection", "utm:15n")
        self.fails(2, "convert", yield_csv, self.path("x.shp"), "--from", "xls")
        self.fails(2, "convert", yield_csv)
        self.fails(2)
        self.assertFalse(os.path.exists(self.path("x.shp")))

    def test_no_geometry_for_a_shapefile(self):
        src = self.write("plain.csv", "Name,Rate (gal/ac)\na,1\n")
        line = self.fails(2, "convert", src, self.path("x.shp"))
        self.assertIn("no geometry", line)
        # As a table, or with the geometry left out on purpose, it converts.
        self.convert_ok(src, self.path("plain.dbf"))
        self.convert_ok(src, self.path("y.shp"), "--geometry", "none")
        self.assertFalse(os.path.exists(self.path("y.shp")))
        self.check_set(self.path("y"))

    def test_output_that_would_replace_the_input(self):
        self.convert_ok(self.example("yield.csv"), self.path("t.dbf"))
        before = os.path.getsize(self.path("t.dbf"))
        self.fails(2, "convert", self.path("t.dbf"), self.path("t.shp"))
        self.assertEqual(os.path.getsize(self.path("t.dbf")), before)

    def test_output_that_cannot_be_created(self):
        line = self.fails(5, "convert", self.example("yield.csv"), "/proc/tnw-test/x.shp")
        self.assertIn("/proc/tnw-test", line)

    def test_failed_records_are_told_counted_and_skipped(self):
        src = self.write("bad.csv", "Longitude,Latitude,Yield (bu/ac)\n-93.5,42.1,150\n-93.6\n"
                                    "-93.7,42.2,160\n")
        code, out, err = run("convert", src, self.path("bad.shp"))
        self.assertEqual(code, 1, err)
        self.assertIn("data row 2 of %s" % src, err)
        self.assertIn("1 data row of", err)
        self.check_set(self.path("bad"))
        self.assertEqual([s[0][0] for s in read_shp(self.path("bad.shp"))[1]],
                         [(-93.5, 42.1), (-93.7, 42.2)])

    def test_bad_geometry_text_is_reported_and_the_record_left_out(self):
        src = self.write("w.csv", 'Name,Shape\na,"POLYGON((0 0,1 0,1 1,0 0))"\n'
                                  'b,"POLYGON((0 0,1 0"\nc,"POLYGON((2 2,3 2,3 3,2 2))"\n')
        code, out, err = run("convert", src, self.path("w.shp"), "--wkt-col", "2")
        self.assertEqual(code, 1, err)
        self.assertIn("record 2 of", err)
        self.assertIn("1 record could not be written", err)
        self.check_set(self.path("w"))
        self.assertEqual(len(read_shp(self.path("w.shp"))[1]), 2)

    def test_damaged_shapefiles_are_refused_in_one_sentence(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("f.shp"), "--wkt-col", "3")
        with open(self.path("f.shp"), "rb") as f:
            data = bytearray(f.read())
        cut = self.path("cut.shp")
        with open(cut, "wb") as f:
            f.write(data[:-20])
        self.assertIn("record 3", self.fails(3, "preview", cut, self.path("cut.svg")))
        huge = bytearray(data)
        struct.pack_into("<i", huge, 100 + 8 + 36, 0x7FFFFFFF)  # parts of record 1
        with open(self.path("huge.shp"), "wb") as f:
            f.write(huge)
        self.fails(3, "preview", self.path("huge.shp"), self.path("huge.svg"))
        with open(self.path("junk.shp"), "wb") as f:
            f.write(b"not a shapefile at all" * 10)
        self.fails(3, "preview", self.path("junk.shp"), self.path("junk.svg"))

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
            self.assertIn("Exit codes:", out)
            self.assertIn("3  an input file is missing", out)


class Info(ToolCase):
    def test_shapefile_kind_extent_records_and_columns(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("fields.shp"), "--wkt-col", "3")
        code, out, err = run("info", self.path("fields.shp"))
        self.assertEqual(code, 0, err)
        numbers = [v for row in example_rows("boundaries.csv")[1:] for v in wkt_numbers(row[2])]
        xs, ys = numbers[0::2], numbers[1::2]
        self.assertIn("Region (shape type 5)", out)
        self.assertIn("x %.7f to %.7f, y %.7f to %.7f" % (min(xs), max(xs), min(ys), max(ys)), out)
        self.assertIn("degrees", out)
        self.assertIn("Records:  3 ", out)
        self.assertRegex(out, r"\n  Field +C 254\n  Area +N 16\.4\n  Crop +C 254\n")

    def test_point_and_empty_sets(self):
        self.convert_ok(self.example("yield.csv"), self.path("y.shp"))
        code, out, _ = run("info", self.path("y.shp"))
        self.assertIn("Point (shape type 1)", out)
        self.assertIn("Records:  %d " % (len(example_rows("yield.csv")) - 1), out)
        src = self.write("empty.csv", "Longitude,Latitude,Name\n")
        self.convert_ok(src, self.path("e.shp"))
        self.check_set(self.path("e"))
        code, out, _ = run("info", self.path("e.shp"))
        self.assertEqual(code, 0)
        self.assertIn("none (no shapes)", out)
        self.assertIn("Records:  0 ", out)

    def test_table_schema_and_record_count(self):
        self.convert_ok(self.example("yield.csv"), self.path("table.dbf"))
        code, out, _ = run("info", self.path("table.dbf"))
        self.assertEqual(code, 0)
        self.assertIn("Records:  %d\n" % (len(example_rows("yield.csv")) - 1), out)
        self.assertIn("Schema:   Yield~N~16~4~|Moisture~N~16~4~|Speed~N~16~4~|Elevation~N~16~4~|"
                      "Crop~C~254~0~\n", out)

    def test_text_columns_and_geometry(self):
        code, out, _ = run("info", self.example("boundaries.csv"), "--wkt-col", "3")
        self.assertEqual(code, 0)
        self.assertIn("well-known text in field 3", out)
        self.assertIn("Records:  3\n", out)
        self.assertRegex(out, r"Boundary +text +field 3, hidden")


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
    def test_sample_becomes_a_shapefile_set_of_each_kind(self):
        regions, lines, points = read_fgp(self.example("spray.fgp"))
        _, samples = read_dbf(self.example("spray.fsn"))
        cases = (
            ("regions", [], 5, [[[(v[1], v[2]) for v in r + r[:1] * (r[0][1:] != r[-1][1:])]] for r in regions]),
            ("lines", [], 3, [[[(v[1], v[2]) for v in line]] for line in lines]),
            ("points", [], 1, [[[(p[1], p[2])]] for p in points]),
            ("lines", ["--as-sites"], 1, [[[(v[1], v[2])]] for line in lines for v in line]),
        )
        for phase, options, shape_type, shapes in cases:
            with self.subTest(phase=phase, options=options):
                out = self.path(phase + "".join(options) + ".shp")
                self.convert_ok(self.example("spray.fgp"), out, "--phase", phase, *options)
                self.check_set(out[:-4])
                got_type, got = read_shp(out)
                self.assertEqual(got_type, shape_type)
                # The writer may turn a ring around to wind it as the format asks.
                self.assertEqual(len(got), len(shapes))
                for parts, expected in zip(got, shapes):
                    self.assertIn(parts[0], (expected[0], expected[0][::-1]))
        # Each site carries its own sample row.
        fields, rows = read_dbf(self.path("lines--as-sites.dbf"))
        rate = [name for name, *_ in fields].index("Rate_Act")
        site_rows = [v[0] for line in lines for v in line]
        self.assertEqual([float(row[rate]) for row in rows],
                         [float(samples[k - 1][0]) for k in site_rows])

    def test_all_kinds_as_text_with_times_and_attributes(self):
        self.convert_ok(self.example("spray.fgp"), self.path("all.csv"), "--as-sites")
        with open(self.path("all.csv"), newline="") as f:
            rows = list(csv.DictReader(f))
        self.assertEqual(len(rows), 2 + 240 + 5)
        self.assertTrue(rows[0]["Geometry"].startswith("POLYGON (("))
        site, point = rows[2], rows[-1]
        self.assertEqual(float(site["UTCTime"]), 1718182800)  # 09:00 on the row's day, 2024-06-12
        self.assertEqual((site["Date"], site["Operator"]), ("2024-06-12", "R. Lind"))
        self.assertEqual(float(point["UTCTime"]), 1718380800 + 1200)  # a full time stays
        self.assertEqual(rows[0]["UTCTime"].strip(), "0")  # a region has no time of its own

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
        err = self.convert_ok(src, self.path("out.fgp"))
        self.assertIn("0 regions, 0 lines, 2 points", err)
        _, _, points = read_fgp(self.path("out.fgp"))
        self.assertEqual(points, [(1, -93.5, 42.25), (2, -93.6, 42.5)])
        self.assertEqual(read_dbf(self.path("out.fsn"))[1], [["12.5", ".61"], ["13", ".7"]])
        self.assertEqual(read_dbf(self.path("out.fdt"))[1], [["corn"], ["soy"]])
        self.convert_ok(self.path("out.fgp"), self.path("back.csv"))
        with open(self.path("back.csv"), newline="") as f:
            rows = list(csv.DictReader(f))
        self.assertEqual([(float(r["Rate_Act"]), float(r["NDVI"]), r["Crop"]) for r in rows],
                         [(12.5, .61, "corn"), (13, .7, "soy")])

    def test_damaged_sets_and_bad_options(self):
        with open(self.example("spray.fgp"), "rb") as f:
            data = f.read()
        with open(self.path("cut.fgp"), "wb") as f:
            f.write(data[:-5])
        line = self.fails(3, "convert", self.path("cut.fgp"), self.path("x.shp"))
        self.assertIn("cut.fgp", line)
        self.fails(2, "convert", self.example("spray.fgp"), self.path("x.shp"), "--phase", "roads")


class Previews(ToolCase):
    def marks(self, svg_path):
        root = ET.parse(svg_path).getroot()  # well-formed, or this raises
        self.assertEqual(root.tag, SVG + "svg")
        marks = [e for e in root.iter() if e.get("class") == "mark"]
        legend = [e for e in root.iter() if e.get("id") == "legend"]
        return marks, legend[0] if legend else None

    def test_points_coloured_by_a_number_with_the_legend_range(self):
        self.convert_ok(self.example("yield.csv"), self.path("yield.shp"))
        code, _, err = run("preview", self.path("yield.shp"), self.path("yield.svg"),
                           "--color-by", "yield")
        self.assertEqual(code, 0, err)
        marks, legend = self.marks(self.path("yield.svg"))
        values = [float(r[2]) for r in example_rows("yield.csv")[1:]]
        self.assertEqual(len(marks), len(values))
        self.assertTrue(all(m.tag == SVG + "circle" for m in marks))
        self.assertEqual(legend.get("data-column"), "Yield")
        self.assertAlmostEqual(float(legend.get("data-min")), min(values), places=6)
        self.assertAlmostEqual(float(legend.get("data-max")), max(values), places=6)
        self.assertEqual([float(m.get("data-value")) for m in marks], values)
        # The lowest and highest values get the two ends of the scale.
        colours = {float(m.get("data-value")): m.get("fill") for m in marks}
        self.assertEqual(colours[min(values)], "#440154")
        self.assertEqual(colours[max(values)], "#fde725")

    def test_polygons_coloured_by_text(self):
        self.convert_ok(self.example("boundaries.csv"), self.path("f.shp"), "--wkt-col", "3")
        code, _, err = run("preview", self.path("f.shp"), self.path("f.svg"), "--color-by", "Crop")
        self.assertEqual(code, 0, err)
        marks, legend = self.marks(self.path("f.svg"))
        self.assertEqual(len(marks), 3)
        self.assertTrue(all(m.tag == SVG + "path" and m.get("d").count("Z") >= 1 for m in marks))
        self.assertEqual([m.get("data-value") for m in marks], ["Corn", "Soybeans", "Corn"])
        self.assertEqual(marks[0].get("fill"), marks[2].get("fill"))
        self.assertNotEqual(marks[0].get("fill"), marks[1].get("fill"))
        self.assertEqual(legend.get("data-categories"), "2")

    def test_text_input_is_drawn_directly_and_odd_text_stays_well_formed(self):
        src = self.write("odd.csv", 'Longitude,Latitude,Note\n1,1,"<a & b>"\n2,2,"it\'s ""x"""\n')
        code, _, err = run("preview", src, self.path("odd.svg"), "--color-by", "Note")
        self.assertEqual(code, 0, err)
        marks, legend = self.marks(self.path("odd.svg"))
        self.assertEqual([m.get("data-value") for m in marks], ["<a & b>", "it's \"\"x\"\""])
        code, _, err = run("preview", self.example("yield.csv"), self.path("y.svg"))
        self.assertEqual(code, 0, err)
        marks, legend = self.marks(self.path("y.svg"))
        self.assertEqual(len(marks), len(example_rows("yield.csv")) - 1)
        self.assertIsNone(legend)

    def test_unknown_column_names_the_ones_there_are(self):
        self.convert_ok(self.example("yield.csv"), self.path("y.shp"))
        line = self.fails(2, "preview", self.path("y.shp"), self.path("y.svg"), "--color-by", "Rate")
        self.assertIn("Yield, Moisture, Speed, Elevation, Crop", line)


class Progress(ToolCase):
    def run_on_terminal(self, *args):
        """Runs tnw with stderr on a pseudo-terminal; gives what it drew there."""
        controller, terminal = pty.openpty()
        proc = subprocess.Popen([TNW, *args], stdout=subprocess.DEVNULL, stderr=terminal)
        os.close(terminal)
        seen = b""
        while True:
            ready, _, _ = select.select([controller], [], [], 60)
            if not ready:
                break
            try:
                chunk = os.read(controller, 65536)
            except OSError:
                break
            if not chunk:
                break
            seen += chunk
        proc.wait(timeout=60)
        os.close(controller)
        return proc.returncode, seen.decode(errors="replace")

    def test_bar_on_a_terminal_only_and_not_when_quiet(self):
        code, seen = self.run_on_terminal("convert", self.example("yield.csv"), self.path("a.shp"))
        self.assertEqual(code, 0)
        self.assertIn("converting [", seen)
        self.assertIn("100%", seen)
        self.assertIn("read 3020 records", seen)
        code, seen = self.run_on_terminal("--quiet", "convert", self.example("yield.csv"),
                                          self.path("b.shp"))
        self.assertEqual(code, 0)
        self.assertEqual(seen, "")
        code, out, err = run("convert", self.example("yield.csv"), self.path("c.shp"))
        self.assertNotIn("converting [", err)
        self.assertEqual(len(err.strip().splitlines()), 1)


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
    parser.add_argument("--tnw", required=True)
    parser.add_argument("--examples", required=True)
    parser.add_argument("--checker", required=True)
    args, rest = parser.parse_known_args()
    TNW, EXAMPLES, CHECKER = args.tnw, args.examples, args.checker
    unittest.main(argv=[sys.argv[0], *rest], verbosity=1)


if __name__ == "__main__":
    main()
