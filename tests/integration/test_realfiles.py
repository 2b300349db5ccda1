#!/usr/bin/python3
"""The tnw tool on files as they come from the field, and under write faults: logs whose header
has no units, decimal commas, empty positions, line breaks in quoted fields, names that clash or
are missing, outputs that can't be finished, and inputs past the limits.

    test_realfiles.py --tnw PATH --examples DIR --checker PATH [unittest arguments]
"""

import argparse
import os
import resource
import signal
import struct
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree as ET

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import test_cli as cli  # noqa: E402  the shared helpers of the tool's tests

OGR_DUMP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "shapefile",
                        "ogr_dump.py")


def gdal_rows(shp):
    """GDAL's reading of a set: the field line, then one line per feature."""
    done = subprocess.run(["/usr/bin/python3", OGR_DUMP, shp], capture_output=True, text=True)
    return done.stdout.splitlines()


def yield_log(rows, delimiter=",", comma=False):
    """A yield log whose header has no units, as combines write them."""
    lines = [delimiter.join(["Longitude", "Latitude", "Yld_Vol_Dr", "Moisture", "Pass_Num",
                             "Date", "Product", "Notes"])]
    for i in range(rows):
        values = ["%.6f" % (-93.5 + i * 1e-5), "%.6f" % (42.1 + i * 1e-5),
                  "%.2f" % (150 + (i * 37) % 90 + 0.25), "%.1f" % (14 + (i % 7) * 0.5),
                  str(1 + i // 50), "2024-10-%02d" % (1 + i % 28), ["Corn", "Soybeans"][i % 2],
                  "" if i % 3 else "wet spot"]
        if comma:
            values = [v.replace(".", ",") for v in values]
        lines.append(delimiter.join(values))
    return "\n".join(lines) + "\n"


class TypedColumns(cli.ToolCase):
    def test_log_without_units_gets_numeric_fields_and_a_continuous_scale(self):
        src = self.write("log.csv", yield_log(400))
        self.convert_ok(src, self.path("log.shp"))
        self.check_set(self.path("log"))
        fields, records = cli.read_dbf(self.path("log.dbf"))
        self.assertEqual(fields, [("Yld_Vol_Dr", "N", 6, 2), ("Moisture", "N", 4, 1),
                                  ("Pass_Num", "N", 1, 0), ("Date", "D", 8, 0),
                                  ("Product", "C", 8, 0), ("Notes", "C", 8, 0)])
        self.assertEqual(records[0], ["150.25", "14", "1", "20241001", "Corn", "wet spot"])
        self.assertLess(os.path.getsize(self.path("log.dbf")), 40 * 400 + 300)
        code, _, err = cli.run("preview", self.path("log.shp"), self.path("log.svg"),
                               "--color-by", "Yld_Vol_Dr")
        self.assertEqual(code, 0, err)
        legend = ET.parse(self.path("log.svg")).getroot().find(".//*[@id='legend']")
        self.assertIn("data-min", legend.attrib)
        self.assertNotIn("data-categories", legend.attrib)

    def test_types_asked_for(self):
        src = self.write("log.csv", yield_log(20))
        cases = [
            (["--type", "Pass_Num=text"], ("Pass_Num", "C", 1, 0)),
            (["--type", "moisture=integer"], ("Moisture", "N", 11, 0)),
            (["--type", "Yld_Vol_Dr=real"], ("Yld_Vol_Dr", "N", 6, 2)),
            (["--type", "Date=text"], ("Date", "C", 10, 0)),
        ]
        for options, field in cases:
            with self.subTest(options=options):
                self.convert_ok(src, self.path("t.dbf"), *options)
                self.assertIn(field, cli.read_dbf(self.path("t.dbf"))[0])
        for bad in ("Pass_Num=float", "Nothing=real", "=text"):
            with self.subTest(bad=bad):
                self.assertIn("--type", self.fails(2, "convert", src, self.path("t.dbf"),
                                                   "--type", bad))


class Coordinates(cli.ToolCase):
    def test_decimal_comma(self):
        cases = [
            ("semicolon, found", yield_log(3, ";", comma=True), []),
            ("tab, asked", yield_log(3, "\t", comma=True), ["--decimal-comma"]),
            ("semicolon, points", yield_log(3, ";"), []),
        ]
        for name, text, options in cases:
            with self.subTest(name):
                src = self.write("c.txt", text)
                self.convert_ok(src, self.path("c.shp"), *options)
                (x, y), = cli.read_shp(self.path("c.shp"))[1][0][0]
                self.assertEqual((x, y), (-93.5, 42.1))
                fields, records = cli.read_dbf(self.path("c.dbf"))
                self.assertEqual(records[0][0], "150.25")

    def test_empty_positions_give_no_geometry(self):
        src = self.write("e.csv", "Longitude,Latitude,Id\n-93.5,42.1,1\n,,2\n-93.6,,3\n"
                                  "-93.7,42.2,4\n")
        code, _, err = cli.run("convert", src, self.path("e.shp"))
        self.assertEqual(code, 0, err)
        self.assertIn("2 records of %s had an empty longitude or latitude" % src, err)
        self.assertEqual(gdal_rows(self.path("e.shp"))[1:],
                         ["POINT (-93.5 42.1)|1", "None|2", "None|3", "POINT (-93.7 42.2)|4"])

    def test_quoted_fields_hold_line_breaks(self):
        src = self.write("q.csv", 'Longitude,Latitude,Note\n-93.5,42.1,"two\nlines"\n'
                                  '-93.6,42.2,one\n')
        err = self.convert_ok(src, self.path("q.shp"))
        self.assertIn("read 2 records", err)
        self.assertEqual(cli.read_dbf(self.path("q.dbf"))[1], [["two\nlines"], ["one"]])

    def test_points_projected_with_their_prj(self):
        self.convert_ok(self.example("yield.csv"), self.path("p.shp"), "--projection", "utm:15n")
        for shape in cli.read_shp(self.path("p.shp"))[1]:
            (x, y), = shape[0]
            self.assertTrue(400_000 < x < 600_000 and 4_600_000 < y < 4_700_000, (x, y))
        zone = subprocess.run(
            ["/usr/bin/python3", "-c", "import sys; from osgeo import osr; s = osr.SpatialReference();"
             "s.ImportFromESRI([open(sys.argv[1]).read()]); print(s.GetUTMZone())",
             self.path("p.prj")], capture_output=True, text=True)
        self.assertEqual(zone.stdout.strip(), "15", zone.stderr)


def dbf_table(fields, rows, version=3):
    """A dBase table from (name, width) text fields and rows of texts."""
    header_len = 33 + 32 * len(fields)
    record_len = 1 + sum(w for _, w in fields)
    data = struct.pack("<B3BIHH20x", version, 95, 3, 31, len(rows), header_len, record_len)
    for name, width in fields:
        data += name.encode().ljust(11, b"\0") + b"C" + bytes(4) + bytes([width, 0]) + bytes(14)
    data += b"\r"
    for row in rows:
        data += b" " + b"".join(v.encode().ljust(w) for v, (_, w) in zip(row, fields))
    return data + b"\x1a"


class Names(cli.ToolCase):
    def test_names_cut_to_eleven_bytes_stay_apart(self):
        src = self.write("n.csv", "Longitude,Latitude,Steckertype1,Steckertype2,,Steckertype3\n"
                                  "-93.5,42.1,a,b,c,d\n")
        self.convert_ok(src, self.path("n.shp"))
        self.check_set(self.path("n"))
        fields, records = cli.read_dbf(self.path("n.dbf"))
        self.assertEqual([f[0] for f in fields],
                         ["Steckertype", "Steckerty_1", "field_5", "Steckerty_2"])
        self.assertEqual(records, [["a", "b", "c", "d"]])

    def test_repeated_names_of_a_table_keep_their_values(self):
        with open(self.path("d.dbf"), "wb") as f:
            f.write(dbf_table([("NAME", 4), ("NAME", 4)], [["a", "b"]]))
        self.convert_ok(self.path("d.dbf"), self.path("d.csv"))
        with open(self.path("d.csv")) as f:
            self.assertEqual(f.read().splitlines(), ['"NAME","NAME_1"', '"a","b"'])


class WriteFaults(cli.ToolCase):
    def listing(self):
        return sorted(os.listdir(self.dir))

    def test_file_size_limit_leaves_the_output_unfinished_and_says_so(self):
        with open(self.example("yield.csv")) as f:
            src = self.write("big.csv", f.read())
        limit = 20_000
        for output in ("big.shp", "big.txt"):
            with self.subTest(output):
                done = subprocess.run(
                    [cli.TNW, "convert", src, self.path(output)], capture_output=True, text=True,
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)),
                    timeout=120)
                self.assertEqual(done.returncode, 5, done.stderr)
                self.assertIn("size limit for files", done.stderr)
                self.assertIn("the output %s is unfinished" % self.path(output), done.stderr)
                self.assertEqual(self.listing(), ["big.csv"])

    def test_killed_conversion_leaves_only_a_plainly_unfinished_file(self):
        src = self.write("long.csv", yield_log(200_000))
        child = subprocess.Popen([cli.TNW, "convert", src, self.path("long.txt")],
                                 stderr=subprocess.DEVNULL)
        deadline = time.time() + 100
        while time.time() < deadline and not any(n.startswith("unfinished-")
                                                 for n in os.listdir(self.dir)):
            time.sleep(0.02)
        child.send_signal(signal.SIGKILL)
        child.wait()
        left = [n for n in self.listing() if n != "long.csv"]
        self.assertEqual(left, ["unfinished-%d-long.txt" % child.pid])


