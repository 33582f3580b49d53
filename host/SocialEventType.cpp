// SPDX-License-Identifier: MIT
#include "SocialEventType.h"
#include "QtCompat.h"

const SocialEventType EventType_ReadingViewZoom(QStringLiteral("ReadingViewZoom"));

SocialEventType::SocialEventType(const QString& name)
    : m_name(name)
{
}

QString SocialEventType::name() const
{
    return m_name;
}
