#include "ctl/ctlcommands.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTimer>

#include <cmath>
#include <functional>
#include <unistd.h>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "engines/mpv/zbmpvengine.h"
#include "engines/zbsnapshotwriter.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "library/zbplaylistfile.h"
#include "playback/zbmediaprobe.h"
#include "playback/zbmediatypes.h"
#include "playback/zbprojector.h"
#include "playback/zbswfheader.h"

namespace
{
// Options of the form --name VALUE, taken out of `arguments`; what is left
// are the positional arguments.
class Options
{
public:
    Options(const QStringList &arguments, const QStringList &valued, const QStringList &flags)
    {
        for (qsizetype i = 0; i < arguments.size(); ++i)
        {
            const QString &argument = arguments.at(i);
            if (argument.startsWith(QLatin1String("--")) && argument.size() > 2)
            {
                const QString name = argument.mid(2);
                if (flags.contains(name))
                {
                    m_values.insert(name, QStringLiteral("1"));
                }
                else if (valued.contains(name))
                {
                    if (i + 1 >= arguments.size())
                    {
                        m_error = QStringLiteral("option %1 needs a value").arg(argument);
                        return;
                    }
                    m_values.insert(name, arguments.at(++i));
                }
                else
                {
                    m_error = QStringLiteral("unknown option %1").arg(argument);
                    return;
                }
            }
            else
            {
                m_positional.append(argument);
            }
        }
    }

    QString error() const { return m_error; }
    const QStringList &positional() const { return m_positional; }
    bool has(const QString &name) const { return m_values.contains(name); }
    QString value(const QString &name, const QString &fallback = QString()) const
    {
        return m_values.value(name, fallback);
    }

private:
    QHash<QString, QString> m_values;
    QStringList m_positional;
    QString m_error;
};

QJsonValue jsonValue(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return QJsonValue::Null;
    if (value.metaType().id() == QMetaType::QDateTime)
        return value.toDateTime().toUTC().toString(Qt::ISODateWithMs);
    return QJsonValue::fromVariant(value);
}

const char *const TrackKeys[] = {"ItemUUID", "Name", "Path", "URL", "Type", "Rating", "Length", "PlayCount",
                                 "Added", "LastPlayed", "SourcePageTitle", "isValid", "isAvailable"};
} // namespace

ZBCtlCommands::ZBCtlCommands(ZBLibraryController &library, QTextStream &out, QTextStream &err)
    : m_library(library)
    , m_out(out)
    , m_err(err)
{
}

QString ZBCtlCommands::usage()
{
    return QStringLiteral(
        "Usage: norvikctl [--data-dir DIR] COMMAND [ARGUMENTS]\n"
        "\n"
        "Commands:\n"
        "  lists                         the standard and user lists with their track counts\n"
        "  add-track NAME PATH [--url U] [--type T] [--added ISO8601] [--last-played ISO8601]\n"
        "            [--rating N] [--length N] [--play-count N] [--source-page TITLE] [--uuid UUID]\n"
        "                                add a track (an existing path gives the existing track); prints its UUID\n"
        "  list [LIST] [--sort KEY] [--descending] [--json]\n"
        "                                the tracks of a list (name or UUID; default \"All Tracks\"). The\n"
        "                                direction reads like the track table's arrow: for Added, LastPlayed,\n"
        "                                Rating, Length and PlayCount the default puts the newest or most first\n"
        "  add-playlist NAME             create a plain playlist; prints its UUID\n"
        "  add-smart NAME PREDICATE      create a smart list from a filter text; prints its UUID\n"
        "  add-to-playlist LIST UUID     add a track to a plain playlist\n"
        "  remove-track UUID             remove a track from the library (the file stays on disk)\n"
        "  query PREDICATE [--json]      the tracks a filter text selects, e.g. \"Type contains[cd] 'mp4'\"\n"
        "  check                         verify the library file's integrity\n"
        "  import PATH...                add files, and folders at any depth, the way the player does;\n"
        "                                prints how many were added, already there and refused\n"
        "  export-playlist LIST FILE.nvp [--force]\n"
        "                                write a list (name or UUID) to a playlist file: a plain playlist\n"
        "                                with its tracks, a smart list with its filter; --force replaces\n"
        "                                an existing file\n"
        "  import-playlist FILE.nvp      create the list a playlist file describes, with its tracks (a\n"
        "                                track whose path is already in the library is taken as it is);\n"
        "                                prints the new list's UUID\n"
        "  probe FILE                    the file's type, whether the player takes it, its length and\n"
        "                                whether the video engine can decode it\n"
        "  swf-info FILE                 the header of a Flash movie, or of the movie inside a projector\n"
        "  snapshot FILE [--time SECONDS | --frame N] [--format N] -o OUT\n"
        "                                save the frame of a movie at a time (default 0), or frame N (from\n"
        "                                0) of a Flash movie or projector, as an image the way the player\n"
        "                                saves screenshots; the format follows OUT's extension (tif/tiff,\n"
        "                                bmp, gif, jpg/jpeg, png, jp2) or --format: 0 TIFF, 1 BMP, 2 GIF,\n"
        "                                3 JPEG, 4 PNG, 5 JPEG 2000 (PNG where it cannot be written)\n"
        "  download URL [--to DIR] [--title T]\n"
        "                                fetch a file into DIR (default: the player's downloads folder) under\n"
        "                                the name the player would give it; prints the saved path. With\n"
        "                                --data-dir a media file is also added to that library\n"
        "\n"
        "The library lives in the program's data folder unless --data-dir names another.\n");
}

