// SPDX-License-Identifier: MIT
#ifndef TAMBER_ATTRIBUTES_H
#define TAMBER_ATTRIBUTES_H

#include "TamberGlobal.h"

#include <QString>

// Names of the attributes that records carry besides their fields.
extern TAMBER_EXPORT const QString ATTRIBUTE_TITLE;
extern TAMBER_EXPORT const QString ATTRIBUTE_DESCRIPTION;
extern TAMBER_EXPORT const QString ATTRIBUTE_ATTRIBUTION;
extern TAMBER_EXPORT const QString ATTRIBUTE_MIME_TYPE;
extern TAMBER_EXPORT const QString ATTRIBUTE_DATE;

#endif
