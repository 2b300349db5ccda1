"""Prints a shapefile set as GDAL reads it: a line of field definitions (name:type:width:precision),
then one line per feature (its geometry as WKT, then the repr of each field), then every message
GDAL gave while reading."""
import sys

from osgeo import gdal, ogr

# The sets carry no code page of their own; their text is the narrow code page, Windows-1252.
gdal.SetConfigOption("SHAPE_ENCODING", "CP1252")
messages = []
gdal.PushErrorHandler(lambda level, number, text: messages.append(text))
source = ogr.Open(sys.argv[1])
if source is None:
    print("cannot open")
    sys.exit(1)
layer = source.GetLayer(0)
definition = layer.GetLayerDefn()
fields = [definition.GetFieldDefn(i) for i in range(definition.GetFieldCount())]
print("|".join(f"{f.GetName()}:{f.GetTypeName()}:{f.GetWidth()}:{f.GetPrecision()}" for f in fields))
for feature in layer:
    geometry = feature.GetGeometryRef()
    values = [repr(feature.GetField(i)) for i in range(len(fields))]
    print("|".join([geometry.ExportToIsoWkt() if geometry else "None"] + values))
for text in messages:
    print("GDAL:", text)
