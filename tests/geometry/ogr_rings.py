"""Prints the geometry of each feature of a shapefile set as GDAL reads it, one line per
feature: polygons (or lines) separated by " / ", the rings of a polygon by " | ", the points of
a ring or line by "," with each coordinate as %.17g; then every message GDAL gave."""
import sys

from osgeo import gdal, ogr

messages = []
gdal.PushErrorHandler(lambda level, number, text: messages.append(text))
source = ogr.Open(sys.argv[1])
if source is None:
    print("cannot open")
    sys.exit(1)


def points(curve):
    return ",".join("%.17g %.17g" % curve.GetPoint_2D(i) for i in range(curve.GetPointCount()))


def members(geometry):
    flat = ogr.GT_Flatten(geometry.GetGeometryType())
    if flat in (ogr.wkbMultiPolygon, ogr.wkbMultiLineString):
        return [geometry.GetGeometryRef(i) for i in range(geometry.GetGeometryCount())]
    return [geometry]


def member_text(member):
    if ogr.GT_Flatten(member.GetGeometryType()) == ogr.wkbPolygon:
        return " | ".join(points(member.GetGeometryRef(i)) for i in range(member.GetGeometryCount()))
    return points(member)


for feature in source.GetLayer(0):
    geometry = feature.GetGeometryRef()
    print(" / ".join(member_text(m) for m in members(geometry)) if geometry else "None")
for text in messages:
    print("GDAL:", text)
