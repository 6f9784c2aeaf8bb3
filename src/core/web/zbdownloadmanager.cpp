#include "web/zbdownloadmanager.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "playback/zbmediaprobe.h"
#include "util/zbadditionalmethods.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbdownloadpaths.h"
#include "web/zbdownloadtask.h"

namespace
{
QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}
} // namespace

ZBDownloadManager::ZBDownloadManager(ZBCaptureTree &tree, ZBLibraryController *library, QObject *parent)
    : QObject(parent)
    , m_tree(tree)
    , m_library(library)
{
    // A page that leaves the list takes its running transfers with it.
    connect(&m_tree, &ZBCaptureTree::pagesAboutToBeCleared, this, [this]() {
        for (const Transfer &transfer : std::as_const(m_transfers))
        {
            transfer.task->cancel();
            transfer.task->deleteLater();
        }
        m_transfers.clear();
        m_numberOfDownloads = m_totalNumberOfDownloads = 0;
        setDownloadingInfo();
    });
    connect(&m_tree, &ZBCaptureTree::pageAboutToBeRemoved, this, [this](int index) {
        ZBDownloadItem *page = m_tree.pages().value(index);
        // Collected first: a reset changes the list of transfers.
        QList<ZBDownloadItem *> doomed;
        for (const Transfer &transfer : std::as_const(m_transfers))
        {
            if (transfer.item == page || transfer.item->isInSubtreeOf(page))
                doomed << transfer.item;
        }
        for (ZBDownloadItem *item : std::as_const(doomed))
            resetDownloadForItem(item);
        setDownloadingInfo();
    });
}

ZBDownloadManager::~ZBDownloadManager()
{
    for (const Transfer &transfer : std::as_const(m_transfers))
    {
        transfer.task->cancel();
        delete transfer.task;
    }
}

QString ZBDownloadManager::titleWithoutExtension(const ZBDownloadItem *item)
{
    const QString title = item->resourceTitle();
    const int dot = title.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? title.left(dot) : title;
}

bool ZBDownloadManager::isRunningPackage(const ZBDownloadItem *item)
{
    return item->isDirectDownload() && ZBDownloadItem::isFlashType(item->resourceType()) &&
           !item->resources().isEmpty();
}

bool ZBDownloadManager::isBusy(const ZBDownloadItem *item) const
{
    return transferIdOf(item) != 0 ||
           (item->isDirectDownload() && item->availableAction() == ZBDownloadItem::CancelAction);
}

quint64 ZBDownloadManager::transferIdOf(const ZBDownloadItem *item) const
{
    const quint64 id = item ? item->downloadID() : 0;
    return id && m_transfers.value(id).item == item ? id : 0;
}

ZBDownloadItem *ZBDownloadManager::itemForTask(quint64 id) const
{
    return m_transfers.value(id).item;
}

ZBDownloadItem *ZBDownloadManager::counterFor(ZBDownloadItem *item) const
{
    if (isRunningPackage(item))
        return item;
    ZBDownloadItem *parent = item->parent();
    return parent && parent->isDirectDownload() ? parent : nullptr;
}

QString ZBDownloadManager::createFolderForResource(ZBDownloadItem *item)
{
    QStringList titles;
    if (!item->parent())
        titles << item->resourceTitle();
    for (const ZBDownloadItem *ancestor = item->parent(); ancestor; ancestor = ancestor->parent())
        titles.prepend(ancestor->resourceTitle());
    const QString folder = ZBDownloadPaths::folderForTitles(m_downloadsFolder, titles);
    QDir().mkpath(folder);
    return folder;
}