int ZBCtlCommands::fail(const QString &message)
{
    m_err << "norvikctl: " << message << Qt::endl;
    return 1;
}

int ZBCtlCommands::run(const QString &command, const QStringList &arguments)
{
    if (command == u"lists")
        return lists(arguments);
    if (command == u"add-track")
        return addTrack(arguments);
    if (command == u"list")
        return list(arguments);
    if (command == u"add-playlist")
        return addPlaylist(arguments);
    if (command == u"add-smart")
        return addSmart(arguments);
    if (command == u"add-to-playlist")
        return addToPlaylist(arguments);
    if (command == u"remove-track")
        return removeTrack(arguments);
    if (command == u"query")
        return query(arguments);
    if (command == u"check")
        return check(arguments);
    if (command == u"import")
        return importFiles(arguments);
    if (command == u"export-playlist")
        return exportPlaylist(arguments);
    if (command == u"import-playlist")
        return importPlaylist(arguments);
    if (!needsLibrary(command))
        return runFileCommand(command, arguments, m_out, m_err);
    m_err << "norvikctl: unknown command " << command << "\n\n" << usage();
    return 2;
}

ZBPlaylist *ZBCtlCommands::findList(const QString &nameOrUUID)
{
    for (ZBPlaylist *playlist : m_library.managedObjectContext()->playlists())
    {
        if (playlist->PlaylistUUID().compare(nameOrUUID, Qt::CaseInsensitive) == 0)
            return playlist;
    }
    for (ZBPlaylist *playlist : m_library.managedObjectContext()->playlists())
    {
        if (playlist->Name().compare(nameOrUUID, Qt::CaseInsensitive) == 0)
            return playlist;
    }
    return nullptr;
}

void ZBCtlCommands::printTracks(const QList<ZBItem *> &tracks, bool json)
{
    if (json)
    {
        QJsonArray array;
        for (const ZBItem *item : tracks)
        {
            QJsonObject object;
            for (const char *key : TrackKeys)
                object.insert(QLatin1String(key), jsonValue(item->getUntypedValueByName(QLatin1String(key))));
            array.append(object);
        }
        m_out << QJsonDocument(array).toJson(QJsonDocument::Indented);
        return;
    }
    for (const ZBItem *item : tracks)
    {
        m_out << item->ItemUUID() << '\t' << item->Name() << '\t' << item->Type() << '\t'
              << item->Length().value_or(0) << '\t' << item->PlayCount().value_or(0) << '\t' << item->Path()
              << '\n';
    }
}

