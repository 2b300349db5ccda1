# Sources of standins/gislib, relative to this folder.
set(tnw_sources
    Columns.cpp
    FileUtility.cpp
    GISFactory.cpp
    MemoryRecordSource.cpp
    Projection.cpp)
