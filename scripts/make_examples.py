#!/usr/bin/env python3
"""Writes the bundled example data to examples/ (or the folder given as the first argument).

examples/yield.csv       a combine's yield log: one point every 2 seconds over a 40-acre corn
                         field in central Iowa, harvested in north-south passes of a 40 ft head
examples/boundaries.csv  field boundaries as well-known text: the logged field with a pond cut
                         out of it, a neighbouring field, and a field split in two by a creek
examples/spray.fgp       an FGP set of a sprayer on the same field (docs/fgp-format.md): the field
                         and the pond as regions, eight spray passes as lines logged every 4
                         seconds, five scouting points; with spray.fsn (rates, swath, NDVI per
                         point) and spray.fdt (date, product and operator of each of two days)

The seed is fixed, so the files come out the same byte for byte on every run.
"""

import datetime
import math
import os
import random
import struct
import sys

SEED = 20240917

# Field corner (south-west) and size.
ORIGIN_LON = -93.6342
ORIGIN_LAT = 42.0187
FIELD_WIDTH_M = 402.0  # east-west
FIELD_HEIGHT_M = 402.0  # north-south
SWATH_M = 12.192  # 40 ft head
LOG_INTERVAL_S = 2.0

M_PER_DEG_LAT = 111_132.0
M_PER_DEG_LON = 111_320.0 * math.cos(math.radians(ORIGIN_LAT))

# A pond near the north-east corner: no crop, so the combine lifts the head across it.
POND_CENTRE = (318.0, 300.0)
POND_RADII = (34.0, 22.0)


def to_lonlat(x, y):
    return ORIGIN_LON + x / M_PER_DEG_LON, ORIGIN_LAT + y / M_PER_DEG_LAT


def in_pond(x, y):
    dx = (x - POND_CENTRE[0]) / POND_RADII[0]
    dy = (y - POND_CENTRE[1]) / POND_RADII[1]
    return dx * dx + dy * dy <= 1.0


def elevation_ft(x, y):
    """A gentle slope to the north-east with a swale running through the middle."""
    slope = 1022.0 - 0.012 * x - 0.018 * y
    swale = -4.5 * math.exp(-(((x - 0.55 * y - 110.0) / 45.0) ** 2))
    return slope + swale


def potential_yield(x, y):
    """Yield potential in bu/ac: good ground, a poorer sandy knoll, a wet swale."""
    base = 192.0
    base += 12.0 * math.sin(x / 95.0) * math.cos(y / 130.0)
    base -= 38.0 * math.exp(-(((x - 90.0) ** 2 + (y - 80.0) ** 2) / (2 * 55.0**2)))  # knoll
    wet = math.exp(-(((x - 0.55 * y - 110.0) / 45.0) ** 2))
    base -= 25.0 * wet
    return base, wet