int ZBCtlCommands::lists(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return fail(QStringLiteral("lists takes no arguments"));
    const char *const groups[] = {"Predefined", "User", "Downloads"};
    for (const char *group : groups)
    {
        QList<ZBPlaylist *> inGroup;
        for (ZBPlaylist *playlist : m_library.managedObjectContext()->playlists())
        {
            if (playlist->Group().compare(QLatin1String(group), Qt::CaseInsensitive) == 0)
                inGroup.append(playlist);
        }
        std::stable_sort(inGroup.begin(), inGroup.end(), [](const ZBPlaylist *a, const ZBPlaylist *b) {
            if (a->SortOrder().value_or(0) != b->SortOrder().value_or(0))
                return a->SortOrder().value_or(0) < b->SortOrder().value_or(0);
            return a->Name().localeAwareCompare(b->Name()) < 0;
        });
        for (const ZBPlaylist *playlist : std::as_const(inGroup))
        {
            const QString kind = playlist->isSmart() ? QStringLiteral("smart") : QStringLiteral("plain");
            m_out << playlist->PlaylistUUID() << '\t' << group << '\t' << kind << '\t'
                  << m_library.getItemsFromPlaylist(playlist).size() << '\t' << playlist->Name() << '\n';
        }
    }
    return 0;
}

int ZBCtlCommands::addTrack(const QStringList &arguments)
{
    const Options options(arguments,
                          {QStringLiteral("url"), QStringLiteral("type"), QStringLiteral("added"),
                           QStringLiteral("last-played"), QStringLiteral("rating"), QStringLiteral("length"),
                           QStringLiteral("play-count"), QStringLiteral("source-page"), QStringLiteral("uuid")},
                          {});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() != 2)
        return fail(QStringLiteral("add-track needs NAME and PATH"));

    const auto number = [&options](const QString &name, qint32 *value) {
        if (!options.has(name))
            return true;
        bool ok = false;
        *value = options.value(name).toInt(&ok);
        return ok;
    };
    const auto date = [&options](const QString &name, QDateTime *value) {
        if (!options.has(name))
            return true;
        *value = QDateTime::fromString(options.value(name), Qt::ISODateWithMs);
        return value->isValid();
    };
    qint32 rating = 0;
    qint32 length = 0;
    qint32 playCount = 0;
    QDateTime added = QDateTime::currentDateTimeUtc();
    QDateTime lastPlayed;
    for (const auto &[name, target] : {std::pair{QStringLiteral("rating"), &rating},
                                       std::pair{QStringLiteral("length"), &length},
                                       std::pair{QStringLiteral("play-count"), &playCount}})
    {
        if (!number(name, target))
            return fail(QStringLiteral("--%1 takes a whole number, not \"%2\"").arg(name, options.value(name)));
    }
    for (const auto &[name, target] :
         {std::pair{QStringLiteral("added"), &added}, std::pair{QStringLiteral("last-played"), &lastPlayed}})
    {
        if (!date(name, target))
            return fail(QStringLiteral("--%1 takes an ISO 8601 date, not \"%2\"").arg(name, options.value(name)));
    }

    const QString path = options.positional().at(1);
    const QString type = options.value(QStringLiteral("type"), ZBMediaTypes::getFileType(path));
    const QString uuid = m_library.addItemToLibrarybyName(
        options.positional().at(0), path, options.value(QStringLiteral("url"), QStringLiteral("")), type, rating,
        length, playCount, added, lastPlayed, options.value(QStringLiteral("source-page")),
        options.value(QStringLiteral("uuid")));
    if (m_library.managedObjectContext()->hasChanges())
        return fail(QStringLiteral("the track could not be saved: %1").arg(m_library.managedObjectContext()->lastError()));
    m_out << uuid << '\n';
    return 0;
}

int ZBCtlCommands::list(const QStringList &arguments)
{
    const Options options(arguments, {QStringLiteral("sort")},
                          {QStringLiteral("descending"), QStringLiteral("json")});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() > 1)
        return fail(QStringLiteral("list takes at most one list name"));
    const QString name = options.positional().value(0, QStringLiteral("All Tracks"));
    ZBPlaylist *playlist = findList(name);
    if (!playlist)
        return fail(QStringLiteral("no list named \"%1\"").arg(name));

    ZBItemList tracks = m_library.getItemsFromPlaylist(playlist);
    if (!options.has(QStringLiteral("sort")) && !playlist->InternalItemsOrder().isEmpty())
        tracks = m_library.getItemsOrderForPlaylist(playlist, tracks, true);
    else
        tracks = ZBLibraryController::sortList(tracks, options.value(QStringLiteral("sort"), QStringLiteral("Name")),
                                               !options.has(QStringLiteral("descending")));
    printTracks(tracks, options.has(QStringLiteral("json")));
    return 0;
}

