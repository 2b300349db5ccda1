"""The Python module: values, geometry, writing and reading through the library, record
sources, progress and failures. pyshp reads the written sets back as an outside oracle."""

import datetime

import pytest
import shapefile  # pyshp

import tnw

np = pytest.importorskip("numpy")


@pytest.fixture(autouse=True)
def no_reports():
    tnw.clear_error_reports()
    yield
    tnw.clear_error_reports()


def columns_of(*specs):
    columns = tnw.tnwColumns()
    for key, kind in specs:
        columns.Add(key, type=kind)
    return columns


@pytest.mark.parametrize("given, back", [
    (None, None),
    (True, True),
    (-7, -7),
    (2**40, float(2**40)),          # beyond 32 bits: a double, as the library's numbers
    (0.1, 0.1),
    ("Fält 7", "Fält 7"),
    (datetime.date(2024, 3, 1), datetime.datetime(2024, 3, 1)),
    (datetime.datetime(1899, 12, 29, 6), datetime.datetime(1899, 12, 29, 6)),  # day -1, 06:00
    (np.int64(9), 9),
    (np.bool_(False), False),
    (np.float32(0.5), 0.5),
])
def test_values_keep_their_meaning(given, back):
    column = columns_of(("V", tnw.vtString))["V"]
    column.Value = given
    assert column.Value == back and type(column.Value) is type(back)


@pytest.mark.parametrize("wkt, interface", [
    ("POINT (1.5 -2)", tnw.IPoint),
    ("LINESTRING (0 0,1 1,2 0)", tnw.ILineString),
    ("POLYGON ((0 0,0 1,1 1,0 0),(0.2 0.2,0.4 0.2,0.2 0.4,0.2 0.2))", tnw.IPolygon),
    ("MULTIPOINT ((1 2),(3 4))", tnw.IMultiPoint),
    ("MULTILINESTRING ((0 0,1 1),(2 2,3 3))", tnw.IMultiLineString),
    ("MULTIPOLYGON (((0 0,0 1,1 1,0 0)),((5 5,5 6,6 6,5 5)))", tnw.IMultiPolygon),
    ("GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1))", tnw.IGeometryCollection),
])
def test_geometry_comes_back_as_its_own_interface(wkt, interface):
    geometry = tnw.ParseWKT(wkt)
    assert isinstance(geometry, interface)
    assert geometry.WKT == wkt and str(geometry) == wkt


@pytest.mark.parametrize("made, wkt", [
    (lambda: tnw.Point(3, 4), "POINT (3 4)"),
    (lambda: tnw.LineString([(0, 0), tnw.Point(1, 2)]), "LINESTRING (0 0,1 2)"),
    (lambda: tnw.Polygon([(0, 0), (0, 4), (4, 4), (0, 0)], [[(1, 1), (2, 1), (1, 2), (1, 1)]]),
     "POLYGON ((0 0,0 4,4 4,0 0),(1 1,2 1,1 2,1 1))"),
    (lambda: tnw.MultiPoint([(1, 2), tnw.Point(3, 4)]), "MULTIPOINT ((1 2),(3 4))"),
    (lambda: tnw.MultiPolygon([[[(0, 0), (0, 1), (1, 1), (0, 0)]]]),
     "MULTIPOLYGON (((0 0,0 1,1 1,0 0)))"),
    (lambda: tnw.GeometryCollection(["POINT (1 2)", (5, 6)]),
     "GEOMETRYCOLLECTION (POINT (1 2),POINT (5 6))"),
])
def test_geometry_made_from_python(made, wkt):
    assert made().WKT == wkt


def test_geometry_members_read_through_their_interfaces():
    polygon = tnw.ParseWKT("POLYGON ((0 0,0 2,2 2,2 0,0 0),(0.5 0.5,1 0.5,0.5 1,0.5 0.5))")
    assert polygon.ExteriorRing.coords == [(0, 0), (0, 2), (2, 2), (2, 0), (0, 0)]
    assert polygon.InteriorRing(0).Point(1).X == 1
    assert (polygon.Centroid.X, polygon.Centroid.Y) != (1, 1)  # the hole pulls it away
    collection = tnw.ParseWKT("MULTIPOINT ((1 2),(3 4))")
    assert [point.Y for point in collection] == [2, 4]