def yield_log(rng):
    rows = []
    passes = int(FIELD_WIDTH_M // SWATH_M)
    for lap in range(passes):
        x_centre = SWATH_M * (lap + 0.5)
        northward = lap % 2 == 0
        y = 3.0
        speed_mph = 4.6
        while y < FIELD_HEIGHT_M - 3.0:
            # Slow at the headlands, steady in the middle.
            edge = min(y, FIELD_HEIGHT_M - y)
            target = 3.2 if edge < 20.0 else 4.8
            speed_mph += 0.35 * (target - speed_mph) + rng.gauss(0.0, 0.08)
            speed_mph = max(2.5, min(6.0, speed_mph))
            step_m = speed_mph * 0.44704 * LOG_INTERVAL_S
            y_field = y if northward else FIELD_HEIGHT_M - y
            y += step_m
            x = x_centre + rng.gauss(0.0, 0.35)  # steering and GPS wander
            if in_pond(x, y_field):
                continue
            potential, wet = potential_yield(x, y_field)
            value = potential + rng.gauss(0.0, 7.5)
            if edge < 12.0:
                value *= 0.8  # the flow sensor lags as the head enters the crop
            moisture = 15.2 + 2.8 * wet + rng.gauss(0.0, 0.35)
            lon, lat = to_lonlat(x, y_field)
            rows.append(
                (
                    f"{lon:.7f}",
                    f"{lat:.7f}",
                    f"{max(value, 0.0):.1f}",
                    f"{moisture:.1f}",
                    f"{speed_mph:.1f}",
                    f"{elevation_ft(x, y_field) + rng.gauss(0.0, 0.15):.1f}",
                    "Corn",
                )
            )
    return rows


def ring_area_m2(ring):
    """Shoelace area of a ring in metres (positive when counter-clockwise)."""
    total = 0.0
    for (x1, y1), (x2, y2) in zip(ring, ring[1:]):
        total += x1 * y2 - x2 * y1
    return total / 2.0


def ellipse(centre, radii, n, clockwise):
    points = []
    for k in range(n):
        angle = 2.0 * math.pi * k / n
        points.append((centre[0] + radii[0] * math.cos(angle), centre[1] + radii[1] * math.sin(angle)))
    if clockwise:
        points.reverse()
    return points + [points[0]]


def closed(points):
    return points + [points[0]]


def ring_wkt(ring):
    return "(" + ",".join("%.7f %.7f" % to_lonlat(x, y) for x, y in ring) + ")"


def acres(rings):
    """Exterior area less the holes, in acres."""
    exterior, *holes = rings
    area = abs(ring_area_m2(exterior)) - sum(abs(ring_area_m2(h)) for h in holes)
    return area / 4046.8564224


def boundaries():
    # Exterior rings counter-clockwise and holes clockwise, as well-known text usually has
    # them: the shapefile writer has to turn both around.
    home = [
        closed([(-2.0, -2.0), (404.0, -2.0), (404.0, 404.0), (210.0, 406.0), (-2.0, 404.0)]),
        ellipse(POND_CENTRE, (POND_RADII[0] - 4.0, POND_RADII[1] - 4.0), 16, clockwise=True),
    ]
    east = [
        closed([(430.0, -2.0), (835.0, -6.0), (841.0, 260.0), (760.0, 410.0), (432.0, 404.0)]),
    ]
    creek_north = [
        closed([(-2.0, 440.0), (404.0, 436.0), (404.0, 700.0), (-2.0, 705.0)]),
    ]
    creek_south_side = [
        closed([(-2.0, 725.0), (404.0, 720.0), (410.0, 845.0), (120.0, 860.0), (-2.0, 842.0)]),
    ]
    rows = []
    for name, crop, polygons in (
        ("Home 40", "Corn", [home]),
        ("East 40", "Soybeans", [east]),
        ("Creek", "Corn", [creek_north, creek_south_side]),
    ):
        area = sum(acres(p) for p in polygons)
        if len(polygons) == 1:
            wkt = "POLYGON(" + ",".join(ring_wkt(r) for r in polygons[0]) + ")"
        else:
            wkt = "MULTIPOLYGON(" + ",".join(
                "(" + ",".join(ring_wkt(r) for r in p) + ")" for p in polygons
            ) + ")"
        rows.append((name, f"{area:.2f}", f'"{wkt}"', crop))
    return rows


FGP_MAGIC = b"\x89FGP\r\n\x1a\n"


def write_fgp(path, regions, lines, points):
    """The main file of an FGP set. Each region, line and point is a list of point tuples
    (fsn_row, attribute_row, region_id, time, lon, lat, altitude, heading)."""
    vertices = [v for part in regions + lines for v in part]
    with open(path, "wb") as out:
        out.write(FGP_MAGIC + struct.pack("<Iiiiq", 1, len(regions), len(lines), len(points), len(vertices)))
        for p in vertices + points:
            out.write(struct.pack("<iiiddddd", *p))
        first = 0
        for part in regions + lines:
            out.write(struct.pack("<qi", first, len(part)))
            first += len(part)


def write_dbf(path, fields, rows):
    """A dBase III table; fields are (name, type letter, width, decimals), rows texts."""
    record_length = 1 + sum(f[2] for f in fields)
    with open(path, "wb") as out:
        out.write(struct.pack("<B3BIHH20x", 3, 124, 4, 15, len(rows), 33 + 32 * len(fields), record_length))
        for name, letter, width, decimals in fields:
            out.write(struct.pack("<11sc4xBB14x", name.encode("ascii"), letter.encode("ascii"), width, decimals))
        out.write(b"\r")
        for row in rows:
            out.write(b" ")
            for (name, letter, width, decimals), text in zip(fields, row):
                text = text[:width]
                out.write((text.rjust(width) if letter == "N" else text.ljust(width)).encode("ascii"))
        out.write(b"\x1a")


def spray_set(rng):
    """A sprayer on the home field: regions, spray passes as lines, scouting points; the rows
    of the sample and attribute tables."""
    samples = []  # Rate, Rx_Rate, Swath_Width, NDVI

    def point(x, y, day_row, time, heading, rx):
        rate = rx * (1.0 + rng.gauss(0.0, 0.03))
        samples.append((f"{rate:.2f}", f"{rx:.2f}", "27.43", f"{0.55 + 0.2 * math.sin(x / 60.0) + rng.gauss(0.0, 0.02):.3f}"))
        lon, lat = to_lonlat(x, y)
        return (len(samples), day_row, 0, time, lon, lat, elevation_ft(x, y) * 0.3048, heading)

    regions = [
        [point(x, y, 0, 0.0, 0.0, 0.0) for x, y in closed([(-2.0, -2.0), (404.0, -2.0), (404.0, 404.0), (-2.0, 404.0)])],
        [point(x, y, 0, 0.0, 0.0, 0.0) for x, y in ellipse(POND_CENTRE, POND_RADII, 12, clockwise=False)],
    ]
    for part, region_id in zip(regions, (1, 2)):
        part[:] = [v[:2] + (region_id,) + v[3:] for v in part]
    lines = []
    time = 9 * 3600.0  # seconds of the day: 09:00
    for lap in range(8):
        day_row = 1 if lap < 5 else 2
        if lap == 5:
            time = 8 * 3600.0
        northward = lap % 2 == 0
        x = 27.43 * (lap + 0.5)
        rx = 12.0 if lap < 4 else 15.0
        vertices = []
        for k in range(30):
            y = 5.0 + k * 13.0
            vertices.append(point(x + rng.gauss(0.0, 0.2), y if northward else FIELD_HEIGHT_M - y, day_row, time, 0.0 if northward else 180.0, rx))
            time += 4.0
        lines.append(vertices)
        time += 60.0
    # Scouting points, timed in full seconds since 1970.
    scouted = datetime.datetime(2024, 6, 14, 16, 0, tzinfo=datetime.timezone.utc).timestamp()
    points = [point(rng.uniform(20.0, 380.0), rng.uniform(20.0, 380.0), 2, scouted + 300.0 * i, 0.0, 0.0) for i in range(5)]
    attributes = [("20240612", "Glyphosate 41%", "R. Lind"), ("20240613", "Glyphosate 41%", "J. Okafor")]
    return regions, lines, points, samples, attributes


def write_spray_set(folder, rng):
    regions, lines, points, samples, attributes = spray_set(rng)
    write_fgp(os.path.join(folder, "spray.fgp"), regions, lines, points)
    write_dbf(os.path.join(folder, "spray.fsn"),
              [("Rate", "N", 8, 2), ("Rx_Rate", "N", 8, 2), ("Swath_Width", "N", 8, 2), ("NDVI", "N", 6, 3)], samples)
    write_dbf(os.path.join(folder, "spray.fdt"),
              [("Date", "D", 8, 0), ("Product", "C", 20, 0), ("Operator", "C", 12, 0)], attributes)


def write_csv(path, header, rows):
    with open(path, "w", newline="\n", encoding="ascii") as out:
        out.write(header + "\n")
        for row in rows:
            out.write(",".join(row) + "\n")


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "examples")
    os.makedirs(folder, exist_ok=True)
    rng = random.Random(SEED)
    write_csv(
        os.path.join(folder, "yield.csv"),
        "Longitude,Latitude,Yield (bu/ac),Moisture (%),Speed (mph),Elevation (ft),Crop",
        yield_log(rng),
    )
    write_csv(os.path.join(folder, "boundaries.csv"), "Field,Area (ac),Boundary,Crop", boundaries())
    write_spray_set(folder, rng)


if __name__ == "__main__":
    main()