int ZBCtlCommands::addPlaylist(const QStringList &arguments)
{
    if (arguments.size() != 1 || arguments.first().isEmpty())
        return fail(QStringLiteral("add-playlist needs one NAME"));
    m_out << m_library.addPlaylistToLibraryByName(arguments.first(), QStringLiteral("Name"), true, 200) << '\n';
    return 0;
}

int ZBCtlCommands::addSmart(const QStringList &arguments)
{
    if (arguments.size() != 2 || arguments.first().isEmpty())
        return fail(QStringLiteral("add-smart needs NAME and PREDICATE"));
    const ZBPredicate predicate = ZBPredicate::parse(arguments.at(1));
    if (!predicate.isValid())
        return fail(QStringLiteral("the filter does not parse: %1").arg(predicate.errorString()));
    m_out << m_library.addSmartListWithName(arguments.at(0), arguments.at(1), QStringLiteral("User"),
                                            QStringLiteral("Name"), false, 200)
          << '\n';
    return 0;
}

int ZBCtlCommands::addToPlaylist(const QStringList &arguments)
{
    if (arguments.size() != 2)
        return fail(QStringLiteral("add-to-playlist needs LIST and UUID"));
    ZBPlaylist *playlist = findList(arguments.at(0));
    if (!playlist)
        return fail(QStringLiteral("no list named \"%1\"").arg(arguments.at(0)));
    if (playlist->isSmart())
        return fail(QStringLiteral("\"%1\" is a smart list; its tracks follow from its rules").arg(playlist->Name()));
    if (!m_library.itemByUUID(arguments.at(1)))
        return fail(QStringLiteral("no track with UUID %1").arg(arguments.at(1)));
    if (!m_library.addItemWithUUID(arguments.at(1), playlist))
        return fail(QStringLiteral("the track is already in \"%1\"").arg(playlist->Name()));
    return 0;
}

int ZBCtlCommands::removeTrack(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return fail(QStringLiteral("remove-track needs one UUID"));
    if (!m_library.removeItemFromLibraryByUUID(arguments.first()))
        return fail(QStringLiteral("no track with UUID %1").arg(arguments.first()));
    return 0;
}

int ZBCtlCommands::query(const QStringList &arguments)
{
    const Options options(arguments, {}, {QStringLiteral("json")});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() != 1)
        return fail(QStringLiteral("query needs one PREDICATE"));
    const ZBPredicate predicate = ZBPredicate::parse(options.positional().first());
    if (!predicate.isValid())
        return fail(QStringLiteral("the filter does not parse: %1").arg(predicate.errorString()));
    const ZBItemList tracks = ZBLibraryController::filterItems(m_library.managedObjectContext()->items(), predicate);
    printTracks(ZBLibraryController::sortList(tracks, QStringLiteral("Name"), true), options.has(QStringLiteral("json")));
    return 0;
}

int ZBCtlCommands::check(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return fail(QStringLiteral("check takes no arguments"));
    const QString verdict = m_library.managedObjectContext()->database().integrityCheck();
    if (verdict != u"ok")
        return fail(QStringLiteral("the library file is damaged: %1").arg(verdict));
    m_out << "ok: " << m_library.managedObjectContext()->items().size() << " tracks, "
          << m_library.managedObjectContext()->playlists().size() << " lists\n";
    return 0;
}

namespace
{
// The playlist file code logs its failures for the player; here the same
// reason goes to stderr once, as a norvikctl message.
void quietPlaylistFileLog()
{
    QLoggingCategory::setFilterRules(QStringLiteral("norvik.playlistfile.warning=false"));
}
} // namespace

