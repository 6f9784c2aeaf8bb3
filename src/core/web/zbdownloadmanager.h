#pragma once

#include <QHash>
#include <QNetworkCookieJar>
#include <QObject>
#include <QPointer>
#include <QString>

class ZBCaptureTree;
class ZBDownloadItem;
class ZBDownloadTask;
class ZBLibraryController;

// Downloads captured resources: plans a page, a Flash movie with what it
// loaded, or a single file into folders under the downloads folder, runs
// one transfer per file, keeps the batch's counters, adds finished media to
// the library and says when a task is done. A failed or cancelled download
// leaves no file under its final name and never reaches the library; the
// item can be downloaded again, and a transfer broken by the network goes on
// where it stopped.
class ZBDownloadManager : public QObject
{
    Q_OBJECT

public:
    ZBDownloadManager(ZBCaptureTree &tree, ZBLibraryController *library, QObject *parent = nullptr);
    ~ZBDownloadManager() override;

    void setDownloadsFolder(const QString &folder) { m_downloadsFolder = folder; }
    QString downloadsFolder() const { return m_downloadsFolder; }
    // The browser's cookies, so that files a site serves only to its own
    // pages still come.
    void setCookieJar(QNetworkCookieJar *jar) { m_jar = jar; }
    void setStallTimeout(int milliseconds) { m_stallTimeout = milliseconds; }

    // Plans and starts an item: a page root with what the current filter
    // shows, a Flash movie with its loads, or one file. False when there is
    // nothing to do (saved already, an empty page).
    bool downloadItem(ZBDownloadItem *item);
    void startDownloadingOfItem(ZBDownloadItem *item);
    void cancelDownloadOfItem(ZBDownloadItem *item);
    void resetDownloadForItem(ZBDownloadItem *item);
    void cancelAll();
    // The selected rows not yet downloaded, from the last one up.
    void downloadSelected(const QList<ZBDownloadItem *> &selection);
    // Every page root in list order (the Download All button).
    void downloadAll();
    // The folder an item's file goes to, created.
    QString createFolderForResource(ZBDownloadItem *item);

    int numberOfDownloads() const { return m_numberOfDownloads; }
    int totalNumberOfDownloads() const { return m_totalNumberOfDownloads; }
    bool downloadInProgress() const { return m_downloadInProgress; }
    qint64 totalExpectedBytes() const { return m_totalExpectedBytes; }
    qint64 totalReceivedBytes() const { return m_totalReceivedBytes; }
    // The transfers running now.
    int runningCount() const { return int(m_transfers.size()); }

Q_SIGNALS:
    // The batch's counters changed: the status panel shows
    // "ledDownloadingFles" with the running number, or that none run.
    void downloadingInfoChanged();
    // A task is done, well or not: the text of the desktop notification
    // and the file or folder a click on it shows (empty for none).
    void taskCompleted(const QString &description, const QString &clickContext);
    // A file joined the library: the date lists and the track list change.
    void libraryChanged();
    // One file ended: its path, or the reason it failed.
    void itemFinished(ZBDownloadItem *item, const QString &path);
    void itemFailed(ZBDownloadItem *item, const QString &reason);

private:
    // One running file and what it has added to the batch's byte totals.
    struct Transfer
    {
        ZBDownloadTask *task = nullptr;
        ZBDownloadItem *item = nullptr;
        qint64 expected = 0;
        qint64 received = 0;
    };

    void finishItem(ZBDownloadItem *item, const QString &path);
    void failItem(ZBDownloadItem *item, const QString &reason);
    // Whoever counts the end of the item's file: a Flash package its own
    // movie, a page (or package) downloaded whole each of its files.
    ZBDownloadItem *counterFor(ZBDownloadItem *item) const;
    // One file of `parent` ended: saved, or not (failed with `failure`,
    // cancelled without). The last one completes the page or the package.
    void childEnded(ZBDownloadItem *parent, bool saved, const QString &failure = QString());
    void completeParent(ZBDownloadItem *parent);
    void setDownloadingInfo();
    // Forgets the item's transfer, taking its bytes off the totals; returns
    // the task, to be cancelled or not by the caller.
    ZBDownloadTask *takeTransfer(ZBDownloadItem *item);
    quint64 transferIdOf(const ZBDownloadItem *item) const;
    ZBDownloadItem *itemForTask(quint64 id) const;
    // A Flash movie downloaded with what it loaded, still on its way.
    static bool isRunningPackage(const ZBDownloadItem *item);
    // A page or a package being downloaded whole, or a file on its way.
    bool isBusy(const ZBDownloadItem *item) const;
    static QString titleWithoutExtension(const ZBDownloadItem *item);

    ZBCaptureTree &m_tree;
    ZBLibraryController *m_library;
    QString m_downloadsFolder;
    QPointer<QNetworkCookieJar> m_jar;
    int m_stallTimeout = 60000;
    quint64 m_nextTaskId = 1;
    QHash<quint64, Transfer> m_transfers;

    int m_numberOfDownloads = 0;
    int m_totalNumberOfDownloads = 0;
    qint64 m_totalExpectedBytes = 0;
    qint64 m_totalReceivedBytes = 0;
    bool m_downloadInProgress = false;
};
