#include "ctl/ctlcommands.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylistfile.h"
#include "playback/zbmediatypes.h"

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
