# One line per fuzz target:
#   tarn_add_fuzz(fuzz_<what> SOURCES fuzz_<what>.cpp LINKS <library>)
