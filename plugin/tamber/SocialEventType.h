// SPDX-License-Identifier: MIT
#ifndef TAMBER_SOCIALEVENTTYPE_H
#define TAMBER_SOCIALEVENTTYPE_H

#include "TamberGlobal.h"

#include <QString>

// Kind of a reading event reported to the host's analytics.
class TAMBER_EXPORT SocialEventType
{
public:
    explicit SocialEventType(const QString& name);
    QString name() const;

private:
    QString m_name;
};

extern TAMBER_EXPORT const SocialEventType EventType_ReadingViewZoom;

#endif
