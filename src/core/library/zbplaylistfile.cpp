#include "library/zbplaylistfile.h"

#include <cmath>
#include <limits>
#include <optional>

#include <QLoggingCategory>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "library/zbpropertylist.h"
#include "predicate/zbpredicate.h"

Q_LOGGING_CATEGORY(lcPlaylistFile, "norvik.playlistfile")

const QString ZBPlaylistFile::Extension = QStringLiteral("nvp");
const QString ZBPlaylistFile::SavePanelTitleKey = QStringLiteral("savePanelExportPlaylist");
const QString ZBPlaylistFile::OpenPanelTitleKey = QStringLiteral("openPanelImportPlaylist");
const QString ZBPlaylistFile::ImportErrorTitleKey = QStringLiteral("importPlaylistErrorMsg");
const QString ZBPlaylistFile::ImportErrorInfoKey = QStringLiteral("importPlaylistErrorInfo");
const QString ZBPlaylistFile::ImportErrorButtonKey = QStringLiteral("Button_OK_Title");

namespace
{
const QString KeyName = QStringLiteral("Name");
const QString KeyIsSmart = QStringLiteral("isSmart");
const QString KeyRequest = QStringLiteral("Request");
const QString KeySortField = QStringLiteral("SortField");
const QString KeyAscend = QStringLiteral("Ascend");
const QString KeySortOrder = QStringLiteral("SortOrder");
const QString KeyType = QStringLiteral("Type");
const QString KeyPath = QStringLiteral("Path");
const QString KeyLength = QStringLiteral("Length");
const QString KeyRating = QStringLiteral("Rating");
const QString KeyPlayCount = QStringLiteral("PlayCount");
const QString KeyAdded = QStringLiteral("Added");
const QString KeyLastPlayed = QStringLiteral("LastPlayed");
const QString KeyURL = QStringLiteral("URL");
const QString KeySourcePage = QStringLiteral("SourcePage");

// Other writers of these files may store a number as any kind of number, or
// as text; a value of another kind is as good as absent.
std::optional<QString> stringValue(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QString)
        return value.toString();
    return std::nullopt;
}

std::optional<qint32> intValue(const QVariant &value)
{
    double number = 0;
    switch (value.metaType().id())
    {
        case QMetaType::Bool:
            return value.toBool() ? 1 : 0;
        case QMetaType::LongLong:
        case QMetaType::Int:
            number = double(value.toLongLong());
            break;
        case QMetaType::ULongLong:
        case QMetaType::UInt:
            number = double(value.toULongLong());
            break;
        case QMetaType::Double:
            number = std::trunc(value.toDouble());
            break;
        case QMetaType::QString:
        {
            bool ok = false;
            const qint32 parsed = value.toString().trimmed().toInt(&ok);
            if (!ok)
                return std::nullopt;
            return parsed;
        }
        default:
            return std::nullopt;
    }
    if (!std::isfinite(number) || number < std::numeric_limits<qint32>::min() ||
        number > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return qint32(number);
}

std::optional<bool> boolValue(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QString)
    {
        const QString text = value.toString().trimmed();
        for (const char *yes : {"YES", "true"})
        {
            if (text.compare(QLatin1String(yes), Qt::CaseInsensitive) == 0)
                return true;
        }
        for (const char *no : {"NO", "false"})
        {
            if (text.compare(QLatin1String(no), Qt::CaseInsensitive) == 0)
                return false;
        }
    }
    const std::optional<qint32> number = intValue(value);
    if (!number)
        return std::nullopt;
    return *number != 0;
}

std::optional<QDateTime> dateValue(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDateTime && value.toDateTime().isValid())
        return value.toDateTime();
    return std::nullopt;
}

// A property list has no null: a field never set is written as its empty
// value, so that the file still imports.
QString orEmpty(const QString &value)
{
    return value.isNull() ? QStringLiteral("") : value;
}

QString quotedKeys(const QStringList &keys)
{
    QStringList quoted;
    for (const QString &key : keys)
        quoted << u'"' + key + u'"';
    return quoted.join(QStringLiteral(", "));
}

// "lacks "Rating"; "Added" is not of a usable kind": absent and unusable
// keys are different mistakes to look for in a file.
QString whatIsWrong(const QVariantMap &dictionary, const QStringList &keys)
{
    QStringList absent;
    QStringList unusable;
    for (const QString &key : keys)
        (dictionary.contains(key) ? unusable : absent) << key;
    QStringList parts;
    if (!absent.isEmpty())
        parts << QStringLiteral("lacks %1").arg(quotedKeys(absent));
    if (!unusable.isEmpty())
        parts << QStringLiteral("has %1 of a kind that cannot be used").arg(quotedKeys(unusable));
    return parts.join(QStringLiteral(" and "));
}

