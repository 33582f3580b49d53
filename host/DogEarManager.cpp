// SPDX-License-Identifier: MIT
#include "DogEarManager.h"

#include "HostTrace.h"
#include "Library.h"

#include <QMetaMethod>

DogEarManager::DogEarManager() = default;

DogEarManager* DogEarManager::sharedInstance()
{
    // Lives until the process ends; receivers may still be connected at exit.
    static DogEarManager* instance = new DogEarManager;
    return instance;
}

// All dog ears live in one table of the library file; "opening a book's
// table" selects the book, so the create flag has nothing left to do.
void DogEarManager::createTable(const QString& volumeId, bool create)
{
    HostTrace::Call call("DogEarManager::createTable", { volumeId, create });
    m_volumeId = Library::isOpen() ? volumeId : QString();
}

bool DogEarManager::isTableValid()
{
    HostTrace::Call call("DogEarManager::isTableValid");
    return Library::isOpen() && !m_volumeId.isEmpty();
}

QList<Bookmark> DogEarManager::getBookmarks()
{
    HostTrace::Call call("DogEarManager::getBookmarks");
    if (m_volumeId.isEmpty())
        return {};
    return Library::dogEars(m_volumeId);
}

void DogEarManager::addDogEar(int key, const QString& contentId, const QString& volumeId,
    const QString& text, int chapterIndex, int offset, const QString& extraData, double progress,
    const QDateTime& date)
{
    HostTrace::Call call("DogEarManager::addDogEar",
        { key, contentId, volumeId, text, chapterIndex, offset, extraData, progress, date });
    if (m_volumeId.isEmpty())
        return;
    Bookmark dogEar;
    dogEar.setPageKey(key);
    dogEar.setContentId(contentId);
    dogEar.setVolumeId(volumeId);
    dogEar.setText(text);
    dogEar.setChapterIndex(chapterIndex);
    dogEar.setOffset(offset);
    dogEar.setExtraData(extraData);
    dogEar.setProgress(progress);
    dogEar.setDateCreated(date);
    Library::addDogEar(m_volumeId, dogEar);
}

void DogEarManager::removeDogEar(int key)
{
    HostTrace::Call call("DogEarManager::removeDogEar", { key });
    if (m_volumeId.isEmpty() || receivers(SIGNAL(getDogEarKey(int&, Bookmark))) == 0)
        return;
    // Only the receivers know what a dog ear's key is (for a comic, its page).
    QList<qint64> matching;
    for (const Bookmark& dogEar : Library::dogEars(m_volumeId)) {
        int answer = ~key; // differs from key, so a silent receiver removes nothing
        emit getDogEarKey(answer, dogEar);
        if (answer == key)
            matching << dogEar.key();
    }
    if (!matching.isEmpty())
        Library::removeDogEars(matching);
}

void DogEarManager::removeDogEar(Bookmark& dogEar)
{
    HostTrace::Call call("DogEarManager::removeDogEar", { QVariant::fromValue(dogEar) });
    if (dogEar.key() != 0)
        Library::removeDogEars({ dogEar.key() });
}

QString DogEarManager::tableVolumeId() const
{
    return m_volumeId;
}
