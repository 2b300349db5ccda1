# Sources of standins/ogc_sf, relative to this folder.
set(tnw_sources
    Geometries.cpp
    WKT.cpp)
