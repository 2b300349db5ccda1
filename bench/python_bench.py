#!/usr/bin/python3
"""W1 (write 1,000,000 points), W3 (read the W1 dBase table) and W4 (read the W4 CSV file) from
Python: the tnw module against GDAL's Python bindings and pyshp (W4: the csv module, as pyshp
reads no CSV). Each implementation and workload runs in a child process of its own; the table
shows median wall and CPU seconds and the child's peak resident set. Every implementation must
compute the workload's checksum (W1: of the table it wrote) or the run fails.

    bench/python_bench.py [-n N] [-r RUNS] [-w W1,W3,W4] [-i tnw,gdal,pyshp] [-d FOLDER]

Run by scripts/bench-python.sh, which builds the module in Release first.
"""

import argparse
import json
import os
import resource
import statistics
import subprocess
import sys
import time

CROPS = ("CORN", "SOYBEANS", "WINTER WHEAT")
W1_FIELDS = (("Elevation", 8, 1), ("Width", 6, 2), ("Distance", 8, 3), ("Duration", 6, 2),
             ("UTC", 12, 0), ("Engaged", 1, 0), ("Mappable", 4, 0), ("Crop", 16, 0))
EXPECTED = {  # at N = 1,000,000
    "W3": "records=1000000 dsum=514689399.99999976 isum=1700500057896000",
    "W4": "records=1000000 dsum=466688994.49998355 isum=1700500064900000",
}


