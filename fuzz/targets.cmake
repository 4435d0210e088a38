# One line per fuzz target:
#   tarn_add_fuzz(fuzz_<what> SOURCES fuzz_<what>.cpp LINKS <library>)
tarn_add_fuzz(fuzz_pointtext SOURCES fuzz_pointtext.cpp LINKS tarn_capture)
tarn_add_fuzz(fuzz_pointtextfile SOURCES fuzz_pointtextfile.cpp LINKS tarn_capture)
tarn_add_fuzz(fuzz_xml SOURCES fuzz_xml.cpp LINKS tarn_support)
tarn_add_fuzz(fuzz_scan SOURCES fuzz_scan.cpp LINKS tarn_formula)
tarn_add_fuzz(fuzz_parsenumber SOURCES fuzz_parsenumber.cpp LINKS tarn_formula)
tarn_add_fuzz(fuzz_compile_run SOURCES fuzz_compile_run.cpp LINKS tarn_functions)
