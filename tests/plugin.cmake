# SPDX-License-Identifier: MIT
# The plug-in's root object as the host sees it.
tamber_add_test(tst_plugin tst_plugin.cpp LABELS plugin)
