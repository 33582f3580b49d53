# SPDX-License-Identifier: MIT
# The reading view where no trace can see it: meta-object, pixels, pans,
# touch, dog ears from the store. Its traces are checked by tst_session.
tamber_add_test(tst_reader tst_reader.cpp LABELS reader)