bool ZBDownloadManager::downloadItem(ZBDownloadItem *item)
{
    if (!item || item->saved() || isBusy(item))
        return false;
    if (m_downloadsFolder.isEmpty())
    {
        // Never the file system's root or the working folder.
        qWarning().noquote() << "No downloads folder is set; nothing is downloaded.";
        return false;
    }
    const int filter = m_tree.currentFilter();
    if (!item->parent() && item->numberOfChildrenWithFilter(filter) == 0)
        return false;
    ZBDownloadItem *parent = item->parent();
    const bool flash = ZBDownloadItem::isFlashType(item->resourceType());
    const bool hasChildren = !item->resources().isEmpty();

    if (!hasChildren && parent)
    {
        if (parent->isDirectDownload())
            parent->setExpectedResourcesCount(parent->expectedResourcesCount() + 1);
        item->setResourceDownloadDir(createFolderForResource(item));
        item->setIsDirectDownload(true);
        item->setSourcePageTitle(parent->resourceTitle());
        startDownloadingOfItem(item);
        return true;
    }

    const QString folder = createFolderForResource(item);
    const QString cleanTitle = ZBDownloadPaths::safeComponent(item->resourceTitle());
    if (flash && hasChildren && parent)
    {
        // A package saved before goes to the Trash rather than being mixed
        // with the new one.
        const QString earlier = folder + QLatin1Char('/') + cleanTitle;
        if (QFileInfo::exists(earlier))
            QFile::moveToTrash(earlier);
    }
    item->setResourceDownloadDir(folder);
    // Whole from here on: the files started below count towards it.
    item->setIsDirectDownload(true);
    item->setReceivedResourcesCount(0);
    int expected = 0;
    if (flash && hasChildren)
    {
        const QString package = ZBDownloadPaths::flashPackageFolder(folder, item->resourceTitle(), item->resourceUrl());
        QDir().mkpath(package);
        item->setResourceDownloadDir(package);
        item->setSourcePageTitle(parent ? parent->sourcePageTitle() : item->resourceTitle());
        // The movie itself is one of the package's files.
        startDownloadingOfItem(item);
        ++expected;
    }
    for (ZBDownloadItem *child : item->childrenWithFilter(filter))
    {
        ++expected;
        // A file already on its way (started on its own) counts as it is.
        if (isBusy(child))
            continue;
        child->setSaved(false);
        child->setSourcePageTitle(item->resourceTitle());
        if (flash)
        {
            const QString childFolder =
                ZBDownloadPaths::flashPackageFolder(folder, item->resourceTitle(), child->resourceUrl());
            QDir().mkpath(childFolder);
            child->setResourceDownloadDir(childFolder);
            startDownloadingOfItem(child);
        }
        else if (ZBDownloadItem::isFlashType(child->resourceType()) && !child->resources().isEmpty())
        {
            downloadItem(child);
        }
        else
        {
            child->setIsDirectDownload(false);
            child->setResourceDownloadDir(folder);
            startDownloadingOfItem(child);
        }
    }
    item->setExpectedResourcesCount(expected);
    item->setReceivedBytesLength(0);
    item->setInProgress(true);
    item->setAvailableAction(ZBDownloadItem::CancelAction);
    m_tree.notifyItemChanged(item);
    return true;
}

