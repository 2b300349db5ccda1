set(tnw_sources mLog.cpp)
