"""Field data in and out of shapefiles, dBase tables and delimited text.

The classes keep the library's names (tnwShapeEncoder, tnwDBFDecoder, tnwColumns...), with
properties as attributes. Decoders iterate as dicts (``for record in decoder``) or tuples
(``decoder.rows()``), encoders and decoders are context managers that close their files, and
``read_table`` reads a whole table into columns. Failures of an operation with a handler are
reported to the error handler (``error_reports()``) and give the operation's failure result;
errors that reach the caller raise ``tnw.Error``.
"""

import datetime as _datetime
import os as _os

from ._tnw import *  # noqa: F401,F403
from ._tnw import (VarType, tnwASCIIDecoder, tnwDBFDecoder, vtBoolean, vtDate, vtDouble,
                   vtInt32, vtString)

_TYPES = {float: vtDouble, int: vtInt32, str: vtString, bool: vtBoolean,
          _datetime.date: vtDate, _datetime.datetime: vtDate}


def _type_number(kind):
    return kind if isinstance(kind, (int, VarType)) else _TYPES[kind]


def open_decoder(path, columns=None, delimiter=None, header_rows=1):
    """A decoder for the table at path: a dBase table, or delimited text (a lone line feed
    ending a line too). For text, columns maps header names to types (float, int, str, bool,
    datetime.date or a VarType) and reads only those; without it the columns come from the
    header (its longitude and latitude fields as numbers)."""
    if _os.path.splitext(path)[1].lower() == ".dbf":
        return tnwDBFDecoder(path)
    decoder = tnwASCIIDecoder()
    decoder.LineFeedEndsLine = True
    decoder.Delimiter = delimiter or ("\t" if path.lower().endswith(".tsv") else ",")
    decoder.Filename = path
    decoder.HeaderRows = header_rows
    names = decoder.ReadHeaders(header_rows) if header_rows > 0 else None
    if columns is None:
        decoder.AutoGenColumns()
        for place in (decoder.LonCol, decoder.LatCol):
            if place and names and place <= len(names):
                decoder.Columns.Add(names[place - 1].strip(), type=vtDouble).Position = place
        return decoder
    lower = [name.strip().lower() for name in names or []]
    for key, kind in columns.items():
        if key.lower() not in lower:
            raise KeyError(f"{key}: no such field in the header of {path}")
        decoder.Columns.Add(key, type=_type_number(kind)).Position = lower.index(key.lower()) + 1
    return decoder


def read_table(path, columns=None, numpy=None, delimiter=None, header_rows=1):
    """Every record of a dBase table or delimited text file as columns: a dict of column key to
    a numpy array (numbers, booleans; where numpy is present and numpy is not False) or a list
    (text, dates, and numbers without numpy; None for an empty value)."""
    with open_decoder(path, columns, delimiter, header_rows) as decoder:
        return decoder.read_columns(numpy)