ROWS = {  # geometry type, rows of (values, geometry), what pyshp reads back
    tnw.tnwGeometryPoint: ([((1, "a"), (10.5, 50.25)), ((2, "b"), "POINT (11 51)")],
                           shapefile.POINT, [[(10.5, 50.25)], [(11, 51)]]),
    tnw.tnwGeometryLine: ([((1, "a"), "LINESTRING (0 0,1 1)"), ((2, "b"), "LINESTRING (5 5,6 5)")],
                          shapefile.POLYLINE, [[(0, 0), (1, 1)], [(5, 5), (6, 5)]]),
    # A counter-clockwise exterior ring is turned to the clockwise order of the format.
    tnw.tnwGeometryRegion: ([((1, "a"), "POLYGON ((0 0,1 0,1 1,0 0))"),
                             ((2, "b"), tnw.Polygon([(0, 0), (0, 1), (1, 1), (0, 0)]))],
                            shapefile.POLYGON, [[(0, 0), (1, 1), (1, 0), (0, 0)],
                                                [(0, 0), (0, 1), (1, 1), (0, 0)]]),
}


@pytest.mark.parametrize("geometry_type", list(ROWS))
@pytest.mark.parametrize("how", ["ImportRS", "write"])
def test_shapefile_sets_read_back_by_pyshp(tmp_path, geometry_type, how):
    rows, shape_type, points = ROWS[geometry_type]
    columns = columns_of(("Id", tnw.vtInt32), ("Name", tnw.vtString))
    path = str(tmp_path / "set.shp")
    with tnw.tnwShapeEncoder() as encoder:
        if how == "ImportRS":
            assert encoder.ImportRS(path, tnw.tnwRecordSource(columns, rows))
        else:
            assert encoder.Initialize(path, columns, geometry_type)
            assert all(encoder.write(values, geometry) for values, geometry in rows)
    reader = shapefile.Reader(path)
    assert reader.shapeType == shape_type
    assert [[tuple(p) for p in shape.points] for shape in reader.shapes()] == points
    assert [list(record) for record in reader.records()] == [[1, "a"], [2, "b"]]
    assert tnw.error_reports() == []


def test_text_round_trip_as_dicts_tuples_and_columns(tmp_path):
    columns = columns_of(("Yield", tnw.vtDouble), ("Field", tnw.vtString), ("Pass", tnw.vtInt32))
    rows = [((181.25, "North", 1), None), ((7.5, "South, 2", 2), None)]
    path = str(tmp_path / "log.csv")
    with tnw.tnwASCIIEncoder() as encoder:
        assert encoder.ImportRS(path, tnw.tnwRecordSource(columns, iter(rows)))
    typed = {"Pass": int, "Yield": float, "Field": str}  # by header name, in any order
    decoder = tnw.open_decoder(path, typed)
    assert list(decoder.rows()) == [(1.0, 181.25, "North"), (2.0, 7.5, "South, 2")]
    assert [record["Field"] for record in decoder] == ["North", "South, 2"]
    table = tnw.read_table(path, typed)
    assert table["Pass"].dtype == np.int64 and table["Pass"].tolist() == [1, 2]
    assert table["Yield"].tolist() == [181.25, 7.5] and table["Field"] == ["North", "South, 2"]
    assert tnw.read_table(path, typed, numpy=False)["Pass"] == [1, 2]


def test_columns_of_a_walk_mark_missing_values():
    columns = columns_of(("N", tnw.vtInt32), ("D", tnw.vtDouble), ("B", tnw.vtBoolean))
    source = tnw.tnwRecordSource(columns, [((1, 2.5, True), None), ((None, "x", None), None)])
    arrays, lists = source.read_columns(), source.read_columns(numpy=False)
    assert np.array_equal(arrays["N"], [1, np.nan], equal_nan=True)  # not whole any more
    assert np.isnan(arrays["D"][1]) and arrays["B"].tolist() == [True, False]
    assert lists == {"N": [1.0, None], "D": [2.5, None], "B": [True, False]}


