#!/usr/bin/python3
"""Faithful conversions: tables written by GDAL, pyshp and shapelib, and a delimited file saved
with a byte-order mark, converted by the tnw tool to .dbf, .csv and .shp and read back through
GDAL, every value equal to GDAL's reading of the source, NULL for NULL.

    test_faithful.py --tnw PATH [unittest arguments]
"""

import argparse
import datetime
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from osgeo import gdal, ogr
import shapefile

gdal.UseExceptions()
TNW = None


def run(*args):
    done = subprocess.run([TNW, "-q", "convert", *args], capture_output=True, text=True, timeout=120)
    return done.returncode, done.stderr


def canonical(value):
    """One form for a value however a format carries it: None for NULL (and for an empty text,
    which dBase can't tell from NULL), numbers as floats, dates as (y, m, d), booleans as
    1.0 and 0.0 ("True"/"False" in text, "T"/"Y"/"F"/"N" in a logical field)."""
    if value is None:
        return None
    if isinstance(value, bool):
        return float(value)
    if isinstance(value, (int, float)):
        return float(value)
    text = value.strip()
    if text == "":
        return None
    if text in ("True", "T", "Y", "False", "F", "N"):  # dBase logicals come as letters
        return float(text in ("True", "T", "Y"))
    for form in ("%Y/%m/%d", "%Y-%m-%d"):
        try:
            day = datetime.datetime.strptime(text, form)
            return (day.year, day.month, day.day)
        except ValueError:
            pass
    try:
        return float(text)
    except ValueError:
        return text


def gdal_records(path, fields):
    """Each record of the file as GDAL reads it: the given fields in canonical form, and the
    point's x and y when it has one."""
    ds = gdal.OpenEx(path, gdal.OF_VECTOR, open_options=["AUTODETECT_TYPE=NO"]
                     if path.endswith(".csv") else [])
    layer = ds.GetLayer(0)
    records = []
    for feature in layer:
        row = [canonical(feature.GetField(name) if feature.IsFieldSetAndNotNull(name) else None)
               for name in fields]
        geometry = feature.GetGeometryRef()
        if geometry is not None:
            row.append((geometry.GetX(), geometry.GetY()))
        records.append(row)
    return records


class FaithfulTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="tnw-faithful-")

    def tearDown(self):
        shutil.rmtree(self.dir, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.dir, name)

    def assert_faithful(self, source, fields, lon_col, lat_col, extra=()):
        """Converts source to .dbf, .csv and .shp; GDAL reads each as it reads the source."""
        expected = gdal_records(source, fields)
        self.assertTrue(expected)
        for out in ("out.dbf", "out.csv", "out.shp"):
            with self.subTest(out=out):
                args = [source, self.path(out), "--lon-col", str(lon_col), "--lat-col", str(lat_col)]
                status, stderr = run(*args, *extra)
                self.assertEqual(status, 0, stderr)
                got = gdal_records(self.path(out), fields)
                if out == "out.shp":
                    # The point is the record's x and y, to the last bit.
                    self.assertEqual([r[-1] for r in got],
                                     [(r[lon_col - 1], r[lat_col - 1]) for r in expected])
                    got = [r[:-1] for r in got]
                self.assertEqual(got, expected)
        return expected

    def test_table_written_by_gdal(self):
        source = self.path("g.dbf")
        ds = ogr.GetDriverByName("ESRI Shapefile").CreateDataSource(source)
        layer = ds.CreateLayer("g", geom_type=ogr.wkbNone, options=["ENCODING=ISO-8859-1"])
        for name, kind, width, decimals in (
                ("x", ogr.OFTReal, 0, 0), ("y", ogr.OFTReal, 0, 0),
                ("name", ogr.OFTString, 12, 0), ("rate", ogr.OFTReal, 0, 0),
                ("count", ogr.OFTInteger, 0, 0), ("day", ogr.OFTDate, 0, 0),
                ("big", ogr.OFTReal, 18, 2)):
            field = ogr.FieldDefn(name, kind)
            if width:
                field.SetWidth(width)
                field.SetPrecision(decimals)
            layer.CreateField(field)
        rows = [
            (-93.1234567890123, 42.5, "Alpha", 3.5, 7, "2004/03/09", 1234567890123.0),
            (-93.5, 42.25, "\u00e9t\u00e9 \u00c5", None, None, None, -9876543210987.25),
            (-94.0, 42.0, None, -12.25, 0, "2004/03/10", None),
            (-95.0, 41.0, "deleted", 1.0, 1, "2004/03/11", 1.0),
        ]
        for row in rows:
            feature = ogr.Feature(layer.GetLayerDefn())
            for name, value in zip(("x", "y", "name", "rate", "count", "day", "big"), row):
                if value is not None:
                    feature.SetField(name, value)
            layer.CreateFeature(feature)
        ds = None
        ds = gdal.OpenEx(source, gdal.OF_VECTOR | gdal.OF_UPDATE, open_options=["AUTO_REPACK=NO"])
        ds.GetLayer(0).DeleteFeature(3)
        ds = None

        expected = self.assert_faithful(source, ["x", "y", "name", "rate", "count", "day", "big"],
                                        1, 2)
        self.assertEqual(len(expected), 3)
        with open(self.path("out.cpg")) as f:
            self.assertEqual(f.read(), "UTF-8")
        # The deleted record comes back on request.
        status, stderr = run(source, self.path("kept.csv"), "--keep-deleted")
        self.assertEqual(status, 0, stderr)
        self.assertEqual(len(gdal_records(self.path("kept.csv"), ["name"])), 4)

    def test_table_written_by_pyshp(self):
        source = self.path("p")
        writer = shapefile.Writer(source, shapeType=shapefile.NULL)
        writer.field("X", "N", 19, 11)
        writer.field("Y", "N", 19, 11)
        writer.field("OK", "L")
        writer.field("DAY", "D")
        writer.field("RATE", "N", 10, 3)
        writer.field("TALLY", "N", 6, 0)
        for row in ((-93.25, 42.5, True, datetime.date(2004, 3, 9), 1.5, 12),
                    (-93.5, 42.75, False, None, None, None),
                    (-94.0, 43.0, None, datetime.date(2004, 3, 10), -0.125, -7),
                    (-94.5, 43.5, True, None, 2.0, 0)):
            writer.null()
            writer.record(*row)
        writer.close()
        self.assert_faithful(source + ".dbf", ["X", "Y", "OK", "DAY", "RATE", "TALLY"], 1, 2)

    def test_table_written_by_shapelib(self):
        source = self.path("s.dbf")
        subprocess.run(["dbfcreate", source, "-n", "LON", "14", "8", "-n", "LAT", "14", "8",
                        "-s", "NAME", "10", "-n", "RATE", "8", "2", "-n", "COUNT", "5", "0"],
                       check=True)
        for row in (("-93.25", "42.5", "Alpha", "3.5", "7"),
                    ("-93.5", "42.25", "", "", ""),
                    ("-94", "43", "Two Words", "-0.25", "12345")):
            subprocess.run(["dbfadd", source, *row], check=True)
        self.assert_faithful(source, ["LON", "LAT", "NAME", "RATE", "COUNT"], 1, 2)

    def test_text_with_a_byte_order_mark(self):
        source = self.path("a.csv")
        with open(source, "wb") as f:
            f.write(b"\xef\xbb\xbfLongitude,Latitude,Name,Value\r\n"
                    b"-93.1234567890123,42.9876543210987,Caf\xc3\xa9,-3.14159265358979\r\n"
                    b"-93.5,42.25,x,123456789012345\r\n")
        for out in ("out.shp", "out.csv"):
            with self.subTest(out=out):
                status, stderr = run(source, self.path(out))
                self.assertEqual(status, 0, stderr)
                got = gdal_records(self.path(out), ["Name", "Value"])
                self.assertEqual([r[:2] for r in got], [["Caf\u00e9", -3.14159265358979],
                                                        ["x", 123456789012345.0]])
                if out == "out.shp":
                    positions = [r[2] for r in got]
                else:
                    positions = [tuple(canonical(v) for v in r) for r in
                                 gdal_records(self.path(out), ["Longitude", "Latitude"])]
                self.assertEqual(positions, [(-93.1234567890123, 42.9876543210987),
                                             (-93.5, 42.25)])

    def test_dates_that_name_no_day(self):
        source = self.path("d.dbf")
        subprocess.run(["dbfcreate", source, "-s", "NAME", "4", "-s", "DAY", "8"], check=True)
        for row in (("a", "20040309"), ("b", "00000000"), ("c", "20040000"), ("d", "00010101")):
            subprocess.run(["dbfadd", source, *row], check=True)
        with open(source, "r+b") as f:  # DAY becomes a date field
            f.seek(32 + 32 + 11)
            f.write(b"D")
        status, stderr = run(source, self.path("out.dbf"))
        # "00000000" is how writers mark NULL; the other two name days no date can hold.
        self.assertEqual(status, 1)
        for record in (3, 4):
            self.assertIn("record %d of %s: the text of DAY is no value of its type" %
                          (record, source), stderr)
        self.assertNotIn("record 2 of", stderr)
        self.assertEqual(gdal_records(self.path("out.dbf"), ["NAME", "DAY"]),
                         [["a", (2004, 3, 9)], ["b", None], ["c", None], ["d", None]])

    def test_value_that_cannot_be_kept_is_named(self):
        source = self.path("long.csv")
        with open(source, "w") as f:
            f.write("Name,Note\nshort,ok\nlong," + "x" * 300 + "\n")
        status, stderr = run(source, self.path("out.dbf"))
        self.assertEqual(status, 1)
        self.assertIn("record 2 of " + source, stderr)
        self.assertIn("Note", stderr)
        self.assertEqual(gdal_records(self.path("out.dbf"), ["Note"])[1], ["x" * 254])

    def test_record_of_40000_bytes(self):
        source = self.path("wide.dbf")
        fields = []
        for i in range(160):
            fields += ["-s", "F%d" % i, "250"]
        subprocess.run(["dbfcreate", source, *fields], check=True)
        for text in ("one", "two"):
            subprocess.run(["dbfadd", source, *([text] * 160)], check=True)
        status, stderr = run(source, self.path("out.csv"))
        self.assertEqual(status, 0, stderr)
        self.assertEqual(gdal_records(self.path("out.csv"), ["F0", "F159"]),
                         [["one", "one"], ["two", "two"]])


def main():
    global TNW
    parser = argparse.ArgumentParser()
    parser.add_argument("--tnw", required=True)
    args, rest = parser.parse_known_args()
    TNW = os.path.abspath(args.tnw)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
