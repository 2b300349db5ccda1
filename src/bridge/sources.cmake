#Sources of src / bridge(target tnw_bridge), relative to this folder.
set(tnw_sources tnwDecoderRecordSource.cpp)
