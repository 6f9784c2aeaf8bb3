#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QtGlobal>

// One row of the download tree: a page root (no parent) or a resource the
// page requested, with its download state. An item owns its children; the
// parent link is a plain back reference.
//
// The transfer itself lives elsewhere: an item only carries the opaque id the
// transfer code hands out (0 for none), so a finished or failed transfer can
// find its row again with getResourceByDownloadID().
class ZBDownloadItem
{
public:
    // What a click in the action column does.
    enum Action
    {
        DownloadAction = 0,
        CancelAction = 1,
        PlayAction = 2,
        ShowInFinderAction = 3,
    };
    // The tree view's filter bar.
    enum Filter
    {
        FilterAll = 0,
        FilterFlash = 1,
        FilterVideo = 2,
        FilterMedia = 3,
    };

    ZBDownloadItem() = default;
    explicit ZBDownloadItem(const QString &url);
    ~ZBDownloadItem();
    ZBDownloadItem(const ZBDownloadItem &) = delete;
    ZBDownloadItem &operator=(const ZBDownloadItem &) = delete;

    ZBDownloadItem *parent() const { return m_parent; }
    void setParent(ZBDownloadItem *parent) { m_parent = parent; }
    // The page root at the top of this item's chain (the item itself for a root).
    ZBDownloadItem *pageRoot();

    QString resourceUUID() const { return m_resourceUUID; }
    void setResourceUUID(const QString &uuid) { m_resourceUUID = uuid; }
    QString resourceTitle() const { return m_title; }
    void setResourceTitle(const QString &title) { m_title = title; }
    QString resourceUrl() const { return m_url; }
    // Keeps the parent's URL lookup in step.
    void setResourceUrl(const QString &url);
    QString resourceType() const { return m_type; }
    // Types compare without case everywhere, so they are kept lower-case.
    void setResourceType(const QString &type) { m_type = type.toLower(); }
    QString resourceDownloadPath() const { return m_downloadPath; }
    void setResourceDownloadPath(const QString &path) { m_downloadPath = path; }
    QString resourceDownloadDir() const { return m_downloadDir; }
    void setResourceDownloadDir(const QString &dir) { m_downloadDir = dir; }
    quint64 downloadID() const { return m_downloadID; }
    void setDownloadID(quint64 id) { m_downloadID = id; }
    int availableAction() const { return m_availableAction; }
    void setAvailableAction(int action) { m_availableAction = action; }
    // 64-bit, unlike the 32-bit counts of old: videos beyond 2 GiB are common.
    qint64 expectedBytesLength() const { return m_expectedBytesLength; }
    void setExpectedBytesLength(qint64 length) { m_expectedBytesLength = length; }
    qint64 receivedBytesLength() const { return m_receivedBytesLength; }
    void setReceivedBytesLength(qint64 length) { m_receivedBytesLength = length; }
    QString sourcePageTitle() const { return m_sourcePageTitle; }
    void setSourcePageTitle(const QString &title) { m_sourcePageTitle = title; }
    int expectedResourcesCount() const { return m_expectedResourcesCount; }
    void setExpectedResourcesCount(int count) { m_expectedResourcesCount = count; }
    int receivedResourcesCount() const { return m_recievedResourcesCount; }
    void setReceivedResourcesCount(int count) { m_recievedResourcesCount = count; }
    bool isDirectDownload() const { return m_directDownload; }
    void setIsDirectDownload(bool direct) { m_directDownload = direct; }
    bool fileMustBeAddedToLibrary() const { return m_addToLibrary; }
    void setFileMustBeAddedToLibrary(bool add) { m_addToLibrary = add; }
    bool saved() const { return m_saved; }
    void setSaved(bool saved) { m_saved = saved; }
    bool inProgress() const { return m_inProgress; }
    void setInProgress(bool inProgress) { m_inProgress = inProgress; }
    bool alreadyShowed() const { return m_alreadyShowed; }
    void setAlreadyShowed(bool showed) { m_alreadyShowed = showed; }
    // The Content-Type the server named for this resource, learnt by a probe;
    // empty until then.
    QString contentType() const { return m_contentType; }
    void setContentType(const QString &type) { m_contentType = type; }

    const QList<ZBDownloadItem *> &resources() const { return m_resources; }
    const QList<ZBDownloadItem *> &videoResources() const { return m_videoResources; }
    const QList<ZBDownloadItem *> &swfResources() const { return m_swfResources; }
    const QList<ZBDownloadItem *> &mediaResources() const { return m_mediaResources; }
    // Append without a duplicate check; addResource() takes ownership.
    void addResource(ZBDownloadItem *item);
    void addVideoResource(ZBDownloadItem *item) { m_videoResources.append(item); }
    void addSwfResource(ZBDownloadItem *item) { m_swfResources.append(item); }
    void addMediaResource(ZBDownloadItem *item) { m_mediaResources.append(item); }

    // The children a filter shows: a resource (a previewed Flash movie that
    // gathered children) knows only "video" and "everything"; a page root
    // has one list per filter and none for an unknown filter.
    const QList<ZBDownloadItem *> &childrenWithFilter(int filter) const;
    ZBDownloadItem *childAtIndex(int index, int filter) const;
    int numberOfChildrenWithFilter(int filter) const;

    // The first direct child captured with exactly this URL.
    ZBDownloadItem *getResourceByURL(const QString &url) const;
    // The item below this one (depth first, in list order) whose transfer has this id.
    ZBDownloadItem *getResourceByDownloadID(quint64 id) const;
    bool isInSubtreeOf(const ZBDownloadItem *ancestor) const;

    static bool isFlashType(const QString &type);
    // The label key of an action, empty for no action.
    static QString actionKey(int action);

private:
    void urlChanged(ZBDownloadItem *child, const QString &oldUrl);

    ZBDownloadItem *m_parent = nullptr;
    QString m_resourceUUID;
    QString m_title;
    QString m_url;
    QString m_type;
    QString m_downloadPath;
    QString m_downloadDir;
    quint64 m_downloadID = 0;
    int m_availableAction = DownloadAction;
    qint64 m_expectedBytesLength = 0;
    qint64 m_receivedBytesLength = 0;
    QList<ZBDownloadItem *> m_resources;
    QString m_sourcePageTitle;
    int m_expectedResourcesCount = 0;
    int m_recievedResourcesCount = 0;
    QList<ZBDownloadItem *> m_videoResources;
    QList<ZBDownloadItem *> m_swfResources;
    QList<ZBDownloadItem *> m_mediaResources;
    bool m_directDownload = false;
    bool m_addToLibrary = false;
    bool m_saved = false;
    bool m_inProgress = false;
    bool m_alreadyShowed = false;
    QString m_contentType;
    // A page may request thousands of resources; each one is checked against
    // the ones already there.
    QHash<QString, ZBDownloadItem *> m_resourcesByURL;
};
