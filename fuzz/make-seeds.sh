#!/usr/bin/env bash
# Makes the seed corpora in fuzz/corpus/ from small valid files: written by this library (through
# the tnw tool), by GDAL (ogr2ogr) and by shapelib, plus a few hand-made edge cases.
#   fuzz/make-seeds.sh [path/to/tnw]      (default: build-robust/apps/tnw/tnw)
# Needs gdal-bin, shapelib and python3. The seeds are committed; run this again after a format
# change.
set -euo pipefail
cd "$(dirname "$0")/.."
tnw=${1:-build-robust/apps/tnw/tnw}
[[ -x $tnw ]] || { echo "no tnw tool at $tnw" >&2; exit 2; }

corpus=fuzz/corpus
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$corpus"/{dbf,delimited,gpl,shape_details,wkt,shape_writer,convert,fgp}

# ---- Small inputs ----
printf 'Longitude,Latitude,Yield (bu/ac),Moisture (%%),Crop,Flag\r\n-93.25,42.5,180.5,15.1,"Corn",T\r\n-93.26,42.51,.5,-2,"Soy, beans",F\r\n0,0,1E+20,&H10,"",N\r\n' \
    >"$work/points.csv"
cat >"$work/shapes.csv" <<'EOF'
Name,Rate (gal/ac),Geometry
"square",12.5,"POLYGON((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 2))"
"two",7,"MULTIPOLYGON(((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5)))"
EOF
cat >"$work/lines.csv" <<'EOF'
Name,Geometry
"road","LINESTRING(-93.1 42.1,-93.2 42.2,-93.3 42.25)"
"roads","MULTILINESTRING((0 0,1 1),(2 2,3 3,4 2))"
EOF
cat >"$work/multi.csv" <<'EOF'
Name,Geometry
"pair","MULTIPOINT((1 2),(3 4))"
"one","MULTIPOINT(5 6)"
EOF

# ---- dBase tables ----
"$tnw" -q convert --header-rows 1 "$work/points.csv" "$work/lib_points.shp"
"$tnw" -q convert --header-rows 1 --wkt-col 3 "$work/shapes.csv" "$work/lib_polygons.shp"
"$tnw" -q convert --header-rows 1 --wkt-col 2 --geometry line "$work/lines.csv" "$work/lib_lines.shp"
"$tnw" -q convert --header-rows 1 --wkt-col 2 --geometry multipoint "$work/multi.csv" \
    "$work/lib_multipoints.shp"
"$tnw" -q convert --header-rows 1 --geometry none "$work/points.csv" "$work/lib_table.dbf"
cp "$work/lib_points.dbf" "$work/lib_table.dbf" "$corpus/dbf/"

# GDAL: typed fields from a .csvt, logicals written as T/F, dates as yyyymmdd.
cat >"$work/typed.csv" <<'EOF'
id,name,rate,day,ok
1,Alpha,12.25,2004/03/09,1
2,Beta Gamma,-0.5,1999/12/31,0
3,,1e+20,,
EOF
echo '"Integer","String(12)","Real(10.3)","Date","Integer(Boolean)"' >"$work/typed.csvt"
ogr2ogr -q -f "ESRI Shapefile" "$work/gdal_typed.dbf" "$work/typed.csv"
cp "$work/gdal_typed.dbf" "$corpus/dbf/"

# shapelib: dbfcreate and dbfadd.
dbfcreate "$work/shapelib_table" -s NAME 10 -n VALUE 8 3 -n COUNT 5 0
dbfadd "$work/shapelib_table" "North" 1.5 3
dbfadd "$work/shapelib_table" "South field" -22.125 12345
cp "$work/shapelib_table.dbf" "$corpus/dbf/"

# Hand-made: a duplicate name, a memo and a float field, a deleted record, a name with a
# leading backslash, eleven name bytes without a NUL, a short numeric date.
python3 - "$corpus/dbf/edge_cases.dbf" <<'EOF'
import struct, sys
fields = [(b"NAME", b"C", 6, 0), (b"NAME", b"C", 3, 0), (b"\\MEMO", b"M", 4, 0),
          (b"Swath_Width", b"F", 5, 2), (b"DAY", b"D", 8, 0), (b"OK", b"L", 1, 0)]
