# The tamber program end to end, through the built binary and plug-in.
tamber_add_test(tst_tamber tst_tamber.cpp LABELS app)
add_dependencies(tst_tamber tamber-app comicsreader)
