#include "ctl/ctlweb.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cmath>

#include "ctl/ctlcommands.h"
#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "playback/zbmediaprobe.h"
#include "playback/zbmediatypes.h"
#include "settings/zbsettings.h"
#include "strings/zbstringformsize.h"
#include "ui/web/zbbrowserview.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbdownloadmanager.h"
#include "web/zbdownloadpaths.h"
#include "web/zbdownloadtask.h"
#include "web/zbresourceprobe.h"

namespace
{
// However long a page keeps loading or requesting, capture ends this long
// after the quiet wait could first have ended.
constexpr qint64 CaptureLimitMs = 60000;

const std::pair<const char *, int> Filters[] = {{"all", ZBDownloadItem::FilterAll},
                                                {"flash", ZBDownloadItem::FilterFlash},
                                                {"video", ZBDownloadItem::FilterVideo},
                                                {"media", ZBDownloadItem::FilterMedia}};
} // namespace

bool ZBCtlWeb::handles(const QString &command)
{
    return command == u"download" || command == u"capture";
}

bool ZBCtlWeb::needsGui(const QString &command)
{
    return command == u"capture";
}

int ZBCtlWeb::run(const QString &command, const QStringList &arguments, const QString &dataDir, QTextStream &out,
                  QTextStream &err)
{
    if (command == u"download")
        return download(arguments, dataDir, out, err);
    if (command == u"capture")
        return capture(arguments, dataDir, out, err);
    return 2;
}

QString ZBCtlWeb::downloadsFolderSetting()
{
    // Read the one key: loading every setting would also rewrite the
    // player's own entries in the store.
    const QVariant stored = ZBSettings::openStore()->value(QStringLiteral("PathForDownloads"));
    return stored.typeId() == QMetaType::QString && !stored.toString().isEmpty() ? stored.toString()
                                                                                : ZBSettings().option_pathForDownloads;
}

std::unique_ptr<ZBLibraryController> ZBCtlWeb::openLibrary(const QString &dataDir, QString *error)
{
    auto library = std::make_unique<ZBLibraryController>();
    const ZBObjectContext::OpenResult opened = library->openStore(dataDir);
    if (!opened.ok || opened.recoveredFromDamage)
    {
        *error = opened.error;
        return nullptr;
    }
    library->initLibrary();
    return library;
}

int ZBCtlWeb::download(const QStringList &arguments, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message, int code = 1) {
        err << "norvikctl: " << message << Qt::endl;
        return code;
    };
    QString address;
    QString folder;
    QString title;
    for (qsizetype i = 0; i < arguments.size(); ++i)
    {
        const QString &argument = arguments.at(i);
        if (argument == u"--to" || argument == u"--title")
        {
            if (i + 1 >= arguments.size())
                return fail(QStringLiteral("option %1 needs a value").arg(argument), 2);
            (argument == u"--to" ? folder : title) = arguments.at(++i);
        }
        else if (argument.startsWith(QLatin1String("--")) || !address.isEmpty())
        {
            return fail(QStringLiteral("unexpected argument %1").arg(argument), 2);
        }
        else
        {
            address = argument;
        }
    }
    if (address.isEmpty())
        return fail(QStringLiteral("download needs a URL"), 2);
    if (folder.isEmpty())
        folder = downloadsFolderSetting();

    // Open the library first: a download it could not take is not started.
    std::unique_ptr<ZBLibraryController> library;
    if (!dataDir.isEmpty())
    {
        QString error;
        library = openLibrary(dataDir, &error);
        if (!library)
            return fail(QStringLiteral("the library cannot be opened: %1").arg(error));
    }

    // The name as the player picks it: from the URL (percent-escapes read,
    // so "My%20Clip.mp4" is "My Clip.mp4"), its type kept under a title.
    const QUrl url = QUrl::fromUserInput(address);
    const QString fromUrl = QUrl::fromPercentEncoding(
        ZBDownloadPaths::getFileNameFromURL(QString::fromUtf8(url.toEncoded()), title.isEmpty() ? QStringLiteral("video") : title).toUtf8());
    const QString type = ZBMediaTypes::pathExtension(fromUrl);
    QString name = title.isEmpty() ? fromUrl : title;
    if (!type.isEmpty() && ZBMediaTypes::pathExtension(name).compare(type, Qt::CaseInsensitive) == 0)
        name.chop(type.size() + 1);
    const QString target = ZBDownloadPaths::addSuffixForDownload(name, type, QDir(folder).absolutePath(),
                                                                 ZBDownloadTask::runningTargets());

    ZBDownloadTask task(url, target);
    QEventLoop loop;
    QString saved;
    QString reason;
    QObject::connect(&task, &ZBDownloadTask::finished, &loop, [&](const QString &path) {
        saved = path;
        loop.quit();
    });
    QObject::connect(&task, &ZBDownloadTask::failed, &loop, [&](const QString &why) {
        reason = why;
        loop.quit();
    });
    task.start();
    loop.exec();
    if (saved.isEmpty())
        return fail(reason);

    if (library && ZBMediaTypes::isRegisteredType(type))
    {
        // Library URLs are kept the way captured resources write them.
        QString libraryUrl = task.finalUrl().toString();
        if (libraryUrl.startsWith(QLatin1String("http://")))
            libraryUrl = libraryUrl.mid(7);
        library->addItemToLibrarybyName(ZBDownloadPaths::safeComponent(name), saved, libraryUrl, type, 0,
                                        ZBMediaProbe::getMovieDurationAtPath(saved), 0,
                                        QDateTime::currentDateTimeUtc(), QDateTime(), QString());
        if (library->managedObjectContext()->hasChanges())
        {
            out << saved << Qt::endl;
            return fail(QStringLiteral("the file was saved but could not be added to the library: %1")
                            .arg(library->managedObjectContext()->lastError()));
        }
    }
    out << saved << Qt::endl;
    return 0;
}

