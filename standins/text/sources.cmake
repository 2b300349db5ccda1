# Sources of standins/text, relative to this folder.
set(tnw_sources
    StringBuilder.cpp)
