# Sources of src/shapefile (target tnw_shapefile), relative to this folder.
set(tnw_sources
    DbfWriter.cpp
    tnwShapeEncoder.cpp)
