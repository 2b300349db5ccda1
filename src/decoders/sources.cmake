#Sources of src / decoders(target tnw_decoders), relative to this folder.
set(tnw_sources tnwDBFDecoder.cpp tnwFGPDecoder.cpp tnwShapeDecoder.cpp)