records = [b" Alpha Z  1 0.500200403Y", b"*Beta   B 2  -1.5200406 N", b" Gamma  Q 3 abc  2004  ?"]
record_length = 1 + sum(f[2] for f in fields)
header_length = 32 + 32 * len(fields) + 1
out = struct.pack("<B3BIHH20x", 3, 95, 3, 31, len(records), header_length, record_length)
for name, kind, width, decimals in fields:
    out += name.ljust(11, b"\0")[:11] + kind + b"\0" * 4 + bytes([width, decimals]) + b"\0" * 14
out += b"\r" + b"".join(r.ljust(record_length)[:record_length] for r in records) + b"\x1a"
open(sys.argv[1], "wb").write(out)
EOF

# At the limits: 1,022 fields (a header of 32,737 bytes), the most a table can have.
python3 - "$corpus/dbf/fields_1022.dbf" <<'EOF'
import struct, sys
fields = 1022
header_length = 32 + 32 * fields + 1
out = struct.pack("<B3BIHH20x", 3, 95, 3, 31, 2, header_length, 1 + fields)
for i in range(fields):
    out += ("F%d" % i).encode().ljust(11, b"\0") + b"N" + b"\0" * 4 + bytes([1, 0]) + b"\0" * 14
out += b"\r" + b" " + b"7" * fields + b" " + b"-" * fields + b"\x1a"
open(sys.argv[1], "wb").write(out)
EOF

# ---- Shape details: main headers of every kind ----
for kind in points polygons lines multipoints; do cp "$work/lib_$kind.shp" "$corpus/shape_details/"; done
ogr2ogr -q -f "ESRI Shapefile" -nlt POINTZ -dialect SQLite \
    -sql "SELECT MakePointZ(-93.25, 42.5, 300.0) AS geometry, 1 AS id" "$work/gdal_pointz.shp" \
    "$work/typed.csv"
ogr2ogr -q -f "ESRI Shapefile" -nlt POLYGON -a_srs EPSG:32615 -dialect SQLite \
    -sql "SELECT GeomFromText('POLYGON((500000 4600000,500100 4600000,500100 4600100,500000 4600000))') AS geometry" \
    "$work/gdal_utm.shp" "$work/typed.csv"
cp "$work/gdal_pointz.shp" "$work/gdal_utm.shp" "$corpus/shape_details/"
shpcreate "$work/shapelib_arc" arc
shpadd "$work/shapelib_arc" 0 0 100 100 200 50
cp "$work/shapelib_arc.shp" "$corpus/shape_details/"
head -c 60 "$work/lib_points.shp" >"$corpus/shape_details/truncated.shp"

# ---- Delimited text: three set-up bytes, then the text (see FuzzDelimited.cpp) ----
# set-up byte 0: delimiter index + 8 * header rows; byte 1: flags; byte 2: fixed widths.
delimited() {  # name, three set-up bytes as \x escapes, file
    { printf "$2"; cat "$3"; } >"$corpus/delimited/$1"
}
"$tnw" -q convert --header-rows 1 "$work/points.csv" "$work/lib_lonlat.csv"
"$tnw" -q convert --header-rows 1 --wkt-col 3 "$work/shapes.csv" "$work/lib_wkt.txt" --delimiter ';'
"$tnw" -q convert --no-header "$work/lib_points.dbf" "$work/lib_noheader.tsv" --delimiter tab
ogr2ogr -q -f CSV -lco GEOMETRY=AS_WKT -lco LINEFORMAT=CRLF "$work/gdal_wkt.csv" \
    "$work/lib_polygons.shp"
delimited lib_lonlat '\x08\x22\x00' "$work/lib_lonlat.csv"
delimited lib_wkt_semicolon '\x09\x42\x00' "$work/lib_wkt.txt"
delimited lib_noheader_tab '\x02\x20\x00' "$work/lib_noheader.tsv"
delimited gdal_wkt '\x08\x43\x00' "$work/gdal_wkt.csv"
printf '00012  12345\r\n00013 1234.5\r\n9\r\n' >"$work/fixed.txt"
delimited fixed_width '\x03\x08\x35' "$work/fixed.txt"
printf '"a,b",c\r\n"  a  " , b\r\n"say ""hi""",2\r\nabc"\r\n5" pipe,7,8\r\na"b",c"d,e\r\n,,\r\n\r\n' \
    >"$work/quotes.txt"
