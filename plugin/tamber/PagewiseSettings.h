// SPDX-License-Identifier: MIT
#ifndef TAMBER_PAGEWISESETTINGS_H
#define TAMBER_PAGEWISESETTINGS_H

#include "Settings.h"

// Settings of the reader's social account.
class TAMBER_EXPORT PagewiseSettings : public Settings
{
public:
    explicit PagewiseSettings(const Device& device);
    ~PagewiseSettings() override;

    // The account name; empty when no account is set.
    QString facebookName() const;
    void setFacebookName(const QString& name);
};

#endif