def test_dbase_columns_keep_their_types(tmp_path):
    columns = columns_of(("Rate", tnw.vtDouble), ("When", tnw.vtDate), ("On", tnw.vtBoolean))
    when = datetime.datetime(2025, 6, 30)
    source = tnw.tnwRecordSource(columns, [({"Rate": 1.5, "When": when, "On": True}, (0, 0)),
                                           ({"Rate": 2.25, "On": False}, (1, 1))])
    with tnw.tnwShapeEncoder() as encoder:
        assert encoder.ImportRS(str(tmp_path / "t.shp"), source)
    table = tnw.read_table(str(tmp_path / "t.dbf"))
    # A false logical reads false, not the true of the record before.
    assert table["Rate"].tolist() == [1.5, 2.25] and table["On"].tolist() == [True, False]
    assert table["When"][0] == when
    pairs = list(tnw.tnwDBFDecoder(str(tmp_path / "t.dbf")).RecordSource())
    assert [(values[0], values[2]) for values, _ in pairs] == [(1.5, True), (2.25, False)]


class Progress:
    def __init__(self):
        self.calls = []

    def SetBarRange(self, bar, low, high):
        self.calls.append(("range", bar, low, high))

    def SetBarValue(self, bar, value):
        self.calls.append(("value", bar, value))


def test_progress_reaches_python(tmp_path):
    columns = columns_of(("N", tnw.vtInt32))
    rows = [((i,), (i, 0)) for i in range(2000)]
    progress, seen = Progress(), []
    for callback in (progress, lambda bar, value: seen.append(value)):
        encoder = tnw.tnwShapeEncoder()
        encoder.Callback = callback
        assert encoder.Callback is callback
        assert encoder.ImportRS(str(tmp_path / "p.shp"), tnw.tnwRecordSource(columns, rows))
        encoder.CloseFiles()
    assert progress.calls == [("range", 0, 0.0, 100.0), ("value", 0, 50.0), ("value", 0, 100.0)]
    assert seen == [50.0, 100.0]


def test_failures_stay_results_and_are_readable(tmp_path):
    columns = columns_of(("N", tnw.vtInt32))
    encoder = tnw.tnwShapeEncoder()
    assert encoder.Update() is False  # no file yet
    assert [(r.source, r.number) for r in tnw.error_reports()] == [("tnwShapeEncoder.Update2", 91)]

    def broken(bar, value):
        raise RuntimeError("stop")
    tnw.clear_error_reports()
    encoder.Callback = broken
    rows = [((i,), (i, 0)) for i in range(1500)]
    assert encoder.ImportRS(str(tmp_path / "b.shp"), tnw.tnwRecordSource(columns, rows)) is False
    assert "stop" in tnw.error_reports()[0].description

    with pytest.raises(tnw.Error) as raised:
        tnw.ParseWKT("POINT (1")
    assert raised.value.number == 13
    with pytest.raises(tnw.Error) as raised:
        tnw.tnwASCIIDecoder(str(tmp_path / "none.csv"))
    assert raised.value.number == 53


@pytest.mark.parametrize("kind, field", [
    (tnw.vtDouble, ("N", 16, 4)),
    (tnw.vtInt32, ("N", 11, 0)),
    (tnw.vtInt16, ("N", 6, 0)),
    (tnw.vtBoolean, ("L", 1, 0)),
    (tnw.vtDate, ("D", 8, 0)),
    (tnw.vtString, ("C", 254, 0)),
])
def test_columns_added_without_sizes_get_the_fields_of_their_type(tmp_path, kind, field):
    path = str(tmp_path / "f.shp")
    with tnw.tnwShapeEncoder() as encoder:
        assert encoder.Initialize(path, columns_of(("F", kind)), tnw.tnwGeometryPoint)
        assert encoder.write([None], (0, 0))
    assert tuple(shapefile.Reader(path).fields[1][1:]) == field


