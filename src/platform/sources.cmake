set(tnw_sources CodePage.cpp File.cpp Hooks.cpp)
