#include "ctl/ctlcommands.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "library/zblibrarycontroller.h"

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
    const QString type = options.value(QStringLiteral("type"), QFileInfo(path).suffix());
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