void ZBDownloadManager::startDownloadingOfItem(ZBDownloadItem *item)
{
    if (!item || transferIdOf(item))
        return;
    // An address nobody can fetch still becomes a task: it fails with a
    // reason the user sees, and the page's count goes on.
    const QUrl url(ZBCaptureTree::requestUrl(item->resourceUrl()));
    if (item->resourceDownloadDir().isEmpty())
        item->setResourceDownloadDir(createFolderForResource(item));

    // A transfer the network broke left its part file: the same target
    // takes up where it stopped. A new download never takes over the part
    // file of another one.
    QString target = item->resourceDownloadPath();
    if (item->saved() || target.isEmpty() || !QFileInfo::exists(target + ZBDownloadPaths::partSuffix())
        || QFileInfo(target).absolutePath() != QDir(item->resourceDownloadDir()).absolutePath())
    {
        QSet<QString> taken = ZBDownloadTask::runningTargets();
        do
        {
            target = ZBDownloadPaths::addSuffixForDownload(titleWithoutExtension(item), item->resourceType(),
                                                           item->resourceDownloadDir(), taken);
            taken.insert(target);
        } while (QFileInfo::exists(target + ZBDownloadPaths::partSuffix()));
    }
    item->setResourceDownloadPath(target);

    const quint64 id = m_nextTaskId++;
    auto *task = new ZBDownloadTask(url, target, this);
    task->setStallTimeout(m_stallTimeout);
    if (m_jar)
        task->setCookieJar(m_jar);
    if (const ZBDownloadItem *root = item->pageRoot(); root && root != item)
        task->setReferrer(QUrl(ZBCaptureTree::requestUrl(root->resourceUrl())));
    m_transfers.insert(id, Transfer{task, item});

    item->setResourceUUID(ZBAdditionalMethods::generateUUID());
    item->setDownloadID(id);
    item->setReceivedBytesLength(0);
    item->setAvailableAction(ZBDownloadItem::CancelAction);
    item->setInProgress(true);
    ++m_totalNumberOfDownloads;

    connect(task, &ZBDownloadTask::responseReceived, this, [this, id](const QUrl &finalUrl, qint64 expected) {
        auto transfer = m_transfers.find(id);
        if (transfer == m_transfers.end())
            return;
        ZBDownloadItem *item = transfer->item;
        item->setResourceUrl(ZBCaptureTree::capturedUrl(finalUrl.toString()));
        if (expected > 0)
        {
            m_totalExpectedBytes += expected - transfer->expected;
            transfer->expected = expected;
            item->setExpectedBytesLength(expected);
        }
        m_tree.notifyItemChanged(item);
    });
    connect(task, &ZBDownloadTask::progress, this, [this, id](qint64 received, qint64) {
        auto transfer = m_transfers.find(id);
        if (transfer == m_transfers.end())
            return;
        m_totalReceivedBytes += received - transfer->received;
        transfer->received = received;
        transfer->item->setReceivedBytesLength(received);
        m_tree.notifyItemChanged(transfer->item);
        Q_EMIT downloadingInfoChanged();
    });
    connect(task, &ZBDownloadTask::finished, this, [this, id](const QString &path) {
        if (ZBDownloadItem *item = itemForTask(id))
            finishItem(item, path);
    });
    connect(task, &ZBDownloadTask::failed, this, [this, id](const QString &reason) {
        if (ZBDownloadItem *item = itemForTask(id))
            failItem(item, reason);
    });
    setDownloadingInfo();
    m_tree.notifyItemChanged(item);
    task->start();
}

ZBDownloadTask *ZBDownloadManager::takeTransfer(ZBDownloadItem *item)
{
    const quint64 id = transferIdOf(item);
    if (!id)
        return nullptr;
    const Transfer transfer = m_transfers.take(id);
    m_totalExpectedBytes -= transfer.expected;
    m_totalReceivedBytes -= transfer.received;
    item->setDownloadID(0);
    transfer.task->deleteLater();
    return transfer.task;
}

void ZBDownloadManager::finishItem(ZBDownloadItem *item, const QString &path)
{
    ++m_numberOfDownloads;
    ZBDownloadItem *counter = counterFor(item);
    // The movie of a package is done when the package is.
    const bool ownFileOfPackage = counter == item;
    takeTransfer(item);
    item->setResourceDownloadPath(path);

    bool added = false;
    if (item->fileMustBeAddedToLibrary() && m_library)
    {
        const QString uuid = m_library->addItemToLibrarybyName(
            titleWithoutExtension(item), path, item->resourceUrl(), item->resourceType(), 0,
            ZBMediaProbe::getMovieDurationAtPath(path), 0, QDateTime::currentDateTimeUtc(), QDateTime(),
            item->sourcePageTitle(), item->resourceUUID());
        added = !uuid.isEmpty();
        if (added)
        {
            item->setResourceUUID(uuid);
            Q_EMIT libraryChanged();
        }
    }

    const qint64 size = QFileInfo(path).size();
    if (item->receivedBytesLength() > item->expectedBytesLength())
        item->setExpectedBytesLength(item->receivedBytesLength());
    if (item->expectedBytesLength() <= 0)
        item->setExpectedBytesLength(std::max<qint64>(1, size));
    item->setReceivedBytesLength(item->expectedBytesLength());
    if (!ownFileOfPackage)
    {
        item->setSaved(true);
        item->setInProgress(false);
        if (item->isDirectDownload())
            Q_EMIT taskCompleted(text("logDownloadComplete").arg(item->resourceTitle()), path);
        item->setAvailableAction(added ? ZBDownloadItem::PlayAction : ZBDownloadItem::ShowInFinderAction);
    }
    m_tree.notifyItemChanged(item);
    Q_EMIT itemFinished(item, path);

    if (counter)
        childEnded(counter, true);
    setDownloadingInfo();
}