int ZBCtlCommands::exportPlaylist(const QStringList &arguments)
{
    quietPlaylistFileLog();
    const Options options(arguments, {}, {QStringLiteral("force")});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() != 2)
        return fail(QStringLiteral("export-playlist needs LIST and FILE.nvp"));
    const QString name = options.positional().at(0);
    const QString path = options.positional().at(1);
    const ZBPlaylist *playlist = findList(name);
    if (!playlist)
        return fail(QStringLiteral("no list named \"%1\"").arg(name));
    // The window's save panel insists on the extension and asks before
    // replacing a file; a script gets the same two guards as refusals.
    if (QFileInfo(path).suffix().compare(ZBPlaylistFile::Extension, Qt::CaseInsensitive) != 0)
        return fail(QStringLiteral("a playlist file's name ends in .%1: \"%2\"").arg(ZBPlaylistFile::Extension, path));
    if (QFileInfo(path).isDir())
        return fail(QStringLiteral("\"%1\" is a folder").arg(path));
    if (QFileInfo::exists(path) && !options.has(QStringLiteral("force")))
        return fail(QStringLiteral("\"%1\" exists; add --force to replace it").arg(path));
    QString error;
    if (!ZBPlaylistFile::exportPlaylist(m_library, playlist, path, &error))
        return fail(QStringLiteral("the playlist file was not written: %1").arg(error));
    return 0;
}

int ZBCtlCommands::importPlaylist(const QStringList &arguments)
{
    quietPlaylistFileLog();
    if (arguments.size() != 1)
        return fail(QStringLiteral("import-playlist needs one FILE.nvp"));
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(m_library, arguments.first());
    for (const QString &note : result.notes)
        m_err << "norvikctl: warning: " << note << '\n';
    if (!result.succeeded())
    {
        // An unreadable file's message names the file already.
        const QString why = result.unreadable ? result.error
                                              : QStringLiteral("%1: %2").arg(arguments.first(), result.error);
        return fail(QStringLiteral("the playlist was not imported, nothing was added: %1").arg(why));
    }
    m_err.flush();
    m_out << result.playlistUUID << '\n';
    return 0;
}

bool ZBCtlCommands::needsLibrary(const QString &command)
{
    return command != u"snapshot" && command != u"probe" && command != u"swf-info";
}

int ZBCtlCommands::runFileCommand(const QString &command, const QStringList &arguments, QTextStream &out,
                                  QTextStream &err)
{
    if (command == u"snapshot")
        return snapshot(arguments, out, err);
    if (command == u"probe")
        return probe(arguments, out, err);
    if (command == u"swf-info")
        return swfInfo(arguments, out, err);
    err << "norvikctl: unknown command " << command << "\n\n" << usage();
    return 2;
}

