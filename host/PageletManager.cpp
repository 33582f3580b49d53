// SPDX-License-Identifier: MIT
#include "PageletManager.h"

#include "HostTrace.h"
#include "Library.h"

QVector<Pagelet> PageletManager::retrieveByBookId(const QString& bookId, const QString& userId)
{
    HostTrace::Call call("PageletManager::retrieveByBookId", { bookId, userId });
    return Library::pages(bookId);
}
