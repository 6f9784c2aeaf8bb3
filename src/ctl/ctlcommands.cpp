#include "ctl/ctlcommands.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "library/zblibrarycontroller.h"
#include "playback/zbmediatypes.h"
#include "playback/zbprojector.h"

namespace
{
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

ZBCtlCommands::Options::Options(const QStringList &arguments, const QStringList &valued,
                                const QStringList &flags)
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

std::optional<ZBCtlCommands::FlashMovie> ZBCtlCommands::flashMovieIn(const QString &path)
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
        "  capture URL [--wait SECONDS] [--filter all|flash|video|media] [--json]\n"
        "                                browse to URL without a window and print what the page requested,\n"
        "                                as the download tree lists it (default filter: media); capture ends\n"
        "                                SECONDS (default 3) after the page finished and went quiet, or 60\n"
        "                                seconds after that could first have happened\n"
        "  capture URL --download [--to DIR] [--filter F]\n"
        "                                then save the page as Download All does, into DIR (default: the\n"
        "                                player's downloads folder); prints each saved path. With\n"
        "                                --data-dir finished media are also added to that library\n"
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
