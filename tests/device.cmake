# Loaded by the device's Qt: its own plug-in loader, as the host loads the plug-in.
tamber_add_test(tst_qtloader tst_qtloader.cpp LABELS plugin)
add_dependencies(tst_qtloader comicsreader)
