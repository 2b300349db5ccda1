# Sources of src/encoders (target tnw_encoders), relative to this folder.
set(tnw_sources
    tnwASCIIEncoder.cpp
    tnwFSEncoder.cpp)