delimited quotes '\x00\x01\x00' "$work/quotes.txt"
printf 'Rate,Rate,Rate_1,X,Y,Yield (bu/ac) wet,(ft),Speed ()\r\n1,2,3,4,5,6,7,8\n9,10\r' \
    >"$work/headers.txt"
delimited duplicate_headers '\x08\x03\x00' "$work/headers.txt"
# Lines of 32,766 and 32,767 characters: the longest that parses and the first that does not.
# Cells of distinct numbers, so that a header made of them names no column twice.
python3 -c '
import sys
line = ",".join(str(i) for i in range(8000))[:32766]
sys.stdout.write(line + "\r\n" + line + "7\r\n9\r\n")' >"$work/long_lines.txt"
delimited long_lines '\x00\x20\x00' "$work/long_lines.txt"

# ---- Well-known text ----
wkt() { printf '%s' "$2" >"$corpus/wkt/$1"; }
wkt point 'POINT (-93.25 42.5)'
wkt point_zm 'point zm (1 2 3 4)'
wkt point_empty 'POINT EMPTY'
wkt linestring_z 'LINESTRING Z (0 0 1,1 1 2,2 0 3)'
wkt polygon_holes 'POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 2))'
wkt multipoint_both 'MULTIPOINT ((1 2),(3 4),EMPTY)'
wkt multipoint_bare 'MULTIPOINT (1 2,3 4)'
wkt multilinestring 'MULTILINESTRING ((0 0,1 1),EMPTY,(2 2,3 3))'
wkt multipolygon 'MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5),(5.2 5.2,5.4 5.2,5.4 5.4,5.2 5.2)))'
wkt collection 'GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1),GEOMETRYCOLLECTION (POLYGON EMPTY))'
wkt numbers 'LINESTRING (1.7976931348623157e308 -4.9e-324,-0 .5,1E+20 -12.5e2)'
ogrinfo -al -q -geom=ISO_WKT "$work/gdal_pointz.shp" | sed -n 's/^ *\(POINT.*\)/\1/p' | head -1 \
    | tr -d '\n' >"$corpus/wkt/gdal_pointz"
ogrinfo -al -q "$work/lib_polygons.shp" | sed -n 's/^ *\(\(MULTI\)\?POLYGON.*\)/\1/p' | head -1 \
    | tr -d '\n' >"$corpus/wkt/gdal_polygon"

