# SPDX-License-Identifier: MIT
# Comic parser: page discovery and ordering, records, covers, notifications.
tamber_add_test(tst_pageorder tst_pageorder.cpp LABELS parser)
tamber_add_test(tst_parser tst_parser.cpp LABELS parser)
