# Sources of src/geometry (target tnw_geometry), relative to this folder.
set(tnw_sources
    Flatten.cpp
    Summary.cpp)
