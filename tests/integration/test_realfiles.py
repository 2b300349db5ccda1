#!/usr/bin/python3
"""The tnw tool on files as they come from the field, and under write faults: logs whose header
has no units, decimal commas, empty positions, line breaks in quoted fields, names that clash or
are missing, outputs that can't be finished, and files that are not what they claim.

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

HERE = os.path.dirname(os.path.abspath(__file__))


def gdal_rows(shp):
    """GDAL's reading of a set: the field line, then one line per feature."""
    dump = os.path.join(HERE, "..", "shapefile", "ogr_dump.py")
    return subprocess.run(["/usr/bin/python3", dump, shp], capture_output=True,
                          text=True).stdout.splitlines()


def yield_log(rows):
    """A yield log whose header has no units, as combines write them."""
    lines = ["Longitude,Latitude,Yld_Vol_Dr,Pass_Num,Date,Product"]
    for i in range(rows):
        lines.append("%.6f,%.6f,%.2f,%d,2024-10-%02d,%s" % (
            -93.5 + i * 1e-5, 42.1 + i * 1e-5, 150.25 + (i * 37) % 90, 1 + i // 50, 1 + i % 28,
            ["Corn", "Soybeans"][i % 2]))
    return "\n".join(lines) + "\n"


def dbf_table(names, version=3):
    """A dBase table of one record, a text field of width 1 for each name, holding a, b, c..."""
    data = struct.pack("<B3BIHH20x", version, 95, 3, 31, 1, 33 + 32 * len(names), 1 + len(names))
    for name in names:
        data += name.encode().ljust(11, b"\0") + b"C" + bytes(4) + b"\1" + bytes(15)
    return data + b"\r " + bytes(range(97, 97 + len(names))) + b"\x1a"


class FieldFiles(cli.ToolCase):
    def test_log_without_units_gets_numeric_fields_and_a_continuous_scale(self):
        self.convert_ok(self.write("log.csv", yield_log(400)), self.path("log.shp"))
        self.check_set(self.path("log"))
        self.assertEqual(gdal_rows(self.path("log.shp"))[0], "Yld_Vol_Dr:Real:6:2|"
                         "Pass_Num:Integer:1:0|Date:Date:10:0|Product:String:8:0")
        code, _, err = cli.run("preview", self.path("log.shp"), self.path("log.svg"),
                               "--color-by", "Yld_Vol_Dr")
        self.assertEqual(code, 0, err)
        legend = ET.parse(self.path("log.svg")).getroot().find(".//*[@id='legend']")
        self.assertEqual((legend.get("data-min"), legend.get("data-max")), ("150.25", "239.25"))

    def test_what_gdal_reads_back(self):
        cases = [  # input text, options, GDAL's fields and features
            ("X;Y;R\n50,937417;6,96;3,5\n", [], ["R:Real:3:1", "POINT (50.937417 6.96)|3.5"]),
            ("X\tY\tR\n7,5\t1,25\t2\n", ["--decimal-comma", "--type", "r=real"],
             ["R:Real:3:1", "POINT (7.5 1.25)|2.0"]),
            ("X,Y,Id\n1,2,a\n,2,b\n1,,c\n", [],
             ["Id:String:1:0", "POINT (1 2)|'a'", "None|'b'", "None|'c'"]),
            ('X,Y,Note\n1,2,"two\nlines"\n', [], ["Note:String:9:0", "POINT (1 2)|'two\\nlines'"]),
            ("X,Y,Steckertype1,Steckertype2,,Steckertype3\n1,2,a,b,c,d\n", [],
             ["Steckertype:String:1:0|Steckerty_1:String:1:0|field_5:String:1:0|"
              "Steckerty_2:String:1:0", "POINT (1 2)|'a'|'b'|'c'|'d'"]),
        ]
        for text, options, rows in cases:
            with self.subTest(text):
                self.convert_ok(self.write("in.txt", text), self.path("out.shp"), *options)
                self.assertEqual(gdal_rows(self.path("out.shp")), rows)

    def test_repeated_names_of_a_table_keep_their_values(self):
        with open(self.path("d.dbf"), "wb") as f:
            f.write(dbf_table(["NAME", "NAME"]))
        self.convert_ok(self.path("d.dbf"), self.path("d.csv"))
        with open(self.path("d.csv")) as f:
            self.assertEqual(f.read().splitlines(), ['"NAME","NAME_1"', '"a","b"'])

    def test_points_projected_with_their_prj(self):
        self.convert_ok(self.example("yield.csv"), self.path("p.shp"), "--projection", "utm:15n")
        (x, y), = cli.read_shp(self.path("p.shp"))[1][0][0]
        self.assertTrue(400_000 < x < 600_000 and 4_600_000 < y < 4_700_000, (x, y))
        with open(self.path("p.prj")) as f:
            self.assertTrue(f.read().startswith('PROJCS["WGS_1984_UTM_Zone_15N",'))


