# Sources of standins/log, relative to this folder.
set(tnw_sources
    ErrorHandler.cpp)