def test_column_list_reads_as_a_sequence_and_a_mapping():
    columns = columns_of(("Yield", tnw.vtDouble), ("Crop", tnw.vtString))
    assert columns.Add("YIELD") is None  # keys are unique without regard to case
    assert [c.Key for c in columns] == columns.keys() == ["Yield", "Crop"]
    assert columns[-1].Key == "Crop" and columns["yield"].Position == 1 and "crop" in columns
    with pytest.raises(KeyError):
        columns["Moisture"]
    with pytest.raises(IndexError):
        columns[2]


@pytest.mark.parametrize("values, expected", [
    ((1, "a", 2.5), [1, "a", 2.5]),
    ((1,), [1, None, None]),                          # short rows leave the rest empty
    ({"C": 2.5, "A": 1}, [1, None, 2.5]),             # by key, missing keys empty
])
def test_row_values_by_position_or_key(values, expected):
    columns = columns_of(("A", tnw.vtInt32), ("B", tnw.vtString), ("C", tnw.vtDouble))
    source = tnw.tnwRecordSource(columns, [(values, None)])
    assert [list(v) for v, _ in source] == [expected]


def test_a_list_imports_again_and_a_generator_once(tmp_path):
    columns = columns_of(("N", tnw.vtInt32))
    rows = [((i,), (i, i)) for i in range(3)]
    counts = []
    for source in (tnw.tnwRecordSource(columns, rows, tnw.tnwGeometryPoint),
                   tnw.tnwRecordSource(columns, iter(rows), tnw.tnwGeometryPoint)):
        for attempt in range(2):
            path = str(tmp_path / f"r{len(counts)}.shp")
            with tnw.tnwShapeEncoder() as encoder:
                assert encoder.ImportRS(path, source)
            with open(path, "rb") as shp:
                counts.append(len(shapefile.Reader(shp=shp).shapes()))
    assert counts == [3, 3, 3, 0]


def test_well_known_text_of_a_text_file_arrives_as_geometry(tmp_path):
    path = tmp_path / "fields.csv"
    path.write_text('Name,Boundary\r\n"North","POLYGON ((0 0,0 1,1 1,0 0))"\r\n'
                    '"Track","LINESTRING (0 0,2 2)"\r\n"Bad","POLYGON (("\r\n')
    decoder = tnw.tnwASCIIDecoder(str(path))
    decoder.HeaderRows = 1
    decoder.AutoGenColumns()
    decoder.WKTCol = 2
    pairs = list(decoder.RecordSource())
    assert [type(g) for _, g in pairs] == [tnw.IPolygon, tnw.ILineString, type(None)]
    assert [r.source for r in tnw.error_reports()] == ["tnwDecoderRecordSource.Geometry"]
    assert decoder.ReadHeaders(9) is None  # past the end of the file


def test_projection_and_shape_details(tmp_path):
    path = str(tmp_path / "m.shp")
    with tnw.tnwShapeEncoder() as encoder:
        encoder.Initialize(path, columns_of(("N", tnw.vtInt32)), tnw.tnwGeometryRegion)
        encoder.Projection = tnw.tnwProjection(3857)
        encoder.write([1], "POLYGON ((0 0,0 10,180 0,0 0))")
    assert shapefile.Reader(path).bbox[2] == pytest.approx(20037508.34, abs=0.01)
    details = tnw.tnwShapeDecoder().GetShapeDetails(path)
    assert details[0] == tnw.tnwGeometryRegion and details[2] is True  # not degrees
    assert tnw.tnwShapeDecoder().GetShapeDetails(str(tmp_path / "none.shp")) is None


@pytest.mark.parametrize("geometry", [42, object(), [1, 2, 3]])
def test_a_geometry_of_no_known_form_is_refused(geometry):
    encoder = tnw.tnwASCIIEncoder()
    with pytest.raises((TypeError, ValueError)):
        encoder.SetGeometry(geometry)


