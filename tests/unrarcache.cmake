# SPDX-License-Identifier: MIT
# The extractor's cache of solid archives' entries, through the real program;
# the books are made with 7zz.
tamber_add_test(tst_unrarcache tst_unrarcache.cpp LABELS archive)
