# Sources of src/delimited (target tnw_delimited), relative to this folder.
set(tnw_sources
    BuildColumns.cpp
    ColumnTypes.cpp
    FieldArray.cpp
    GPLDialect.cpp
    ParseLine.cpp
    tnwASCIIDecoder.cpp)
