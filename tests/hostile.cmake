# SPDX-License-Identifier: MIT
# Hostile files end to end: tamber runs on each through peakrun, which bounds
# its time and reports its peak memory. The suite copies tamber into a folder
# of its own, so that stand-in extractors can sit beside it.
add_executable(peakrun peakrun/main.cpp)
set_target_properties(peakrun PROPERTIES AUTOMOC OFF)

tamber_add_test(tst_hostile tst_hostile.cpp LABELS app)
add_dependencies(tst_hostile tamber-app comicsreader peakrun)