int ZBCtlCommands::snapshot(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message) {
        err << "norvikctl: " << message << Qt::endl;
        return 1;
    };
    QStringList spelledOut = arguments;
    for (QString &argument : spelledOut)
    {
        if (argument == u"-o")
            argument = QStringLiteral("--output");
    }
    const Options options(
        spelledOut,
        {QStringLiteral("time"), QStringLiteral("frame"), QStringLiteral("output"), QStringLiteral("format")}, {});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() != 1 || !options.has(QStringLiteral("output")))
        return fail(QStringLiteral("snapshot needs FILE and -o OUT"));
    const QString path = options.positional().first();
    const QString output = options.value(QStringLiteral("output"));
    int format = ZBSnapshotWriter::formatForSuffix(QFileInfo(output).suffix());
    if (options.has(QStringLiteral("format")))
    {
        bool whole = false;
        format = options.value(QStringLiteral("format")).toInt(&whole);
        if (!whole || format < 0 || format >= ZBSnapshotWriter::FormatCount)
            return fail(QStringLiteral("--format takes 0 (TIFF), 1 (BMP), 2 (GIF), 3 (JPEG), 4 (PNG) or 5 (JPEG "
                                       "2000), not \"%1\"")
                            .arg(options.value(QStringLiteral("format"))));
    }
    else if (format < 0)
    {
        return fail(QStringLiteral("cannot write images of type \"%1\"; use .tiff, .bmp, .gif, .jpg, .png or .jp2, "
                                   "or say --format N")
                        .arg(QFileInfo(output).suffix()));
    }
    if (!QFileInfo(path).isFile())
        return fail(QStringLiteral("\"%1\" does not exist").arg(path));

    if (isFlashFile(path))
    {
        if (options.has(QStringLiteral("time")))
            return fail(QStringLiteral("a Flash movie is shown by frames: use --frame N (from 0), not --time"));
        bool whole = false;
        const int frame = options.value(QStringLiteral("frame"), QStringLiteral("0")).toInt(&whole);
        if (!whole || frame < 0)
            return fail(QStringLiteral("--frame takes a frame number from 0 on, not \"%1\"")
                            .arg(options.value(QStringLiteral("frame"))));
        return snapshotFlash(path, frame, output, format, out, err);
    }
    if (options.has(QStringLiteral("frame")))
        return fail(QStringLiteral("--frame is for Flash movies; \"%1\" is a video, use --time SECONDS").arg(path));

    bool numeric = false;
    const double time = options.value(QStringLiteral("time"), QStringLiteral("0")).toDouble(&numeric);
    if (!numeric || !std::isfinite(time) || time < 0)
        return fail(QStringLiteral("--time takes a number of seconds from 0 on, not \"%1\"")
                        .arg(options.value(QStringLiteral("time"))));
    QString reason;
    if (!ZBMpvEngine::checkFile(path, &reason))
        return fail(reason);

    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    if (!engine.startError().isEmpty())
        return fail(engine.startError());

    // The engine answers through the event loop; a stalled file must not
    // hang a script.
    const auto waitFor = [&engine](auto signal, int milliseconds) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        QObject::connect(&engine, signal, &loop, &QEventLoop::quit);
        QObject::connect(&engine, &ZBPlaybackEngine::loadFailed, &loop, &QEventLoop::quit);
        loop.exec();
    };
    QString failure;
    QObject::connect(&engine, &ZBPlaybackEngine::loadFailed, &engine,
                     [&failure](const QString &why) { failure = why; });
    engine.load(path);
    waitFor(&ZBPlaybackEngine::loaded, 30000);
    if (!failure.isEmpty())
        return fail(failure);
    if (!engine.isLoaded())
        return fail(QStringLiteral("\"%1\" did not open within 30 seconds").arg(path));

    const double length = engine.totalTime();
    if (length > 0 && time > length)
        return fail(QStringLiteral("--time %1 is past the end of \"%2\", which lasts %3 seconds")
                        .arg(time)
                        .arg(path)
                        .arg(length, 0, 'f', 3));
    if (time > 0)
    {
        engine.seek(time);
        if (engine.isSeeking())
            waitFor(&ZBMpvEngine::seekFinished, 30000);
        if (engine.isSeeking())
            return fail(QStringLiteral("seeking to %1 s in \"%2\" did not finish").arg(time).arg(path));
    }
    const QImage image = engine.snapshot();
    if (image.isNull())
        return fail(QStringLiteral("\"%1\" shows no picture at %2 s (no video stream?)").arg(path).arg(time));
    return writeSnapshot(image, output, format, out, err);
}

int ZBCtlCommands::writeSnapshot(const QImage &image, const QString &output, int format, QTextStream &out,
                                 QTextStream &err)
{
    const ZBSnapshotWriter::Result result = ZBSnapshotWriter::saveSnapshot(image, output, format);
    if (!result.ok())
    {
        err << "norvikctl: cannot write " << output << ": " << result.description() << Qt::endl;
        return 1;
    }
    if (result.format != format)
        err << "norvikctl: this system cannot write " << ZBSnapshotWriter::formatName(format) << "; " << output
            << " holds " << ZBSnapshotWriter::formatName(result.format) << Qt::endl;
    out << output << '\t' << image.width() << 'x' << image.height() << '\n';
    return 0;
}

bool ZBCtlCommands::isFlashFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (ZBSwfHeader::readHeader(file.peek(ZBSwfHeader::HeaderProbeSize)))
        return true;
    const QString suffix = QFileInfo(path).suffix().toLower();
    return (suffix == u"exe" || ZBProjector::isApplicationFile(path))
           && !ZBProjector::dataWithContentsOfSWF(path).isEmpty();
}

