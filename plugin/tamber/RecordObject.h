// SPDX-License-Identifier: MIT
#ifndef TAMBER_RECORDOBJECT_H
#define TAMBER_RECORDOBJECT_H

#include "HostConstants.h"
#include "TamberGlobal.h"

// Common base of the host's stored records.
class TAMBER_EXPORT RecordObject
{
public:
    RecordObject();
    virtual ~RecordObject();
};

#endif
