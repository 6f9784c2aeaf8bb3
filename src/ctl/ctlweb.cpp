#include "ctl/ctlweb.h"

#include <QDateTime>
#include <QDir>
#include <QEventLoop>

#include "library/zblibrarycontroller.h"
#include "playback/zbmediaprobe.h"
#include "playback/zbmediatypes.h"
#include "settings/zbsettings.h"
#include "web/zbdownloadpaths.h"
#include "web/zbdownloadtask.h"

bool ZBCtlWeb::handles(const QString &command)
{
    return command == u"download";
}

int ZBCtlWeb::run(const QString &command, const QStringList &arguments, const QString &dataDir, QTextStream &out,
                  QTextStream &err)
{
    if (command == u"download")
        return download(arguments, dataDir, out, err);
    return 2;
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
    {
        // Read the one key: loading every setting would also rewrite the
        // player's own entries in the store.
        const QVariant stored = ZBSettings::openStore()->value(QStringLiteral("PathForDownloads"));
        folder = stored.typeId() == QMetaType::QString && !stored.toString().isEmpty()
                     ? stored.toString()
                     : ZBSettings().option_pathForDownloads;
    }

    // Open the library first: a download it could not take is not started.
    std::unique_ptr<ZBLibraryController> library;
    if (!dataDir.isEmpty())
    {
        library = std::make_unique<ZBLibraryController>();
        const ZBObjectContext::OpenResult opened = library->openStore(dataDir);
        if (!opened.ok || opened.recoveredFromDamage)
            return fail(QStringLiteral("the library cannot be opened: %1").arg(opened.error));
        library->initLibrary();
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
