#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include "web/zbresourceprobe.h"

class ZBDownloadItem;

// The captured pages and their resources: every page committed in the
// browser becomes a page root, and each request the page makes afterwards
// that is not already there becomes a resource below it, sorted into the
// page's Flash, video and media lists.
//
// Lists only ever grow at their end while a page stays; a page leaves as a
// whole. The signals say so after each change, which lets a model insert
// rows instead of starting over for every resource a busy page requests.
class ZBCaptureTree : public QObject
{
    Q_OBJECT

public:
    // The length of a resource whose size nobody knows yet.
    static constexpr qint64 UnknownLength = -1;

    explicit ZBCaptureTree(QObject *parent = nullptr);
    ~ZBCaptureTree() override;

    // Page roots in the order their pages were first committed.
    const QList<ZBDownloadItem *> &pages() const { return m_pages; }
    int indexOfPage(const ZBDownloadItem *page) const;
    ZBDownloadItem *getPageByTitle(const QString &title) const;
    ZBDownloadItem *getPageByURL(const QString &url) const;

    // A page committed in the main frame: it becomes the page capture files
    // resources under, and a root with its own address as first resource
    // unless one with this URL exists (which is returned). While previewing
    // the new root is not listed.
    ZBDownloadItem *commitPage(const QString &url);
    // The page's title arrived: its root, found under the title it had so far
    // (or already the new one), takes it. Returns that root, none when lost.
    ZBDownloadItem *receivePageTitle(const QString &title);
    void removePage(ZBDownloadItem *page);
    void removeAllPages();

    // Captures one resource for the current page (or the previewed movie).
    // `url` is written the way capture keeps URLs (see capturedUrl()); a
    // length below 0 is unknown and a probe will be asked. Returns the new
    // item, none when it was dropped.
    ZBDownloadItem *receivingUrl(const QString &url, qint64 expectedLength = UnknownLength);
    // A request the browser reports with its full URL: nothing while capture
    // is paused.
    ZBDownloadItem *receiveRequest(const QString &fullUrl, qint64 expectedLength = UnknownLength);
    // A URL as capture keeps it: the part after its first "http://", the
    // whole URL when it has none (so "https://" addresses stay complete).
    static QString capturedUrl(const QString &fullUrl);
    // The address a request for a captured URL goes to.
    static QString requestUrl(const QString &capturedUrl);

    // Capture is paused between a page's load start and its commit, so late
    // requests of the previous page do not join the next one.
    bool shouldBypassReceiveURLs() const { return m_bypass; }
    void setShouldBypassReceiveURLs(bool bypass) { m_bypass = bypass; }
    // The title of the page on screen: the key of the page resources go to.
    QString webFrameTitle() const { return m_webFrameTitle; }
    void setWebFrameTitle(const QString &title) { m_webFrameTitle = title; }
    // While a Flash movie is previewed, what it loads goes under it.
    ZBDownloadItem *previewItem() const { return m_previewItem; }
    void setPreviewItem(ZBDownloadItem *item) { m_previewItem = item; }
    bool isPreviewing() const { return m_previewing; }
    void setPreviewing(bool previewing) { m_previewing = previewing; }
    // Starts a preview of a Flash resource: it keeps its children, loses its
    // download state, and the movie's own loads go below it.
    void beginPreview(ZBDownloadItem *item);

    int currentFilter() const { return m_currentFilter; }
    void setCurrentFilter(int filter);

    // The Preview button: a Flash resource other than the one previewed.
    bool isPreviewAvailable(const ZBDownloadItem *selected) const;
    static bool rootDownloadItemExistInSelection(const QList<ZBDownloadItem *> &selection);
    static bool availableForDownloadItemExistsInSelection(const QList<ZBDownloadItem *> &selection);
    // What Copy URL puts on the clipboard: each URL followed by a line end.
    static QString copyURLText(const QList<ZBDownloadItem *> &selection);

    // The extension that goes with a media Content-Type; empty when the type
    // is none the player takes.
    static QString typeForContentType(const QString &contentType);
    // A resource whose name says nothing of media but whose server sends a
    // media type takes that type and joins the page's media lists. Returns
    // whether the item's type changed.
    bool applyContentType(ZBDownloadItem *item, const QString &contentType);

    // Sizes and types are learnt by this probe (not owned); none, no probes.
    void setResourceProbe(ZBResourceProbe *probe);
    // Asks the probe about an item (done by capture for unknown lengths).
    void probeItem(ZBDownloadItem *item);

    // For whoever changes an item's download state: its row is redrawn.
    void notifyItemChanged(ZBDownloadItem *item) { Q_EMIT itemChanged(item); }

Q_SIGNALS:
    // New children were appended to the owner's lists (to the page list for
    // no owner).
    void childrenAppended(ZBDownloadItem *owner);
    void itemChanged(ZBDownloadItem *item);
    // The owner got its first child under the current filter.
    void expandRequested(ZBDownloadItem *owner);
    void pageAboutToBeRemoved(int index);
    void pageRemoved(int index);
    void pagesAboutToBeCleared();
    void pagesCleared();
    void filterChanged(int filter);

private:
    void classify(ZBDownloadItem *owner, ZBDownloadItem *item);
    void probeAnswered(quint64 id, const ZBResourceProbe::Answer &answer);
    void forgetSubtree(ZBDownloadItem *page);
    bool isWorthProbing(const ZBDownloadItem *item) const;

    QList<ZBDownloadItem *> m_pages;
    // Pages committed during a preview belong to nobody's list.
    QList<ZBDownloadItem *> m_unlistedPages;
    bool m_bypass = false;
    QString m_webFrameTitle;
    ZBDownloadItem *m_previewItem = nullptr;
    bool m_previewing = false;
    int m_currentFilter;
    ZBResourceProbe *m_probe = nullptr;
    QHash<quint64, ZBDownloadItem *> m_probing;
};
