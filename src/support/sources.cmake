set(tnw_sources mLog.cpp tnwINIFile.cpp)