QJsonObject ZBCtlWeb::itemJson(const ZBDownloadItem *item, int filter, bool page)
{
    QJsonArray resources;
    for (const ZBDownloadItem *child : item->childrenWithFilter(filter))
        resources.append(itemJson(child, filter, false));
    QJsonObject object{{QStringLiteral("title"), item->resourceTitle()},
                       {QStringLiteral("url"), item->resourceUrl()},
                       {QStringLiteral("resources"), resources}};
    if (!page)
    {
        object.insert(QStringLiteral("type"), item->resourceType());
        object.insert(QStringLiteral("expectedBytes"), qMax<qint64>(0, item->expectedBytesLength()));
    }
    return object;
}

void ZBCtlWeb::printTree(const ZBDownloadItem *item, int depth, int filter, QTextStream &out)
{
    const QString size = item->expectedBytesLength() > 0
                             ? ZBStringFormSize::stringFromSizeBin(item->expectedBytesLength(), false)
                             : ZBLocalizer::localizedStringForKey(QStringLiteral("NA"));
    out << QString(2 * depth, u' ') << item->resourceTitle() << '\t' << item->resourceType() << '\t' << size << '\t'
        << item->resourceUrl() << '\n';
    for (const ZBDownloadItem *child : item->childrenWithFilter(filter))
        printTree(child, depth + 1, filter, out);
}