void ZBDownloadManager::childEnded(ZBDownloadItem *parent, bool saved, const QString &failure)
{
    if (saved)
        parent->setReceivedResourcesCount(parent->receivedResourcesCount() + 1);
    else
        parent->setExpectedResourcesCount(parent->expectedResourcesCount() - 1);
    if (parent->receivedResourcesCount() < parent->expectedResourcesCount())
    {
        m_tree.notifyItemChanged(parent);
        return;
    }
    if (parent->receivedResourcesCount() > 0)
    {
        completeParent(parent);
        return;
    }
    // Nothing of it was saved: it can be downloaded again as it was.
    ZBDownloadItem *grandparent = parent->parent();
    const bool counted = grandparent && grandparent->isDirectDownload();
    parent->setExpectedResourcesCount(0);
    parent->setReceivedResourcesCount(0);
    parent->setIsDirectDownload(false);
    parent->setInProgress(false);
    parent->setAvailableAction(ZBDownloadItem::DownloadAction);
    if (!failure.isEmpty())
        Q_EMIT taskCompleted(text("logDownloadFailedWithError").arg(failure), QString());
    m_tree.notifyItemChanged(parent);
    if (counted)
        childEnded(grandparent, false, failure);
}

void ZBDownloadManager::completeParent(ZBDownloadItem *parent)
{
    const bool flash = ZBDownloadItem::isFlashType(parent->resourceType());
    ZBDownloadItem *grandparent = parent->parent();
    const bool counted = grandparent && grandparent->isDirectDownload();
    parent->setExpectedResourcesCount(1);
    parent->setReceivedResourcesCount(1);
    parent->setSaved(true);
    parent->setInProgress(false);
    parent->setIsDirectDownload(false);
    ZBItem *track = nullptr;
    if (flash)
    {
        // The movie first, then everything it loaded.
        QStringList paths;
        const QString movie = parent->resourceDownloadPath();
        const bool movieSaved = !movie.isEmpty() && QFileInfo(movie).isFile();
        if (movieSaved)
            paths << movie;
        for (const ZBDownloadItem *child : parent->resources())
        {
            if (child->saved() && !child->resourceDownloadPath().isEmpty())
                paths << child->resourceDownloadPath();
        }
        track = movieSaved && m_library && !parent->resourceUUID().isEmpty()
                    ? m_library->itemByUUID(parent->resourceUUID())
                    : nullptr;
        if (track)
        {
            for (const QString &path : std::as_const(paths))
                m_library->addResourceWithPath(path, path == movie, track);
        }
        QString error;
        if (!ZBDownloadPaths::writeReadme(parent->resourceDownloadDir(), paths, &error))
            qWarning().noquote() << "Cannot write the list of the Flash package's files:" << error;
    }
    parent->setAvailableAction(track ? ZBDownloadItem::PlayAction : ZBDownloadItem::ShowInFinderAction);
    Q_EMIT taskCompleted(text("logDownloadComplete").arg(parent->resourceTitle()),
                         track ? parent->resourceDownloadPath() : parent->resourceDownloadDir());
    m_tree.notifyItemChanged(parent);
    if (counted)
        childEnded(grandparent, true);
}