int ZBCtlCommands::snapshotFlash(const QString &path, int frame, const QString &output, int format,
                                 QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message) {
        err << "norvikctl: " << message << Qt::endl;
        return 1;
    };
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return fail(QStringLiteral("Flash snapshots need the graphical application object"));
    QString reason;
    const QByteArray movie = ZBFlashEngine::movieData(path, &reason);
    if (movie.isEmpty())
        return fail(reason);
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return fail(QStringLiteral("\"%1\" holds no readable Flash movie").arg(path));

    // The view is exactly the stage at 100 %, so the picture is the frame as
    // the movie's author drew it.
    const QSize stage(std::max(1, int(std::lround(header->width()))), std::max(1, int(std::lround(header->height()))));
    ZBFlashView view;
    view.resize(stage);
    view.show();
    view.setOriginalSize();
    bool failed = false;
    QObject::connect(&view, &ZBFlashView::movieLoadFailed, &view, [&](const QString &why) {
        failed = true;
        reason = why;
    });
    const auto waitUntil = [&failed](const std::function<bool()> &done, int milliseconds) {
        QElapsedTimer clock;
        clock.start();
        while (!failed && !done() && clock.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return !failed && done();
    };
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (!view.loadMovie(movie, url, url, &reason))
        return fail(reason);
    if (!waitUntil([&view]() { return view.isMovieLoaded(); }, 60000))
        return fail(failed ? reason : QStringLiteral("the Flash engine did not start \"%1\" within 60 seconds").arg(path));
    view.stop();
    if (frame >= view.totalFrames())
        return fail(QStringLiteral("--frame %1 is past the end of \"%2\", which has %3 frames (0 to %4)")
                        .arg(frame)
                        .arg(path)
                        .arg(view.totalFrames())
                        .arg(view.totalFrames() - 1));
    bool drawn = false;
    QObject::connect(&view, &ZBFlashView::frameShown, &view, [&drawn](int, bool ok) { drawn = ok; });
    view.gotoFrame(frame);
    // Only the engine's word that it has drawn the frame counts; the frame
    // it reports is where the movie really stands.
    if (!waitUntil([&view]() { return !view.isGotoPending(); }, 20000))
        return fail(failed ? reason : QStringLiteral("the Flash engine did not show frame %1 within 20 seconds").arg(frame));
    if (!drawn)
        return fail(QStringLiteral("the Flash engine drew nothing after going to frame %1").arg(frame));
    if (view.currentFrame() != frame)
        return fail(QStringLiteral("\"%1\" does not stay on frame %2: its own actions moved it to frame %3")
                        .arg(path)
                        .arg(frame)
                        .arg(view.currentFrame()));
    // The page has the picture on screen; the view's copy of it arrives with
    // the next composited frame.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 100)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    const QImage image = view.snapshot();
    if (image.isNull())
        return fail(QStringLiteral("the Flash view gave no picture"));
    return writeSnapshot(image, output, format, out, err);
}

int ZBCtlCommands::importFiles(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return fail(QStringLiteral("import needs at least one file or folder"));
    ZBLibraryImporter importer(m_library);
    // Progress only for a person watching; a script's log stays clean.
    if (isatty(STDERR_FILENO))
    {
        auto shown = std::make_shared<QElapsedTimer>();
        QObject::connect(&importer, &ZBLibraryImporter::progress, &importer,
                         [this, shown](int done, int total, const QString &path) {
                             if (shown->isValid() && shown->elapsed() < 100 && done != total)
                                 return;
                             shown->start();
                             m_err << "\r\033[K" << done << "/" << total << "  "
                                   << ZBMediaTypes::getFileNameFromPath(path) << (done == total ? "\n" : "")
                                   << Qt::flush;
                         });
    }
    const ZBLibraryImporter::Counts counts = importer.run(arguments);
    for (const QString &missing : counts.missing)
        m_err << "norvikctl: no such file or folder: " << missing << Qt::endl;
    m_out << "added " << counts.added << ", already in library " << counts.alreadyInLibrary << ", refused "
          << counts.refused << "\n";
    return counts.missing.isEmpty() ? 0 : 1;
}

