# Sources of standins/gislib, relative to this folder.
set(tnw_sources)