void ZBDownloadManager::failItem(ZBDownloadItem *item, const QString &reason)
{
    ++m_numberOfDownloads;
    ZBDownloadItem *counter = counterFor(item);
    const bool ownFileOfPackage = counter == item;
    // The part file of a broken transfer stays for the next try; only the
    // task goes.
    takeTransfer(item);
    item->setReceivedBytesLength(0);
    if (!ownFileOfPackage)
    {
        if (item->isDirectDownload())
            Q_EMIT taskCompleted(text("logDownloadFailedWithError").arg(reason), QString());
        item->setAvailableAction(ZBDownloadItem::DownloadAction);
        item->setIsDirectDownload(false);
        item->setInProgress(false);
        item->setSaved(false);
    }
    m_tree.notifyItemChanged(item);
    Q_EMIT itemFailed(item, reason);

    if (counter)
        childEnded(counter, false, reason);
    setDownloadingInfo();
}

void ZBDownloadManager::resetDownloadForItem(ZBDownloadItem *item)
{
    if (!item)
        return;
    if (ZBDownloadTask *task = takeTransfer(item))
    {
        // Cancelled: the task takes its part file with it.
        task->cancel();
        --m_totalNumberOfDownloads;
    }
    item->setReceivedBytesLength(0);
    item->setAvailableAction(ZBDownloadItem::DownloadAction);
    item->setIsDirectDownload(false);
    item->setInProgress(false);
    item->setSaved(false);
    m_tree.notifyItemChanged(item);
}

void ZBDownloadManager::cancelDownloadOfItem(ZBDownloadItem *item)
{
    if (!item || item->saved())
        return;
    const bool container = !item->parent() || isRunningPackage(item);
    if (!container)
    {
        // Only a running file; a failed one keeps its part for a resume.
        if (!transferIdOf(item))
            return;
        ZBDownloadItem *counter = counterFor(item);
        resetDownloadForItem(item);
        if (counter)
            childEnded(counter, false);
    }
    else
    {
        ZBDownloadItem *parent = item->parent();
        const bool counted = parent && parent->isDirectDownload() && item->isDirectDownload();
        // What ends below it from now on no longer counts towards it.
        item->setIsDirectDownload(false);
        // Every running file below it, whatever the filter shows now.
        for (ZBDownloadItem *child : item->resources())
        {
            if (isRunningPackage(child))
                cancelDownloadOfItem(child);
            if (transferIdOf(child) || child->availableAction() == ZBDownloadItem::CancelAction)
                resetDownloadForItem(child);
        }
        item->setReceivedResourcesCount(0);
        item->setExpectedResourcesCount(0);
        item->setAvailableAction(ZBDownloadItem::DownloadAction);
        item->setInProgress(false);
        // A package's own movie goes on as a file of its own and tells its
        // page when it ends; a movie already over tells it now.
        if (counted && !transferIdOf(item))
        {
            const bool movieSaved = QFileInfo(item->resourceDownloadPath()).isFile();
            if (movieSaved)
            {
                item->setSaved(true);
                item->setAvailableAction(m_library && m_library->itemByUUID(item->resourceUUID())
                                             ? ZBDownloadItem::PlayAction
                                             : ZBDownloadItem::ShowInFinderAction);
            }
            childEnded(parent, movieSaved);
        }
    }
    setDownloadingInfo();
    m_tree.notifyItemChanged(item);
}

void ZBDownloadManager::cancelAll()
{
    const QList<ZBDownloadItem *> pages = m_tree.pages();
    for (ZBDownloadItem *page : pages)
        cancelDownloadOfItem(page);
}

void ZBDownloadManager::downloadSelected(const QList<ZBDownloadItem *> &selection)
{
    for (auto it = selection.crbegin(); it != selection.crend(); ++it)
    {
        if ((*it)->availableAction() == ZBDownloadItem::DownloadAction)
            downloadItem(*it);
        m_tree.notifyItemChanged(*it);
    }
}

void ZBDownloadManager::downloadAll()
{
    const QList<ZBDownloadItem *> pages = m_tree.pages();
    for (ZBDownloadItem *page : pages)
        downloadItem(page);
}

void ZBDownloadManager::setDownloadingInfo()
{
    if (m_numberOfDownloads < m_totalNumberOfDownloads)
    {
        m_downloadInProgress = true;
    }
    else
    {
        m_numberOfDownloads = 0;
        m_totalNumberOfDownloads = 0;
        m_downloadInProgress = false;
    }
    Q_EMIT downloadingInfoChanged();
}
