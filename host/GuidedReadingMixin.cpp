// SPDX-License-Identifier: MIT
#include "GuidedReadingMixin.h"

// Plain views have no guided reading; views that page by chapter override these.

GuidedReadingMixin::GuidedReadingMixin() = default;
GuidedReadingMixin::~GuidedReadingMixin() = default;
void GuidedReadingMixin::goToChapter(int) {}
void GuidedReadingMixin::panAndFitToRect(const QRect&) {}