class Limits(cli.ToolCase):
    def test_files_that_are_no_shapefile(self):
        cases = [("empty.shp", b""), ("code.shp", struct.pack(">i", 1234) + bytes(96)),
                 ("short.shp", struct.pack(">i", 9994) + bytes(20))]
        for name, data in cases:
            with self.subTest(name):
                with open(self.path(name), "wb") as f:
                    f.write(data)
                self.assertIn(self.path(name), self.fails(3, "info", self.path(name)))

    def test_visual_foxpro_table_is_refused(self):
        with open(self.path("v.dbf"), "wb") as f:
            f.write(dbf_table([("ID", 3)], [["1"]], version=0x30))
        line = self.fails(3, "convert", self.path("v.dbf"), self.path("v.csv"))
        self.assertIn("Visual FoxPro", line)

    def test_overlong_line_is_told_with_its_row(self):
        src = self.write("l.csv", "Longitude,Latitude,Note\n-93.5,42.1," + "x" * 100_000 +
                         "\n-93.6,42.2,ok\n")
        code, _, err = cli.run("convert", src, self.path("l.shp"))
        self.assertEqual(code, 1, err)
        self.assertIn("data row 1 of %s: Overflow: the line has more than 32766 characters" % src,
                      err)
        self.assertEqual(len(cli.read_shp(self.path("l.shp"))[1]), 1)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tnw", required=True)
    parser.add_argument("--examples", required=True)
    parser.add_argument("--checker", required=True)
    args, rest = parser.parse_known_args()
    cli.TNW, cli.EXAMPLES, cli.CHECKER = args.tnw, args.examples, args.checker
    unittest.main(argv=[sys.argv[0], *rest], verbosity=1)


if __name__ == "__main__":
    main()
