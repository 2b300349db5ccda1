# Sources of standins/tnwlib, relative to this folder.
set(tnw_sources
    StringBuilder.cpp
    tnwlib.cpp)