// The element name of a value read from a property list.
QString kindOf(const QVariant &value)
{
    switch (value.metaType().id())
    {
        case QMetaType::QVariantList:
            return QStringLiteral("<array>");
        case QMetaType::QString:
            return QStringLiteral("<string>");
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            return QStringLiteral("<integer>");
        case QMetaType::Double:
            return QStringLiteral("<real>");
        case QMetaType::Bool:
            return QStringLiteral("<true/> or <false/>");
        case QMetaType::QDateTime:
            return QStringLiteral("<date>");
        case QMetaType::QByteArray:
            return QStringLiteral("<data>");
        default:
            return QStringLiteral("<dict>");
    }
}

// Root keys a list needs, checked in the order given; the names of those
// absent or of no use are returned.
QStringList missing(const QVariantMap &root, const QStringList &stringKeys, bool needsAscend)
{
    QStringList result;
    for (const QString &key : stringKeys)
    {
        if (!stringValue(root.value(key)))
            result << key;
    }
    if (needsAscend && !boolValue(root.value(KeyAscend)))
        result << KeyAscend;
    if (!intValue(root.value(KeySortOrder)))
        result << KeySortOrder;
    return result;
}

// Keys that index entries beyond the first gap: they are not read, and the
// user of norvikctl deserves to know.
QStringList entriesBeyond(const QVariantMap &root, qint64 gap)
{
    QStringList result;
    for (auto it = root.cbegin(); it != root.cend(); ++it)
    {
        bool ok = false;
        const qint64 index = it.key().toLongLong(&ok);
        if (ok && index > gap && it.key() == QString::number(index))
            result << it.key();
    }
    return result;
}
} // namespace

QString ZBPlaylistFile::proposedFileName(const ZBPlaylist *playlist)
{
    QString name = playlist ? playlist->Name() : QString();
    name.replace(u'/', u'-');
    name.remove(QChar(u'\0'));
    if (name.trimmed().isEmpty() || name == u"." || name == u"..")
        name = QStringLiteral("Playlist");
    return name + u'.' + Extension;
}

QVariantMap ZBPlaylistFile::dictionaryForPlaylist(const ZBLibraryController &library, const ZBPlaylist *playlist)
{
    QVariantMap root;
    if (!playlist)
        return root;
    root.insert(KeyName, orEmpty(playlist->Name()));
    root.insert(KeyIsSmart, playlist->isSmart());
    root.insert(KeySortField, orEmpty(playlist->SortField()));
    root.insert(KeyAscend, playlist->Ascend().value_or(false));
    root.insert(KeySortOrder, qlonglong(playlist->SortOrder().value_or(0)));
    if (playlist->isSmart())
    {
        root.insert(KeyRequest, orEmpty(playlist->Request()));
        return root;
    }

    const ZBItemList tracks = library.getItemsFromPlaylist(playlist);
    for (qsizetype index = 0; index < tracks.size(); ++index)
    {
        const ZBItem *item = tracks.at(index);
        QVariantMap track;
        track.insert(KeyName, orEmpty(item->Name()));
        track.insert(KeyType, orEmpty(item->Type()));
        track.insert(KeyPath, orEmpty(item->Path()));
        track.insert(KeyLength, qlonglong(item->Length().value_or(0)));
        track.insert(KeyRating, qlonglong(item->Rating().value_or(0)));
        track.insert(KeyPlayCount, qlonglong(item->PlayCount().value_or(0)));
        // The reference date stands for "never", here as in the library's
        // own records; a track with no date added gets it too rather than
        // being left out of the file.
        track.insert(KeyAdded, item->Added().isValid() ? item->Added() : ZBPredicate::referenceDate());
        track.insert(KeyLastPlayed, item->LastPlayed().isValid() ? item->LastPlayed() : ZBPredicate::referenceDate());
        track.insert(KeyURL, orEmpty(item->URL()));
        track.insert(KeySourcePage, orEmpty(item->SourcePageTitle()));
        root.insert(QString::number(index), track);
    }
    return root;
}

bool ZBPlaylistFile::exportPlaylist(const ZBLibraryController &library, const ZBPlaylist *playlist, const QString &path,
                                    QString *error)
{
    if (!playlist)
    {
        if (error)
            *error = QStringLiteral("there is no list to export");
        return false;
    }
    QString why;
    if (!ZBPropertyList::writeFile(path, dictionaryForPlaylist(library, playlist), &why))
    {
        qCWarning(lcPlaylistFile) << "Exporting" << playlist->Name() << "to" << path << "failed:" << why;
        if (error)
            *error = why;
        return false;
    }
    return true;
}