class Faults(cli.ToolCase):
    def test_refusals_in_one_sentence(self):
        files = {"empty.shp": b"", "code.shp": struct.pack(">i", 1234) + bytes(96),
                 "v.dbf": dbf_table(["ID"], version=0x30)}
        for name, data in files.items():
            with open(self.path(name), "wb") as f:
                f.write(data)
        log = self.write("log.csv", yield_log(5))
        cases = [(3, ["info", self.path("empty.shp")], "empty.shp"),
                 (3, ["info", self.path("code.shp")], "code.shp"),
                 (3, ["convert", self.path("v.dbf"), self.path("v.csv")], "Visual FoxPro"),
                 (2, ["convert", log, self.path("t.dbf"), "--type", "Date=float"], "--type"),
                 (2, ["convert", log, self.path("t.dbf"), "--type", "Nothing=real"], "Nothing")]
        for code, args, text in cases:
            with self.subTest(args):
                self.assertIn(text, self.fails(code, *args))

    def test_size_limit_leaves_the_output_unfinished_and_says_so(self):
        src = self.write("big.csv", yield_log(3000))
        for output in ("big.shp", "big.txt"):
            with self.subTest(output):
                done = subprocess.run(
                    [cli.TNW, "convert", src, self.path(output)], capture_output=True, text=True,
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000)))
                self.assertEqual(done.returncode, 5, done.stderr)
                self.assertIn("size limit for files", done.stderr)
                self.assertIn("the output %s is unfinished" % self.path(output), done.stderr)
                self.assertEqual(os.listdir(self.dir), ["big.csv"])

    def test_killed_conversion_leaves_only_a_plainly_unfinished_file(self):
        src = self.write("long.csv", yield_log(200_000))
        child = subprocess.Popen([cli.TNW, "convert", src, self.path("long.txt")],
                                 stderr=subprocess.DEVNULL)
        deadline = time.time() + 100
        while time.time() < deadline and len(os.listdir(self.dir)) < 2:
            time.sleep(0.02)
        child.send_signal(signal.SIGKILL)
        child.wait()
        self.assertEqual(sorted(os.listdir(self.dir)),
                         ["long.csv", "unfinished-%d-long.txt" % child.pid])

    def test_overlong_line_is_told_with_its_row(self):
        src = self.write("l.csv", "X,Y,Note\n1,2," + "x" * 100_000 + "\n3,4,ok\n")
        code, _, err = cli.run("convert", src, self.path("l.shp"))
        self.assertEqual(code, 1, err)
        self.assertIn("data row 1 of %s: Overflow: the line has more than 32766 characters" % src,
                      err)


def main():
    parser = argparse.ArgumentParser()
    for option in ("--tnw", "--examples", "--checker"):
        parser.add_argument(option, required=True)
    args, rest = parser.parse_known_args()
    cli.TNW, cli.EXAMPLES, cli.CHECKER = args.tnw, args.examples, args.checker
    unittest.main(argv=[sys.argv[0], *rest], verbosity=1)


if __name__ == "__main__":
    main()
