#!/usr/bin/python3
"""Faithful conversions: tables written by GDAL, pyshp and shapelib, and text saved with a
byte-order mark, converted by the tnw tool and read back through GDAL, every value equal to
GDAL's reading of the source, NULL for NULL.

    test_faithful.py --tnw PATH [unittest arguments]
"""

import argparse
import datetime
import os
import subprocess
import sys
import tempfile
import unittest

from osgeo import gdal, ogr
import shapefile

gdal.UseExceptions()
TNW = None


def canonical(value):
    """One form whatever the format: None for NULL and for an empty text (dBase can't tell
    them apart), floats for numbers and logicals, (y, m, d) for dates."""
    text = str(value).strip() if value is not None else ""
    if text in ("True", "T", "Y", "False", "F", "N"):
        return float(text in ("True", "T", "Y"))
    for form in ("%Y/%m/%d", "%Y-%m-%d"):
        try:
            return datetime.datetime.strptime(text, form).timetuple()[:3]
        except ValueError:
            pass
    try:
        return float(text)
    except ValueError:
        return text or None


def read(path, fields):
    """The fields of each record as GDAL reads them, and the point when there is one."""
    rows, ds = [], gdal.OpenEx(path, gdal.OF_VECTOR)  # the layer lives as long as its data set
    for feature in ds.GetLayer(0):
        geometry = feature.GetGeometryRef()
        rows.append([canonical(feature.GetField(f)) for f in fields] +
                    ([(geometry.GetX(), geometry.GetY())] if geometry else []))
    return rows


class FaithfulTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.path = lambda name: os.path.join(self.dir.name, name)

    def tearDown(self):
        self.dir.cleanup()

    def convert(self, *args, status=0):
        done = subprocess.run([TNW, "-q", "convert", *args], capture_output=True, text=True)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stderr

    def assert_faithful(self, source, fields):
        """To .dbf, .csv and .shp (the first two fields are the position): GDAL reads each as
        it reads the source."""
        expected = read(source, fields)
        for out in ("o.dbf", "o.csv", "o.shp"):
            self.convert(source, self.path(out), "--lon-col", "1", "--lat-col", "2")
            self.assertEqual(read(self.path(out), fields),
                             [row + ([(row[0], row[1])] if out == "o.shp" else [])
                              for row in expected], out)
        return expected

    def test_table_written_by_gdal(self):
        source = self.path("g.dbf")
        ds = ogr.GetDriverByName("ESRI Shapefile").CreateDataSource(source)
        layer = ds.CreateLayer("g", geom_type=ogr.wkbNone, options=["ENCODING=ISO-8859-1"])
        fields = [("x", ogr.OFTReal, 0, 0), ("y", ogr.OFTReal, 0, 0), ("name", ogr.OFTString, 12, 0),
                  ("rate", ogr.OFTReal, 0, 0), ("count", ogr.OFTInteger, 0, 0),
                  ("day", ogr.OFTDate, 0, 0), ("big", ogr.OFTReal, 18, 2)]
        for name, kind, width, decimals in fields:
            field = ogr.FieldDefn(name, kind)
            field.SetWidth(width)
            field.SetPrecision(decimals)
            layer.CreateField(field)
        for row in ((-93.1234567890123, 42.5, "Alpha", 3.5, 7, "2004/03/09", 1234567890123.0),
                    (-93.5, 42.25, "\u00e9t\u00e9 \u00c5", None, None, None, -9876543210987.25),
                    (-94.0, 42.0, None, -12.25, 0, "2004/03/10", None),
                    (-95.0, 41.0, "deleted", 1.0, 1, "2004/03/11", 1.0)):
            feature = ogr.Feature(layer.GetLayerDefn())
            for (name, _, _, _), value in zip(fields, row):
                if value is not None:
                    feature.SetField(name, value)
            layer.CreateFeature(feature)
        layer = ds = None
        ds = gdal.OpenEx(source, gdal.OF_UPDATE, open_options=["AUTO_REPACK=NO"])
        ds.GetLayer(0).DeleteFeature(3)
        ds = None
        self.assertEqual(len(self.assert_faithful(source, [f[0] for f in fields])), 3)
        with open(self.path("o.cpg")) as f:
            self.assertEqual(f.read(), "UTF-8")
        self.convert(source, self.path("kept.csv"), "--keep-deleted")
        self.assertEqual(len(read(self.path("kept.csv"), ["name"])), 4)

    def test_table_written_by_pyshp(self):
        writer = shapefile.Writer(self.path("p"), shapeType=shapefile.NULL)
        for name, kind, width, decimals in (("X", "N", 19, 11), ("Y", "N", 19, 11), ("OK", "L", 1, 0),
                                            ("DAY", "D", 8, 0), ("RATE", "N", 10, 3)):
            writer.field(name, kind, width, decimals)
        for row in ((-93.25, 42.5, True, datetime.date(2004, 3, 9), 1.5),
                    (-93.5, 42.75, False, None, None), (-94.0, 43.0, None, None, -0.125)):
            writer.null()
            writer.record(*row)
        writer.close()
        self.assert_faithful(self.path("p.dbf"), ["X", "Y", "OK", "DAY", "RATE"])

    def shapelib_table(self, name, fields, rows):
        subprocess.run(["dbfcreate", self.path(name), *fields], check=True)
        for row in rows:
            subprocess.run(["dbfadd", self.path(name), *row], check=True)
        return self.path(name)

    def test_table_written_by_shapelib(self):
        source = self.shapelib_table("s.dbf", ["-n", "LON", "14", "8", "-n", "LAT", "14", "8", "-s",
                                               "NAME", "10", "-n", "RATE", "8", "2"],
                                     [("-93.25", "42.5", "Alpha", "3.5"), ("-93.5", "42", "", ""),
                                      ("-94", "43", "Two Words", "-0.25")])
        self.assert_faithful(source, ["LON", "LAT", "NAME", "RATE"])

    def test_text_with_a_byte_order_mark(self):
        with open(self.path("a.csv"), "wb") as f:
            f.write(b"\xef\xbb\xbfLongitude,Latitude,Name\r\n"
                    b"-93.1234567890123,42.9876543210987,Caf\xc3\xa9\r\n")
        for out in ("o.shp", "o.csv"):
            self.convert(self.path("a.csv"), self.path(out))
        self.assertEqual(read(self.path("o.shp"), ["Name"]),
                         [["Caf\u00e9", (-93.1234567890123, 42.9876543210987)]])
        self.assertEqual(read(self.path("o.csv"), ["Longitude", "Latitude", "Name"]),
                         [[-93.1234567890123, 42.9876543210987, "Caf\u00e9"]])

    def test_values_that_cannot_be_kept_are_named(self):
        # "00000000" is how writers mark NULL; "20040000" and "00010101" name no day a date
        # here holds; a text of 300 bytes is over a field's 254.
        source = self.shapelib_table("d.dbf", ["-s", "DAY", "8", "-s", "NOTE", "254"],
                                     [("20040309", "a"), ("00000000", ""), ("20040000", ""),
                                      ("00010101", "")])
        with open(source, "r+b") as f:
            f.seek(32 + 11)
            f.write(b"D")
        stderr = self.convert(source, self.path("o.dbf"), status=1)
        self.assertEqual(stderr.count("the text of DAY is no value of its type"), 2)
        self.assertIn("record 3 of " + source, stderr)
        self.assertEqual(read(self.path("o.dbf"), ["DAY"]), [[(2004, 3, 9)], [None], [None], [None]])
        with open(self.path("long.csv"), "w") as f:
            f.write("Name,Note\nlong," + "x" * 300 + "\n")
        self.assertIn("record 1 of " + self.path("long.csv") + ": the value of Note does not fit",
                      self.convert(self.path("long.csv"), self.path("o.dbf"), status=1))

    def test_record_of_40000_bytes(self):
        fields = sum((["-s", "F%d" % i, "250"] for i in range(160)), [])
        source = self.shapelib_table("w.dbf", fields, [["one"] * 160, ["two"] * 160])
        self.convert(source, self.path("o.csv"))
        self.assertEqual(read(self.path("o.csv"), ["F0", "F159"]), [["one"] * 2, ["two"] * 2])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--tnw", required=True)
    args, rest = parser.parse_known_args()
    TNW = os.path.abspath(args.tnw)
    unittest.main(argv=[sys.argv[0], *rest])
