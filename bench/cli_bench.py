#!/usr/bin/env python3
"""W5: the tool end to end. `tnw convert` of a yield log with units in the header to a shapefile
set, against ogr2ogr with the CSV driver's X/Y options, in the same run. Prints the median wall
and CPU seconds (user + system of the child) of each, the peak memory, and the ratio.

    bench/cli_bench.py --tnw build/apps/tnw/tnw [-n 1000000] [-r 3] [-d folder]
"""
import argparse
import os
import random
import shutil
import statistics
import subprocess
import sys
import time

HEADER = "Longitude,Latitude,Yield (bu/ac),Moisture (%),Speed (mph),Elevation (ft),Crop\r\n"


def make_log(path, n):
    """A yield log like examples/yield.csv: passes of a combine over a field, fixed seed."""
    if os.path.exists(path) and os.path.getsize(path) > 0:
        return
    rng = random.Random(7)
    with open(path, "w", newline="") as f:
        f.write(HEADER)
        lines = []
        for i in range(n):
            lon = -93.64 + (i % 2000) * 0.0000062
            lat = 42.01 + (i // 2000) * 0.0000451
            lines.append(f"{lon:.7f},{lat:.7f},{140 + rng.random() * 60:.1f},"
                         f"{14 + rng.random() * 3:.1f},{3.5 + rng.random() * 1.5:.1f},"
                         f"{1015 + rng.random() * 15:.1f},{'Corn' if i % 3 else 'Soybeans'}\r\n")
            if len(lines) == 10000:
                f.writelines(lines)
                lines.clear()
        f.writelines(lines)


def run(args):
    """Wall seconds, CPU seconds and peak KiB of one child process."""
    start = time.monotonic()
    child = subprocess.Popen(args, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    wall = time.monotonic() - start
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{args[0]} failed with status {status}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tnw", required=True)
    parser.add_argument("-n", type=int, default=1000000)
    parser.add_argument("-r", type=int, default=3)
    parser.add_argument("-d", default="build-bench/cli-data")
    args = parser.parse_args()
    os.makedirs(args.d, exist_ok=True)
    log = os.path.join(args.d, f"yield-{args.n}.csv")
    make_log(log, args.n)

    out = os.path.join(args.d, "out")
    commands = {
        "tnw": [args.tnw, "convert", "-q", log, os.path.join(out, "tnw", "yield.shp")],
        "ogr2ogr": ["ogr2ogr", "-f", "ESRI Shapefile", os.path.join(out, "ogr", "yield.shp"), log,
                    "-oo", "X_POSSIBLE_NAMES=Longitude", "-oo", "Y_POSSIBLE_NAMES=Latitude",
                    "-oo", "AUTODETECT_TYPE=YES"],
    }
    if not shutil.which("ogr2ogr"):
        del commands["ogr2ogr"]
    results = {}
    for name, command in commands.items():
        runs = []
        for _ in range(args.r):
            shutil.rmtree(os.path.join(out, "tnw" if name == "tnw" else "ogr"), ignore_errors=True)
            os.makedirs(os.path.join(out, "tnw" if name == "tnw" else "ogr"), exist_ok=True)
            runs.append(run(command))
        results[name] = (statistics.median(r[0] for r in runs),
                         statistics.median(r[1] for r in runs), max(r[2] for r in runs))
    print(f"W5 tool end to end: {args.n:,} rows of {log}, median of {args.r} runs")
    print(f"  {'':9} {'wall s':>8} {'cpu s':>8} {'RSS peak':>10} {'x tnw':>14}")
    tnw_wall, tnw_cpu, _ = results["tnw"]
    for name, (wall, cpu, rss) in results.items():
        print(f"  {name:9} {wall:8.3f} {cpu:8.3f} {rss / 1024:6.1f} MiB "
              f"{wall / tnw_wall:6.2f} ({cpu / tnw_cpu:.2f})")
    if "ogr2ogr" in results:
        ratio = results["ogr2ogr"][1] / tnw_cpu
        print(f"  target  ogr2ogr / tnw cpu >= 13: {ratio:.2f}, {'met' if ratio >= 13 else 'missed'}")


if __name__ == "__main__":
    sys.exit(main())
