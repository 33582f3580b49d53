// Placeholder stores: replaced by the SQLite library.

#include "DogEarManager.h"
#include "HostTrace.h"
#include "PageletManager.h"
#include "VolumeManager.h"

Volume VolumeManager::getById(const QString& id, const QString& userId)
{
    HostTrace::Call call("VolumeManager::getById", { id, userId });
    return Volume();
}

void VolumeManager::updateBookmark(const QString&, const QString&, int, int, int, const QDateTime&,
    const QString&)
{
}

void VolumeManager::updateReadingStatus(const QString&, int, const QString&) {}

QVector<Pagelet> PageletManager::retrieveByBookId(const QString&, const QString&)
{
    return {};
}

DogEarManager::DogEarManager() = default;

DogEarManager* DogEarManager::sharedInstance()
{
    static DogEarManager* instance = new DogEarManager;
    return instance;
}

void DogEarManager::createTable(const QString& volumeId, bool)
{
    m_volumeId = volumeId;
}

bool DogEarManager::isTableValid()
{
    return !m_volumeId.isEmpty();
}

QList<Bookmark> DogEarManager::getBookmarks()
{
    return {};
}

void DogEarManager::addDogEar(int, const QString&, const QString&, const QString&, int, int,
    const QString&, double, const QDateTime&)
{
}

void DogEarManager::removeDogEar(int) {}
void DogEarManager::removeDogEar(Bookmark&) {}

QString DogEarManager::tableVolumeId() const
{
    return m_volumeId;
}
