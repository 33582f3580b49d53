# SPDX-License-Identifier: MIT
# Hostile files end to end: tamber runs on each under GNU time, which reports
# its peak memory, and timeout, which bounds its time. The suite copies tamber
# into a folder of its own, so that stand-in extractors can sit beside it.
tamber_add_test(tst_hostile tst_hostile.cpp LABELS app)
add_dependencies(tst_hostile tamber-app comicsreader)
