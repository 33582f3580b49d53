# The host library: the library file and its stores, the trace of host calls,
# the plug-in loader, and the plug-in's root object as the host sees it.
tamber_add_test(tst_library tst_library.cpp LABELS host)
tamber_add_test(tst_hosttrace tst_hosttrace.cpp LABELS host)
tamber_add_test(tst_pluginloader tst_pluginloader.cpp LABELS host)
add_dependencies(tst_pluginloader comicsreader)
tamber_add_test(tst_plugin tst_plugin.cpp LABELS plugin)
