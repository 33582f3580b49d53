// SPDX-License-Identifier: MIT
#ifndef TAMBER_PRICE_H
#define TAMBER_PRICE_H

#include "TamberGlobal.h"

#include <QString>

// A book's price as the store lists it; comics imported from files have none.
class TAMBER_EXPORT Price
{
public:
    Price();
    ~Price();

    double amount;
    QString currency;
};

#endif
