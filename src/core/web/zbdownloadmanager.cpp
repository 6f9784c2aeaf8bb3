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
        for (ZBDownloadTask *task : std::as_const(m_tasks))
            task->cancel();
        qDeleteAll(m_tasks);
        m_tasks.clear();
        m_taskItems.clear();
        m_numberOfDownloads = m_totalNumberOfDownloads = 0;
        m_totalExpectedBytes = m_totalReceivedBytes = 0;
        setDownloadingInfo();
    });
    connect(&m_tree, &ZBCaptureTree::pageAboutToBeRemoved, this, [this](int index) {
        ZBDownloadItem *page = m_tree.pages().value(index);
        for (auto it = m_taskItems.cbegin(); it != m_taskItems.cend(); ++it)
        {
            if (it.value() == page || it.value()->isInSubtreeOf(page))
                resetDownloadForItem(it.value());
        }
    });
}

ZBDownloadManager::~ZBDownloadManager()
{
    for (ZBDownloadTask *task : std::as_const(m_tasks))
        task->cancel();
    qDeleteAll(m_tasks);
}

QString ZBDownloadManager::titleWithoutExtension(const ZBDownloadItem *item)
{
    const QString title = item->resourceTitle();
    const int dot = title.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? title.left(dot) : title;
}

bool ZBDownloadManager::isVisibleChild(const ZBDownloadItem *parent, const ZBDownloadItem *child) const
{
    return parent->childrenWithFilter(m_tree.currentFilter()).contains(const_cast<ZBDownloadItem *>(child));
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
    if (!item || item->saved())
        return false;
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
    if (flash && hasChildren)
    {
        const QString package = ZBDownloadPaths::flashPackageFolder(folder, item->resourceTitle(), item->resourceUrl());
        QDir().mkpath(package);
        item->setResourceDownloadDir(package);
        item->setSourcePageTitle(parent ? parent->sourcePageTitle() : item->resourceTitle());
        startDownloadingOfItem(item);
    }
    int expected = 0;
    for (ZBDownloadItem *child : item->childrenWithFilter(filter))
    {
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
        else if (ZBDownloadItem::isFlashType(child->resourceType()))
        {
            downloadItem(child);
        }
        else
        {
            child->setIsDirectDownload(false);
            child->setResourceDownloadDir(folder);
            startDownloadingOfItem(child);
        }
        ++expected;
    }
    item->setExpectedResourcesCount(item->expectedResourcesCount() + expected);
    item->setIsDirectDownload(true);
    item->setReceivedBytesLength(0);
    item->setAvailableAction(ZBDownloadItem::CancelAction);
    m_tree.notifyItemChanged(item);
    return true;
}