int ZBCtlWeb::capture(const QStringList &arguments, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message, int code = 1) {
        err << "norvikctl: " << message << Qt::endl;
        return code;
    };
    const ZBCtlCommands::Options options(arguments,
                                         {QStringLiteral("wait"), QStringLiteral("filter"), QStringLiteral("to")},
                                         {QStringLiteral("json"), QStringLiteral("download")});
    if (!options.error().isEmpty())
        return fail(options.error(), 2);
    if (options.positional().size() != 1)
        return fail(QStringLiteral("capture needs one URL"), 2);
    const QUrl url = QUrl::fromUserInput(options.positional().first());
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https"))
        return fail(QStringLiteral("\"%1\" is no http or https address").arg(options.positional().first()), 2);
    bool numeric = false;
    const double wait = options.value(QStringLiteral("wait"), QStringLiteral("3")).toDouble(&numeric);
    if (!numeric || !std::isfinite(wait) || wait < 0 || wait > 3600)
        return fail(QStringLiteral("--wait takes a number of seconds from 0 to 3600, not \"%1\"")
                        .arg(options.value(QStringLiteral("wait"))),
                    2);
    const QString filterName = options.value(QStringLiteral("filter"), QStringLiteral("media"));
    int filter = -1;
    for (const auto &[name, value] : Filters)
    {
        if (filterName == QLatin1String(name))
            filter = value;
    }
    if (filter < 0)
        return fail(QStringLiteral("--filter takes all, flash, video or media, not \"%1\"").arg(filterName), 2);
    const bool download = options.has(QStringLiteral("download"));
    if (download && options.has(QStringLiteral("json")))
        return fail(QStringLiteral("--json lists the capture and --download saves it: choose one"), 2);
    if (!download && options.has(QStringLiteral("to")))
        return fail(QStringLiteral("--to goes with --download"), 2);
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return fail(QStringLiteral("capture needs the graphical application object"));

    // Open the library first: a download it could not take is not started.
    std::unique_ptr<ZBLibraryController> library;
    if (download && !dataDir.isEmpty())
    {
        QString error;
        library = openLibrary(dataDir, &error);
        if (!library)
            return fail(QStringLiteral("the library cannot be opened: %1").arg(error));
    }

    ZBBrowserView view;
    ZBResourceProbe probe;
    probe.setCookieJar(view.cookieJar());
    ZBCaptureTree tree;
    tree.setResourceProbe(&probe);
    tree.setCurrentFilter(filter);

    // Capture is wired as the window wires it, through a context object, so
    // that it can stop before the downloads start.
    auto capturing = std::make_unique<QObject>();
    QElapsedTimer quiet;
    quiet.start();
    bool finished = false;
    bool failed = false;
    QString failure;
    QObject::connect(&view, &ZBBrowserView::mainFrameLoadStarted, capturing.get(), [&] {
        tree.setShouldBypassReceiveURLs(true);
        quiet.restart();
    });
    QObject::connect(&view, &ZBBrowserView::mainFrameCommitted, capturing.get(), [&](const QUrl &committed) {
        tree.commitPage(committed.toString());
        quiet.restart();
    });
    QObject::connect(&view, &ZBBrowserView::titleReceived, capturing.get(),
                     [&](const QString &title) { tree.receivePageTitle(title); });
    QObject::connect(&view, &ZBBrowserView::resourceRequested, capturing.get(), [&](const ZBWebRequest &request) {
        tree.receiveRequest(request.url.toString());
        quiet.restart();
    });
    QObject::connect(&probe, &ZBResourceProbe::probed, capturing.get(), [&] { quiet.restart(); });
    QObject::connect(&view, &ZBBrowserView::mainFrameLoadFinished, capturing.get(), [&] {
        finished = true;
        quiet.restart();
    });
    QObject::connect(&view, &ZBBrowserView::mainFrameLoadFailed, capturing.get(),
                     [&](const QUrl &where, ZBBrowserView::FailureKind kind, int code, const QString &description) {
                         // The first word is the main page's; what follows is about the
                         // engine's own error page.
                         if (std::exchange(failed, true))
                             return;
                         const QString address = where.toDisplayString();
                         if (kind == ZBBrowserView::FailureKind::Connection)
                             failure = QStringLiteral("cannot connect to %1: %2").arg(address, description);
                         else if (kind == ZBBrowserView::FailureKind::HttpStatus)
                             failure = QStringLiteral("%1 answered HTTP %2").arg(address).arg(code);
                         else
                             failure = QStringLiteral("%1 did not load: %2").arg(address, description);
                     });

    const qint64 waitMs = qint64(wait * 1000);
    const qint64 limitMs = CaptureLimitMs + waitMs;
    QElapsedTimer clock;
    clock.start();
    // A page that never shows draws nothing, and Flash movies in it never run.
    view.resize(1024, 768);
    view.show();
    view.load(url);
    QEventLoop loop;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        if (failed || (finished && probe.pendingCount() == 0 && quiet.elapsed() >= waitMs) || clock.elapsed() >= limitMs)
            loop.quit();
    });
    tick.start(50);
    loop.exec();
    capturing.reset();
    probe.cancelAll();
    view.stop();

    if (failed)
        return fail(failure);
    if (tree.pages().isEmpty())
        return fail(QStringLiteral("%1 did not load within %2 seconds").arg(url.toDisplayString()).arg(limitMs / 1000));
    int code = 0;
    if (!finished)
    {
        // What the page requested so far is still worth having; the exit code
        // tells a script it may be incomplete.
        err << "norvikctl: " << url.toDisplayString() << " did not finish loading within " << limitMs / 1000
            << " seconds; this is what it requested until then" << Qt::endl;
        code = 1;
    }
    else if (clock.elapsed() >= limitMs)
    {
        err << "norvikctl: " << url.toDisplayString() << " was still making requests after " << limitMs / 1000
            << " seconds; this is what it requested until then" << Qt::endl;
    }

    if (!download)
    {
        if (options.has(QStringLiteral("json")))
        {
            QJsonArray pages;
            for (const ZBDownloadItem *page : tree.pages())
                pages.append(itemJson(page, filter, true));
            out << QJsonDocument(QJsonObject{{QStringLiteral("pages"), pages}}).toJson(QJsonDocument::Indented);
        }
        else
        {
            for (const ZBDownloadItem *page : tree.pages())
                printTree(page, 0, filter, out);
        }
        return code;
    }

    ZBDownloadManager manager(tree, library.get());
    manager.setDownloadsFolder(QDir(options.value(QStringLiteral("to"), downloadsFolderSetting())).absolutePath());
    manager.setCookieJar(view.cookieJar());
    int failures = 0;
    QObject::connect(&manager, &ZBDownloadManager::itemFinished, &manager,
                     [&out](ZBDownloadItem *, const QString &path) { out << path << Qt::endl; });
    QObject::connect(&manager, &ZBDownloadManager::itemFailed, &manager,
                     [&](ZBDownloadItem *item, const QString &reason) {
                         ++failures;
                         err << "norvikctl: " << ZBCaptureTree::requestUrl(item->resourceUrl())
                             << " was not saved: " << reason << Qt::endl;
                     });
    QEventLoop downloading;
    const auto quitWhenDone = [&] {
        if (!manager.downloadInProgress() && manager.runningCount() == 0)
            downloading.quit();
    };
    QObject::connect(&manager, &ZBDownloadManager::downloadingInfoChanged, &downloading, quitWhenDone,
                     Qt::QueuedConnection);
    manager.downloadAll();
    if (manager.downloadInProgress() || manager.runningCount() > 0)
        downloading.exec();
    else if (failures == 0)
        return fail(QStringLiteral("the page holds nothing to download under --filter %1").arg(filterName));
    if (failures > 0)
        code = 1;
    if (library && library->managedObjectContext()->hasChanges())
        return fail(QStringLiteral("the files were saved but could not all be added to the library: %1")
                        .arg(library->managedObjectContext()->lastError()));
    return code;
}
