# SPDX-License-Identifier: MIT
# tamber session and render end to end, through the built binary and plug-in;
# the expected traces of the scripts are kept in sessions/.
tamber_add_test(tst_session tst_session.cpp LABELS app)
add_dependencies(tst_session tamber-app comicsreader)