namespace
{
// The movie a file holds: the file itself, or the one inside a projector.
struct FlashMovie
{
    QString origin;
    ZBSwfHeader::Info header;
};

std::optional<FlashMovie> flashMovieIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // The header and what it takes to uncompress it lie at the start.
    if (const auto header = ZBSwfHeader::readHeader(file.read(64 * 1024)))
        return FlashMovie{QStringLiteral("movie"), *header};
    const QString type = ZBMediaTypes::getFileType(ZBMediaTypes::getFileNameFromPath(path));
    const bool mac = ZBProjector::isApplicationFile(path);
    if (!mac && type.compare(QLatin1String("exe"), Qt::CaseInsensitive) != 0
        && type.compare(QLatin1String("'APPL'"), Qt::CaseInsensitive) != 0)
        return std::nullopt;
    const QByteArray movie = ZBProjector::dataWithContentsOfSWF(path);
    const auto header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return std::nullopt;
    return FlashMovie{QStringLiteral("%1 projector, %2 bytes of movie").arg(mac ? "Mac" : "Windows").arg(movie.size()),
                      *header};
}
} // namespace

int ZBCtlCommands::probe(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    if (arguments.size() != 1)
    {
        err << "norvikctl: probe needs exactly one FILE" << Qt::endl;
        return 1;
    }
    const QFileInfo info(arguments.first());
    if (!info.isFile() || !info.isReadable())
    {
        err << "norvikctl: cannot read " << arguments.first() << (info.isDir() ? " (a folder)" : "") << Qt::endl;
        return 1;
    }
    const QString path = info.absoluteFilePath();
    // The same verdict an import would reach.
    const ZBLibraryImporter::Examined examined = ZBLibraryImporter::examine(path, true);
    const std::optional<FlashMovie> flash = flashMovieIn(path);
    const bool counted = ZBMediaTypes::pathExtension(path) == u"swf";

    out << "file: " << path << "\n";
    out << "type: " << examined.type << "\n";
    out << "registered: " << (examined.accepted ? "yes" : "no") << "\n";
    out << "library length: " << examined.length << (counted ? " frames" : " seconds") << "\n";
    if (flash)
    {
        out << "flash: " << flash->origin << ", version " << flash->header.version << ", "
            << (flash->header.isAS3 ? "ActionScript 3" : "ActionScript 1/2") << "\n";
        out << "frames: " << flash->header.frameCount << "\n";
    }
    else
    {
        const std::optional<double> seconds = ZBMediaProbe::durationSeconds(path);
        out << "duration: " << (seconds ? QString(QString::number(*seconds, 'f', 3) + QStringLiteral(" s")) : QStringLiteral("unknown"))
            << "\n";
        const QString summary = ZBMediaProbe::formatSummary(path);
        if (!summary.isEmpty())
            out << "format: " << summary << "\n";
    }
    out << "video engine can decode: " << (ZBMediaProbe::canDecode(path) ? "yes" : "no") << "\n";
    return 0;
}

int ZBCtlCommands::swfInfo(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    if (arguments.size() != 1)
    {
        err << "norvikctl: swf-info needs exactly one FILE" << Qt::endl;
        return 1;
    }
    const QString path = arguments.first();
    if (!QFileInfo(path).isFile() || !QFileInfo(path).isReadable())
    {
        err << "norvikctl: cannot read " << path << Qt::endl;
        return 1;
    }
    const std::optional<FlashMovie> flash = flashMovieIn(path);
    if (!flash)
    {
        err << "norvikctl: " << path
            << " is no Flash movie (no FWS, CWS or ZWS header that reads) and no projector carrying one"
            << Qt::endl;
        return 1;
    }
    const ZBSwfHeader::Info &header = flash->header;
    out << "source: " << flash->origin << "\n";
    out << "signature: " << header.signature << " (compression: " << ZBSwfHeader::compressionName(header.compression)
        << ")\n";
    out << "version: " << header.version << "\n";
    out << "file length: " << header.fileLength << "\n";
    out << "frame size: " << QString::number(header.width()) << " x " << QString::number(header.height())
        << " pixels\n";
    out << "frame rate: " << QString::number(header.frameRate) << "\n";
    out << "frame count: " << header.frameCount << "\n";
    out << "actionscript 3: " << (header.isAS3 ? "yes" : "no") << "\n";
    return 0;
}