def w1_records(n):
    """The W1 record i: (x, y), then the eight field values."""
    for i in range(n):
        yield ((-96.0 + i * 1e-6, 40.0 + (i % 1000) * 1e-5),
               ((2500 + i % 5000) / 10.0, (900 + i % 300) / 100.0,
                (1000 + (i * 7) % 4000) / 1000.0, (100 + i % 50) / 100.0, 1700000000 + i,
                i % 10 != 0, i % 100, CROPS[(i // 1000) % 3]))


def checksum(records, dsum, isum):
    return f"records={records} dsum={dsum:.17g} isum={isum}"


# ---- tnw ----

def tnw_w1(base, n):
    import tnw
    columns = tnw.tnwColumns()
    for (key, size, decimals), kind in zip(W1_FIELDS, (tnw.vtDouble,) * 4 + (
            tnw.vtInt32, tnw.vtBoolean, tnw.vtInt32, tnw.vtString)):
        columns.Add(key, type=kind, size=size, precision=decimals)
    rows = ((values, xy) for xy, values in w1_records(n))
    with tnw.tnwShapeEncoder() as encoder:
        source = tnw.tnwRecordSource(columns, rows, tnw.tnwGeometryPoint, n)
        if not encoder.ImportRS(base + ".shp", source) or tnw.error_reports():
            raise RuntimeError(f"tnw: {tnw.error_reports()[:1]}")


def tnw_w3(path):
    import numpy as np
    import tnw
    t = tnw.read_table(path)
    decimals = np.column_stack([t["Elevation"], t["Width"], t["Distance"], t["Duration"]])
    dsum = float(np.cumsum(decimals.ravel())[-1]) if len(decimals) else 0.0  # in record order
    isum = (int(t["UTC"].astype(np.int64).sum()) + int(t["Mappable"].astype(np.int64).sum())
            + int(t["Engaged"].sum()) + sum(map(len, map(str.strip, t["Crop"]))))
    return checksum(len(t["Crop"]), dsum, isum)


def tnw_w4(path):
    import numpy as np
    import tnw
    kinds = dict.fromkeys(("lon", "lat", "elevation", "width", "distance", "duration"), float)
    kinds.update(utc=int, mappable=int, speed=float, name=str)
    t = tnw.read_table(path, kinds)
    numbers = np.column_stack([t[k] for k in ("lon", "lat", "elevation", "width", "distance",
                                              "duration", "speed")])
    dsum = float(np.cumsum(numbers.ravel())[-1]) if len(numbers) else 0.0
    isum = int(t["utc"].sum()) + int(t["mappable"].sum()) + sum(map(len, t["name"]))
    return checksum(len(t["name"]), dsum, isum)


# ---- GDAL ----

def gdal_w1(base, n):
    from osgeo import ogr, osr
    ogr.UseExceptions()
    driver = ogr.GetDriverByName("ESRI Shapefile")
    source = driver.CreateDataSource(base + ".shp")
    layer = source.CreateLayer("points", osr.SpatialReference(), ogr.wkbPoint)
    for key, size, decimals in W1_FIELDS:
        kind = ogr.OFTString if key == "Crop" else ogr.OFTInteger if decimals == 0 else ogr.OFTReal
        field = ogr.FieldDefn(key, kind)
        if key == "Engaged":
            field.SetSubType(ogr.OFSTBoolean)
        field.SetWidth(size)
        field.SetPrecision(decimals)
        layer.CreateField(field)
    feature = ogr.Feature(layer.GetLayerDefn())
    point = ogr.Geometry(ogr.wkbPoint)
    for (x, y), values in w1_records(n):
        for index, value in enumerate(values):
            feature.SetField(index, value)
        point.SetPoint_2D(0, x, y)
        feature.SetGeometry(point)
        layer.CreateFeature(feature)
    source = None


def gdal_w3(path):
    from osgeo import ogr
    source = ogr.Open(path)  # the layer lives only as long as its source
    layer = source.GetLayer()
    records, dsum, isum = 0, 0.0, 0
    for f in layer:
        records += 1
        dsum += f.GetFieldAsDouble(0)
        dsum += f.GetFieldAsDouble(1)
        dsum += f.GetFieldAsDouble(2)
        dsum += f.GetFieldAsDouble(3)
        isum += f.GetFieldAsInteger64(4) + f.GetFieldAsInteger64(6)
        isum += f.GetFieldAsString(5)[:1] in ("T", "t", "Y", "y", "1")
        isum += len(f.GetFieldAsString(7).strip())
    return checksum(records, dsum, isum)


def gdal_w4(path):
    from osgeo import ogr
    source = ogr.Open(path)
    layer = source.GetLayer()
    records, dsum, isum = 0, 0.0, 0
    for f in layer:
        records += 1
        for index in (0, 1, 2, 3, 4, 5, 8):
            dsum += f.GetFieldAsDouble(index)
        isum += f.GetFieldAsInteger64(6) + f.GetFieldAsInteger64(7) + len(f.GetFieldAsString(9))
    return checksum(records, dsum, isum)


# ---- pyshp, and the csv module for W4 ----

def pyshp_w1(base, n):
    import shapefile
    with shapefile.Writer(base, shapeType=shapefile.POINT) as writer:
        for key, size, decimals in W1_FIELDS:
            kind = "C" if key == "Crop" else "L" if key == "Engaged" else "N"
            writer.field(key, kind, size, decimals)
        for (x, y), values in w1_records(n):
            writer.point(x, y)
            writer.record(*values)


def pyshp_w3(path):
    import shapefile
    with open(path, "rb") as table:
        reader = shapefile.Reader(dbf=table)
        records, dsum, isum = 0, 0.0, 0
        for r in reader.iterRecords():
            records += 1
            dsum += r[0]
            dsum += r[1]
            dsum += r[2]
            dsum += r[3]
            isum += r[4] + r[6] + (r[5] is True) + len(r[7].strip())
    return checksum(records, dsum, isum)


def csv_w4(path):
    import csv
    records, dsum, isum = 0, 0.0, 0
    with open(path, newline="") as text:
        rows = csv.reader(text)
        next(rows)
        for r in rows:
            records += 1
            for index in (0, 1, 2, 3, 4, 5, 8):
                dsum += float(r[index])
            isum += int(r[6]) + int(r[7]) + len(r[9])
    return checksum(records, dsum, isum)


IMPLEMENTATIONS = {
    "W1": {"tnw": tnw_w1, "gdal": gdal_w1, "pyshp": pyshp_w1},
    "W3": {"tnw": tnw_w3, "gdal": gdal_w3, "pyshp": pyshp_w3},
    "W4": {"tnw": tnw_w4, "gdal": gdal_w4, "csv": csv_w4},
}


def table_checksum(path):
    """The W3 checksum of a written W1 table, read by the tnw module."""
    return tnw_w3(path)


MODULES = {"tnw": ("tnw", "numpy"), "gdal": ("osgeo.ogr",), "pyshp": ("shapefile",), "csv": ("csv",)}


def child(workload, name, n, runs, folder):
    function = IMPLEMENTATIONS[workload][name]
    for module in MODULES[name]:  # imported before the clock starts
        __import__(module)
    walls, cpus, result = [], [], None
    for _ in range(runs):
        if workload == "W1":
            base = os.path.join(folder, f"py-{name}-w1")
            for extension in (".shp", ".shx", ".dbf", ".prj", ".cpg", ".mcd"):
                if os.path.exists(base + extension):
                    os.remove(base + extension)
            os.sync()
            argument = (base, n)
        else:
            argument = (inputs(folder, n)[workload],)
        start, start_cpu = time.perf_counter(), time.process_time()
        result = function(*argument)
        walls.append(time.perf_counter() - start)
        cpus.append(time.process_time() - start_cpu)
    if workload == "W1":
        result = table_checksum(os.path.join(folder, f"py-{name}-w1.dbf"))
    print(json.dumps({"wall": walls, "cpu": cpus, "result": result}))


def inputs(folder, n):
    os.makedirs(os.path.join(folder, "inputs"), exist_ok=True)
    return {"W3": os.path.join(folder, "inputs", f"py-w3-{n}.dbf"),
            "W4": os.path.join(folder, "inputs", f"w4-{n}.csv")}


def make_inputs(folder, n):
    """The W3 table (the W1 table as pyshp writes it) and the W4 CSV file, where missing."""
    paths = inputs(folder, n)
    if not os.path.exists(paths["W3"]):
        base = paths["W3"][:-4]
        pyshp_w1(base, n)
    if not os.path.exists(paths["W4"]):
        with open(paths["W4"], "w", newline="") as text:
            text.write("lon,lat,elevation,width,distance,duration,utc,mappable,speed,name\r\n")
            for i, ((x, y), v) in enumerate(w1_records(n)):
                text.write("%.6f,%.5f,%.1f,%.2f,%.3f,%.2f,%d,%d,%.2f,\"Field %d, Pass %d\"\r\n" % (
                    x, y, v[0], v[1], v[2], v[3], v[4], v[6], (300 + i % 900) / 100.0,
                    (i // 1000) % 100, i % 7))
    for path in paths.values():  # into the page cache
        with open(path, "rb") as f:
            while f.read(1 << 20):
                pass


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("-n", type=int, default=1000000)
    parser.add_argument("-r", "--runs", type=int, default=3)
    parser.add_argument("-w", "--workloads", default="W1,W3,W4")
    parser.add_argument("-i", "--implementations", default="tnw,gdal,pyshp,csv")
    parser.add_argument("-d", "--folder", default="build-bench/bench-data")
    parser.add_argument("--child", nargs=2)
    parser.add_argument("--make-inputs", action="store_true")
    args = parser.parse_args()
    if args.child:
        child(*args.child, args.n, args.runs, args.folder)
        return 0
    if args.make_inputs:
        make_inputs(args.folder, args.n)
        return 0
    # In a child of its own: a child's peak resident set starts from its parent's at the fork.
    subprocess.run([sys.executable, __file__, "--make-inputs", "-n", str(args.n), "-d",
                    args.folder], check=True)
    failed = False
    for workload in args.workloads.split(","):
        names = [x for x in args.implementations.split(",") if x in IMPLEMENTATIONS[workload]]
        print(f"\n{workload} from Python: {args.n:,} records, median of {args.runs} runs")
        print(f"  {'':8}{'wall s':>9}{'cpu s':>9}{'records/s':>12}{'RSS peak':>11}{'x tnw':>15}")
        rows, results = [], {}
        for name in names:
            process = subprocess.Popen(
                [sys.executable, __file__, "--child", workload, name, "-n", str(args.n), "-r",
                 str(args.runs), "-d", args.folder], stdout=subprocess.PIPE)
            output = process.stdout.read()
            _, status, usage = os.wait4(process.pid, 0)
            if status != 0:
                print(f"  {name}: failed")
                failed = True
                continue
            data = json.loads(output)
            results[name] = data["result"]
            rows.append((name, statistics.median(data["wall"]), statistics.median(data["cpu"]),
                         usage.ru_maxrss / 1024))
        base = next((r for r in rows if r[0] == "tnw"), None)
        for name, wall, cpu, rss in rows:
            ratio = f"{wall / base[1]:.2f} ({cpu / base[2]:.2f})" if base else ""
            print(f"  {name:8}{wall:9.3f}{cpu:9.3f}{args.n / wall / 1e6:10.2f} M"
                  f"{rss:7.1f} MiB{ratio:>15}")
        expected = EXPECTED.get("W3" if workload == "W1" else workload) if args.n == 1000000 else None
        for name, result in results.items():
            if result != (expected or next(iter(results.values()))):
                print(f"  {name}: checksum {result}, expected {expected or 'agreement'}")
                failed = True
        print(f"  checksum: {next(iter(results.values()), '')}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
