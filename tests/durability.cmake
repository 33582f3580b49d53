# SPDX-License-Identifier: MIT
# The library outlives its host: tamber killed at random moments, and a disk
# that cannot take a write, end to end through the built binary and plug-in.
tamber_add_test(tst_durability tst_durability.cpp LABELS app)
add_dependencies(tst_durability tamber-app comicsreader)
