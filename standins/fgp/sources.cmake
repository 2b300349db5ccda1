#Sources of standins / fgp, relative to this folder.
set(tnw_sources FGPFile.cpp FGPWriter.cpp)