@pytest.mark.parametrize("name, text, delimiter", [
    ("a.tsv", "Longitude\tLatitude\tYield (bu/ac)\tCrop\r\n-93.5\t42.25\t181.5\tCorn\r\n", None),
    ("a.csv", "Longitude,Latitude,Yield (bu/ac),Crop\n-93.5,42.25,181.5,Corn\n", None),
    ("a.txt", "Longitude;Latitude;Yield (bu/ac);Crop\r\n-93.5;42.25;181.5;Corn\r\n", ";"),
])
def test_read_table_finds_the_fields_of_a_header(tmp_path, name, text, delimiter):
    path = tmp_path / name
    path.write_text(text)
    table = tnw.read_table(str(path), delimiter=delimiter, numpy=False)
    assert table == {"Yield": [181.5], "Crop": ["Corn"], "Longitude": [-93.5], "Latitude": [42.25]}
    with pytest.raises(KeyError):
        tnw.read_table(str(path), {"Moisture": float}, delimiter=delimiter)


def test_a_decoder_closes_at_the_end_of_a_with_block(tmp_path):
    path = tmp_path / "a.csv"
    path.write_text("A\r\n1\r\n2\r\n")
    with tnw.open_decoder(str(path), {"A": int}) as decoder:
        assert decoder.MoveFirst() is True and not decoder.Eof
    assert decoder.Eof and decoder.CurrentLine == "1"


@pytest.mark.parametrize("delimiter, geometry, lonlat, lines", [
    (",", False, False, ['"N","S"', ' 7,"x y"']),
    (";", True, False, ['N;S;Geometry', ' 7;"x y";POINT (1.5 2)']),
    ("|", False, True, ['Longitude|Latitude|N|S', ' 1.5| 2| 7|"x y"']),
])
def test_text_encoder_options_as_arguments_and_attributes(tmp_path, delimiter, geometry, lonlat,
                                                          lines):
    path = str(tmp_path / "a.csv")
    with tnw.tnwASCIIEncoder() as encoder:
        encoder.IncludeLonLat = lonlat
        assert encoder.Initialize(path, columns_of(("N", tnw.vtInt32), ("S", tnw.vtString)),
                                  delimiter=delimiter, include_geometry=geometry)
        assert encoder.Delimiter == delimiter and encoder.IncludeGeometry == geometry
        assert encoder.write([7, "x y"], (1.5, 2))
    assert open(path, newline="").read().split("\r\n") == lines + [""]


def test_a_decoder_walk_reports_progress_and_counts(tmp_path):
    path = tmp_path / "a.csv"
    path.write_text("".join(f"{i}\r\n" for i in range(200)))
    decoder = tnw.tnwASCIIDecoder(str(path))
    decoder.Columns.Add("N", type=tnw.vtInt32)
    source, seen = decoder.RecordSource(), []
    source.Callback = lambda bar, value: seen.append(value)
    assert source.read_columns(numpy=False)["N"] == list(range(200))
    assert seen[-1] == 100 and seen == sorted(seen) and len(seen) > 2
    assert (source.RecordsRead, source.RowsSkipped, source.RecordCount) == (200, 0, 200)



@pytest.mark.parametrize("how", ["ImportRS", "write"])
def test_plan_grid_written_from_python(tmp_path, how):
    columns = columns_of(("Name", tnw.vtString), ("Rate", tnw.vtDouble))
    rows = [(("p", 120.125), "POLYGON ((-96.5 40.25,-96.25 40.25,-96.25 40.5,-96.5 40.25))"),
            (("q", 10.5), "POLYGON ((1 1,2 1,2 2,1 1))")]
    path, encoder = str(tmp_path / "plan"), tnw.tnwFSEncoder()
    if how == "ImportRS":
        assert encoder.ImportRS(path, tnw.tnwRecordSource(columns, rows), rate_column_key="Rate")
    else:
        with encoder:
            assert encoder.Initialize(path, columns, "Rate") and encoder.RateColumnKey == "Rate"
            assert all(encoder.write(values, geometry) for values, geometry in rows)
    lines = open(path + ".fpd", newline="").read().split("\r\n")
    assert lines[4:10] == ["GpsLongitudeMin=-96. 30", "GpsLatitudeMin=1. 0", "NumberOfPolygons=2",
                           "RateMin= 10.5", "RateMax= 120.12", "NumberOfPoints=6"]
    assert lines[lines.index("[DATA]") + 1:] == [
        "1; P; 1; -96. 30; 40. 15;  120.12", "2; P; 1; -96. 15; 40. 15;  120.12",
        "3; P; 1; -96. 15; 40. 30;  120.12", "4; P; 2; 1. 0; 1. 0;  10.5",
        "5; P; 2; 2. 0; 1. 0;  10.5", "6; P; 2; 2. 0; 2. 0;  10.5", "[END]", ""]