# ---- Shape writer: a geometry type byte, then well-known text (see FuzzShapeWriter.cpp) ----
# Each text goes to the set of its own kind; collections and empties to a polygon set.
for f in "$corpus"/wkt/*; do
    case $(basename "$f") in
        point*) type=1 ;; line* | multiline* | gdal_line*) type=2 ;; multipoint*) type=4 ;; *) type=3 ;;
    esac
    { printf "\\x0$type"; cat "$f"; } >"$corpus/shape_writer/$(basename "$f")"
done

# ---- Convert: a set-up byte, then a table or a text (see FuzzConvert.cpp) ----
for f in lib_points gdal_typed shapelib_table edge_cases; do
    { printf '\x00'; cat "$corpus/dbf/$f.dbf"; } >"$corpus/convert/table_$f"
done
{ printf '\x01'; cat "$work/lib_lonlat.csv"; } >"$corpus/convert/text_lonlat"
{ printf '\x0f'; cat "$work/shapes.csv"; } >"$corpus/convert/text_polygons"
{ printf '\x0b'; cat "$work/lines.csv"; } >"$corpus/convert/text_lines"

# ---- GPL logs: a companion table's length (2 bytes, little-endian), the table, the log (see
# FuzzGPL.cpp) ----
python3 - "$corpus/gpl" <<'EOF'
import os, struct, sys
out = sys.argv[1]
top = (b"GPL11\r\nTime , Latitude, Longitude, Elevation, SampleID, GPSQuality, Hoffset, HOffsetDir, "
       b"RecordID, GPSSpeed, GPSHeading, Rate(RX), Rate(Actual), Swath(Actual)\r\n\r\n")
def line(time, record=b"1"):
    return b"%d, 42.5,-93.25, 300,1,2,0,x,%s,0, 90,0,0,0\r\n" % (time, record)
def table(count=None):
    fields = [(b"NAME", b"C", 6, 0), (b"RATE", b"N", 6, 1), (b"Swath", b"N", 4, 0)]
    rows = [b" one      1.5  10", b" two      2.5  20", b" three    3.5  30"]
    length = 1 + sum(f[2] for f in fields)
    head = struct.pack("<B3BIHH20x", 3, 95, 3, 31, len(rows) if count is None else count,
                       32 + 32 * len(fields) + 1, length)
    for name, kind, width, decimals in fields:
        head += name.ljust(11, b"\0") + kind + b"\0" * 4 + bytes([width, decimals]) + b"\0" * 14
    return head + b"\r" + b"".join(rows) + b"\x1a"
def seed(name, log, companion=b""):
    with open(os.path.join(out, name), "wb") as f:
        f.write(struct.pack("<H", len(companion)) + companion + log)
seed("five_lines", b"GPL11\r\nTime , Latitude\r\nSTAR\r\n" + line(61) + b"STOP here\r\n")
seed("commands", top + b"star\r\nSTOP\r\n" + line(1) + b"STARTED\r\n" + line(2) + b"STOPPED\r\n"
     + line(3) + b"STAR\r\n1,2,3\r\n  \r\n")
joined = top + b"STAR\r\n" + b"".join(line(1, r) for r in [b"0", b"2", b"2", b"1", b"3", b"4", b"9", b"1e9"])
seed("join", joined, table())
seed("join_truncated", joined, table(1000))
seed("join_cut", joined, table()[:-8])
seed("writer_only", top + line(86461) + line(5))
# ---- FGP sets: <fdt length LE16><fsn length LE16><set-up byte>, the tables, the main file
# (see FuzzFGP.cpp), written with the example generator's writers ----
python3 - "$corpus/fgp" "$work" <<'EOF'
import os, struct, sys
sys.path.insert(0, "scripts")
from make_examples import write_dbf, write_fgp

folder, work = sys.argv[1], sys.argv[2]

def p(fsn, attr, lon, lat, time=3600.0):
    return (fsn, attr, 7, time, lon, lat, 250.0, 90.0)

def seed(name, setup, regions, lines, points, fdt, fsn):
    parts = []
    for ext, (fields, rows) in (("fdt", fdt), ("fsn", fsn)):
        write_dbf(os.path.join(work, "seed." + ext), fields, rows)
        parts.append(open(os.path.join(work, "seed." + ext), "rb").read())
    write_fgp(os.path.join(work, "seed.fgp"), regions, lines, points)
    with open(os.path.join(folder, name), "wb") as out:
        out.write(struct.pack("<HHB", len(parts[0]), len(parts[1]), setup) + parts[0] + parts[1])
        out.write(open(os.path.join(work, "seed.fgp"), "rb").read())

fdt = ([("Date", "D", 8, 0), ("Crop", "C", 6, 0)], [("20060415", "corn"), ("", "soy")])
fsn = ([("Rate", "N", 6, 1), ("Rx_Rate", "N", 6, 1), ("Swath_Width", "N", 6, 1), ("NDVI", "N", 5, 3)],
       [("1.5", "2", "9.1", ".5"), ("2.5", "2", "9.1", ".61")])
seed("sites", 0, [[p(0, 0, -96.5, 40.25), p(0, 0, -96.25, 40.25), p(0, 0, -96.25, 40.5)]],
     [[p(1, 1, 1, 2), p(2, 2, 1.5, 2.5)], [], [p(3, 1, 2, 3, 1145062800.0)]], [p(2, 0, 0, 0)], fdt, fsn)
seed("whole_lines", 3, [[]], [[p(1, 1, 1, 2)]], [p(9, 9, 1E20, -1)], fdt, ([("Rate", "C", 4, 0)], [("high",)]))
seed("empty", 0, [], [], [], fdt, fsn)
EOF

echo "seeds: $(find "$corpus" -type f | wc -l) files in $corpus"