void ZBDownloadManager::startDownloadingOfItem(ZBDownloadItem *item)
{
    if (!item || m_taskItems.key(item))
        return;
    const QUrl url(ZBCaptureTree::requestUrl(item->resourceUrl()));
    if (!url.isValid() || url.scheme().isEmpty())
        return;
    if (item->resourceDownloadDir().isEmpty())
        item->setResourceDownloadDir(createFolderForResource(item));

    // A transfer the network broke left its part file: the same target
    // takes up where it stopped.
    QString target = item->resourceDownloadPath();
    if (item->saved() || target.isEmpty() || !QFileInfo::exists(target + ZBDownloadPaths::partSuffix())
        || QFileInfo(target).absolutePath() != QDir(item->resourceDownloadDir()).absolutePath())
    {
        target = ZBDownloadPaths::addSuffixForDownload(titleWithoutExtension(item), item->resourceType(),
                                                       item->resourceDownloadDir(), ZBDownloadTask::runningTargets());
    }
    item->setResourceDownloadPath(target);

    const quint64 id = m_nextTaskId++;
    auto *task = new ZBDownloadTask(url, target, this);
    task->setStallTimeout(m_stallTimeout);
    if (m_jar)
        task->setCookieJar(m_jar);
    if (const ZBDownloadItem *root = item->pageRoot(); root && root != item)
        task->setReferrer(QUrl(ZBCaptureTree::requestUrl(root->resourceUrl())));
    m_tasks.insert(id, task);
    m_taskItems.insert(id, item);

    item->setResourceUUID(ZBAdditionalMethods::generateUUID());
    item->setDownloadID(id);
    item->setReceivedBytesLength(0);
    item->setAvailableAction(ZBDownloadItem::CancelAction);
    item->setInProgress(true);
    ++m_totalNumberOfDownloads;

    connect(task, &ZBDownloadTask::responseReceived, this, [this, id](const QUrl &finalUrl, qint64 expected) {
        ZBDownloadItem *item = itemForTask(id);
        if (!item)
            return;
        item->setResourceUrl(ZBCaptureTree::capturedUrl(finalUrl.toString()));
        if (expected > 0)
        {
            m_totalExpectedBytes += expected - std::max<qint64>(0, item->expectedBytesLength());
            item->setExpectedBytesLength(expected);
        }
        m_tree.notifyItemChanged(item);
    });
    connect(task, &ZBDownloadTask::progress, this, [this, id](qint64 received, qint64) {
        ZBDownloadItem *item = itemForTask(id);
        if (!item)
            return;
        m_totalReceivedBytes += received - item->receivedBytesLength();
        item->setReceivedBytesLength(received);
        m_tree.notifyItemChanged(item);
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

ZBDownloadItem *ZBDownloadManager::itemForTask(quint64 id) const
{
    return m_taskItems.value(id);
}

void ZBDownloadManager::dropTask(ZBDownloadItem *item)
{
    const quint64 id = m_taskItems.key(item);
    if (!id)
        return;
    m_taskItems.remove(id);
    if (ZBDownloadTask *task = m_tasks.take(id))
    {
        task->cancel();
        task->deleteLater();
    }
    item->setDownloadID(0);
}

void ZBDownloadManager::finishItem(ZBDownloadItem *item, const QString &path)
{
    ++m_numberOfDownloads;
    const quint64 id = m_taskItems.key(item);
    m_taskItems.remove(id);
    if (ZBDownloadTask *task = m_tasks.take(id))
        task->deleteLater();
    item->setDownloadID(0);
    item->setResourceDownloadPath(path);
    item->setSaved(true);
    item->setInProgress(false);
    m_totalExpectedBytes -= std::max<qint64>(0, item->expectedBytesLength());
    m_totalReceivedBytes -= item->receivedBytesLength();

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
    if (item->isDirectDownload())
        Q_EMIT taskCompleted(text("logDownloadComplete").arg(item->resourceTitle()), path);

    qint64 size = QFileInfo(path).size();
    if (item->receivedBytesLength() > item->expectedBytesLength())
        item->setExpectedBytesLength(item->receivedBytesLength());
    if (item->expectedBytesLength() <= 0)
        item->setExpectedBytesLength(std::max<qint64>(1, size));
    item->setReceivedBytesLength(item->expectedBytesLength());
    item->setAvailableAction(added ? ZBDownloadItem::PlayAction : ZBDownloadItem::ShowInFinderAction);
    m_tree.notifyItemChanged(item);
    Q_EMIT itemFinished(item, path);

    if (ZBDownloadItem *parent = item->parent(); parent && parent->isDirectDownload())
    {
        if (ZBDownloadItem::isFlashType(parent->resourceType()) && parent->resourceUrl() == item->resourceUrl())
            parent->setResourceDownloadPath(path);
        childEnded(parent, true);
    }
    setDownloadingInfo();
}

void ZBDownloadManager::childEnded(ZBDownloadItem *parent, bool)
{
    parent->setReceivedResourcesCount(parent->receivedResourcesCount() + 1);
    if (parent->receivedResourcesCount() < parent->expectedResourcesCount())
    {
        m_tree.notifyItemChanged(parent);
        return;
    }
    completeParent(parent);
}

void ZBDownloadManager::completeParent(ZBDownloadItem *parent)
{
    const bool flash = ZBDownloadItem::isFlashType(parent->resourceType());
    parent->setExpectedResourcesCount(1);
    parent->setReceivedResourcesCount(1);
    parent->setSaved(true);
    parent->setInProgress(false);
    parent->setAvailableAction(flash ? ZBDownloadItem::PlayAction : ZBDownloadItem::ShowInFinderAction);
    parent->setIsDirectDownload(false);
    Q_EMIT taskCompleted(text("logDownloadComplete").arg(parent->resourceTitle()),
                         flash ? parent->resourceDownloadPath() : parent->resourceDownloadDir());
    if (flash)
    {
        QStringList paths;
        for (const ZBDownloadItem *child : parent->resources())
        {
            if (child->saved() && !child->resourceDownloadPath().isEmpty())
                paths << child->resourceDownloadPath();
        }
        if (ZBItem *track = m_library ? m_library->itemByUUID(parent->resourceUUID()) : nullptr)
        {
            for (const QString &path : std::as_const(paths))
                m_library->addResourceWithPath(path, path == parent->resourceDownloadPath(), track);
        }
        QString error;
        if (!ZBDownloadPaths::writeReadme(parent->resourceDownloadDir(), paths, &error))
            qWarning().noquote() << "Cannot write the list of the Flash package's files:" << error;
    }
    m_tree.notifyItemChanged(parent);
    if (ZBDownloadItem *grandparent = parent->parent(); grandparent && grandparent->isDirectDownload())
        childEnded(grandparent, true);
}

void ZBDownloadManager::failItem(ZBDownloadItem *item, const QString &reason)
{
    ++m_numberOfDownloads;
    if (item->isDirectDownload())
        Q_EMIT taskCompleted(text("logDownloadFailedWithError").arg(reason), QString());
    m_totalExpectedBytes -= std::max<qint64>(0, item->expectedBytesLength());
    m_totalReceivedBytes -= item->receivedBytesLength();
    // The part file of a broken transfer stays for the next try; only the
    // task goes.
    const quint64 id = m_taskItems.key(item);
    m_taskItems.remove(id);
    if (ZBDownloadTask *task = m_tasks.take(id))
        task->deleteLater();
    item->setDownloadID(0);
    item->setReceivedBytesLength(0);
    item->setAvailableAction(ZBDownloadItem::DownloadAction);
    item->setIsDirectDownload(false);
    item->setInProgress(false);
    item->setSaved(false);
    m_tree.notifyItemChanged(item);
    Q_EMIT itemFailed(item, reason);

    if (ZBDownloadItem *parent = item->parent(); parent && parent->isDirectDownload())
    {
        parent->setExpectedResourcesCount(parent->expectedResourcesCount() - 1);
        if (parent->receivedResourcesCount() < parent->expectedResourcesCount())
        {
            m_tree.notifyItemChanged(parent);
        }
        else
        {
            parent->setExpectedResourcesCount(1);
            parent->setReceivedResourcesCount(1);
            parent->setAvailableAction(ZBDownloadItem::ShowInFinderAction);
            Q_EMIT taskCompleted(text("logDownloadComplete").arg(parent->resourceTitle()), QString());
            parent->setIsDirectDownload(false);
            parent->setInProgress(false);
            m_tree.notifyItemChanged(parent);
        }
    }
    setDownloadingInfo();
}

void ZBDownloadManager::resetDownloadForItem(ZBDownloadItem *item)
{
    if (!item)
        return;
    dropTask(item);
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
    const bool container = !item->parent() || ZBDownloadItem::isFlashType(item->resourceType());
    if (!container)
    {
        m_totalExpectedBytes -= std::max<qint64>(0, item->expectedBytesLength());
        m_totalReceivedBytes -= item->receivedBytesLength();
        if (m_taskItems.key(item))
            --m_totalNumberOfDownloads;
        dropTask(item);
        // A cancelled file leaves nothing behind, not even its part.
        QFile::remove(item->resourceDownloadPath() + ZBDownloadPaths::partSuffix());
        item->setReceivedBytesLength(0);
        item->setInProgress(false);
        item->setAvailableAction(ZBDownloadItem::DownloadAction);
        if (ZBDownloadItem *parent = item->parent())
        {
            parent->setExpectedResourcesCount(parent->expectedResourcesCount() - 1);
            if (parent->receivedResourcesCount() >= parent->expectedResourcesCount())
            {
                parent->setAvailableAction(ZBDownloadItem::DownloadAction);
                parent->setIsDirectDownload(false);
                m_tree.notifyItemChanged(parent);
            }
        }
    }
    else
    {
        for (ZBDownloadItem *child : item->childrenWithFilter(m_tree.currentFilter()))
        {
            if (child->availableAction() != ZBDownloadItem::CancelAction)
                continue;
            if (m_taskItems.key(child))
                --m_totalNumberOfDownloads;
            QFile::remove(child->resourceDownloadPath() + ZBDownloadPaths::partSuffix());
            resetDownloadForItem(child);
        }
        item->setReceivedResourcesCount(0);
        item->setAvailableAction(ZBDownloadItem::DownloadAction);
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
