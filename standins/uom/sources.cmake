# Sources of standins/uom, relative to this folder.
set(tnw_sources
    UnitLookup.cpp)