def test_ini_document_saved_and_read_back(tmp_path):
    path = str(tmp_path / "field.ini")
    document = tnw.tnwINIFile()
    document.Create("A")["x"] = "1"
    document["a"]["X"] = "2"  # keys without regard to case: the value changes, none is added
    document.Create("Café").Create("k", "v w")
    assert document.Create("A") is None and document.Save(path) is False
    assert open(path, "rb").read() == b"\r\n[A]\r\nx=2\r\n\r\n[Caf\xe9]\r\nk=v w\r\n"
    with tnw.tnwINIFile(path, load_content=True) as again:  # saved at the end of the block
        assert again.keys() == ["A", "Café"] and "café" in again and len(again) == 2
        assert [(v.Key, v.Value) for v in again[-1]] == [("k", "v w")]
        assert again.Item(1).Item("x").Value == again[0][0].Value == "2"
        with pytest.raises(KeyError):
            again["B"]
        assert again["A"].Remove("x") and not again["A"].Remove("x")
    assert open(path, "rb").read() == b"\r\n[A]\r\n\r\n[Caf\xe9]\r\nk=v w\r\n"
    with pytest.raises(ZeroDivisionError), tnw.tnwINIFile(path):
        1 / 0
    assert open(path, "rb").read().endswith(b"k=v w\r\n")  # a raising block saves nothing


def test_gpl_log_read_back_with_its_start_and_stop_rows(tmp_path):
    columns = columns_of(("UTC", tnw.vtInt32), ("Elevation", tnw.vtDouble))
    path = str(tmp_path / "run.gpl")
    with tnw.tnwGPLEncoder() as encoder:
        encoder.KeepExtension = encoder.PositionFromPoint = encoder.WriteStartStop = True
        assert encoder.Initialize(path, columns)
        assert encoder.write((61, 300.5), (-93.25, 42.5))  # the points give the positions
        assert encoder.write((62, 301.5), "POINT (-93.5 42.75)")
    decoder, steps = tnw.tnwASCIIDecoder(path), []
    ok = decoder.MoveFirst()
    while not decoder.EOF:
        if decoder.GPLStart or decoder.GPLEnd:
            steps.append(("+" if decoder.GPLStart else "-") + decoder.GPLCommand)
        else:
            assert ok and decoder.GPL and decoder.GPDString == ""
            steps.append((decoder.Columns["Time"].Value, decoder.Columns["Altitude"].Value,
                          decoder.Latitude, decoder.Longitude))
        ok = decoder.MoveNext()
    assert steps == ["+STAR", (61, 300.5, 42.5, -93.25), (62, 301.5, 42.75, -93.5), "-STOP"]


def test_summary_built_in_python_exported_as_points(tmp_path):
    yield_def, summary, track = tnw.QuantityDef("Y", "Yield"), tnw.Summary(), tnw.TrackRegion()
    assert summary.AddSeriesDef(yield_def)
    for i in range(3):
        track.AddRecord(10 + i, 50 + i / 2, elevation=100 + i, utc=1e9 + i)
    track.AddSeries(tnw.Series("Y", yield_def, [7.5, 8.5, 9.5]))
    summary.AddRegion(track)
    bars, path = Progress(), str(tmp_path / "summary.shp")
    assert tnw.tnwShapeEncoder().ExportVELDSummary(bars, summary, path) and bars.calls
    reader = shapefile.Reader(path)
    assert [tuple(s.points[0]) for s in reader.shapes()] == [(10, 50), (11, 50.5), (12, 51)]
    names = [field[0] for field in reader.fields[1:]]
    assert [record[names.index("Yield")] for record in reader.records()] == [7.5, 8.5, 9.5]
    assert not tnw.tnwShapeEncoder().ExportVELDSummary(None, None, str(tmp_path / "none"))
    assert not (tmp_path / "none.dbf").exists() and tnw.error_reports() == []
