# SPDX-License-Identifier: MIT
# The host library: the library file and its stores with the trace's JSON values,
# and the desktop program's plug-in loader with the plug-in's root object.
tamber_add_test(tst_library tst_library.cpp LABELS host)
tamber_add_test(tst_pluginloader tst_pluginloader.cpp LABELS host plugin)
add_dependencies(tst_pluginloader comicsreader)

# The host's gesture framework: recognizers, receiver, panning mixin.
tamber_add_test(tst_gestures tst_gestures.cpp LABELS host)
