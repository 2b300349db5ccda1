# Sources of standins/veld, relative to this folder.
set(tnw_sources
    Summary.cpp
    Unit.cpp)