ZBPlaylistFile::ImportResult ZBPlaylistFile::importPlaylistFile(ZBLibraryController &library, const QString &path)
{
    QString why;
    const std::optional<QVariant> document = ZBPropertyList::readFile(path, &why);
    const bool isDictionary = document && document->metaType().id() == QMetaType::QVariantMap;
    if (document && !isDictionary)
        why = QStringLiteral("the root of %1 is %2, not <dict>").arg(path, kindOf(*document));
    if (isDictionary)
        return importPlaylistDictionary(library, document->toMap());

    // The empty dictionary fails the key checks in turn; both failures are
    // reported, as the user has always been shown them.
    qCWarning(lcPlaylistFile) << "The playlist file cannot be read:" << why;
    ImportResult result = importPlaylistDictionary(library, QVariantMap());
    result.unreadable = true;
    result.error = why;
    return result;
}

ZBPlaylistFile::ImportResult ZBPlaylistFile::importPlaylistDictionary(ZBLibraryController &library,
                                                                      const QVariantMap &root)
{
    ImportResult result;
    const bool isSmart = boolValue(root.value(KeyIsSmart)).value_or(false);
    result.missingKeys = isSmart ? missing(root, {KeyName, KeyRequest, KeySortField}, true)
                                 : missing(root, {KeyName, KeySortField}, true);
    if (!result.missingKeys.isEmpty())
    {
        result.error = QStringLiteral("the %1 %2")
                           .arg(isSmart ? QStringLiteral("smart list") : QStringLiteral("playlist"),
                                whatIsWrong(root, result.missingKeys));
        qCWarning(lcPlaylistFile) << "The playlist file is refused:" << result.error;
        return result;
    }

    const QString name = *stringValue(root.value(KeyName));
    const QString sortField = *stringValue(root.value(KeySortField));
    const bool ascend = *boolValue(root.value(KeyAscend));
    const qint32 sortOrder = *intValue(root.value(KeySortOrder));
    const qsizetype tracksBefore = library.managedObjectContext()->items().size();

    if (isSmart)
    {
        const QString request = *stringValue(root.value(KeyRequest));
        result.playlistUUID =
            library.addSmartListWithName(name, request, QStringLiteral("User"), sortField, ascend, sortOrder);
        const ZBPredicate predicate = ZBPredicate::parse(request);
        if (!predicate.isValid())
            result.notes << QStringLiteral("the filter does not parse, so the list selects nothing: %1")
                                .arg(predicate.errorString());
    }
    else
    {
        result.playlistUUID = library.addPlaylistToLibraryByName(name, sortField, ascend, sortOrder);
        ZBPlaylist *playlist = library.getPlaylistsFromLibraryByUUID(result.playlistUUID);
        qint64 index = 0;
        for (;; ++index)
        {
            const QString key = QString::number(index);
            if (!root.contains(key))
                break;
            const QVariant entry = root.value(key);
            if (entry.metaType().id() != QMetaType::QVariantMap)
            {
                result.notes << QStringLiteral("entry \"%1\" is not a dictionary; skipped").arg(key);
                continue;
            }
            const QVariantMap track = entry.toMap();
            QStringList lacking;
            for (const QString &text : {KeyType, KeyName, KeyPath})
            {
                if (!stringValue(track.value(text)))
                    lacking << text;
            }
            for (const QString &number : {KeyLength, KeyPlayCount, KeyRating})
            {
                if (!intValue(track.value(number)))
                    lacking << number;
            }
            if (!dateValue(track.value(KeyAdded)))
                lacking << KeyAdded;
            if (!lacking.isEmpty())
            {
                result.notes << QStringLiteral("entry \"%1\" %2; skipped").arg(key, whatIsWrong(track, lacking));
                continue;
            }

            QDateTime lastPlayed = dateValue(track.value(KeyLastPlayed)).value_or(QDateTime());
            if (lastPlayed == ZBPredicate::referenceDate())
                lastPlayed = QDateTime();
            const QString itemUUID = library.addItemToLibrarybyName(
                *stringValue(track.value(KeyName)), *stringValue(track.value(KeyPath)),
                stringValue(track.value(KeyURL)).value_or(QStringLiteral("")), *stringValue(track.value(KeyType)),
                *intValue(track.value(KeyRating)), *intValue(track.value(KeyLength)),
                *intValue(track.value(KeyPlayCount)), *dateValue(track.value(KeyAdded)), lastPlayed,
                stringValue(track.value(KeySourcePage)).value_or(QStringLiteral("")), QString());
            library.addItemWithUUID(itemUUID, playlist);
        }
        const QStringList unread = entriesBeyond(root, index);
        if (!unread.isEmpty())
            result.notes << QStringLiteral("entry \"%1\" is missing, so the entries after it were not read: %2")
                                .arg(QString::number(index), quotedKeys(unread));
        result.tracksInList = playlist ? int(playlist->Item().size()) : 0;
    }

    result.tracksNewToLibrary = int(library.managedObjectContext()->items().size() - tracksBefore);
    if (library.managedObjectContext()->hasChanges())
        result.notes
            << QStringLiteral("the library could not be saved: %1").arg(library.managedObjectContext()->lastError());
    return result;
}
