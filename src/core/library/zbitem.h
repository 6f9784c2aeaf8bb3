#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

#include <array>
#include <memory>
#include <optional>

#include "library/zbmanagedobject.h"
#include "predicate/zbpredicatesubject.h"

class ZBPlaylist;
class ZBResources;
class ZBType;

// One track: a local media file, or a resource captured from the web and
// downloaded. Every attribute may be absent: a null QString, an empty optional
// or an invalid QDateTime.
class ZBItem final : public ZBManagedObject, public ZBPredicateSubject
{
public:
    QString ItemUUID() const { return m_ItemUUID; }
    void setItemUUID(const QString &value);
    QString Name() const { return m_Name; }
    void setName(const QString &value);
    QString Path() const { return m_Path; }
    void setPath(const QString &value);
    QString URL() const { return m_URL; }
    void setURL(const QString &value);
    QString Type() const { return m_Type; }
    void setType(const QString &value);
    std::optional<qint32> Rating() const { return m_Rating; }
    void setRating(std::optional<qint32> value);
    void setRatingValue(qint32 value) { setRating(value); }
    std::optional<qint32> Length() const { return m_Length; }
    void setLength(std::optional<qint32> value);
    void setLengthValue(qint32 value) { setLength(value); }
    std::optional<qint32> PlayCount() const { return m_PlayCount; }
    void setPlayCount(std::optional<qint32> value);
    void setPlayCountValue(qint32 value) { setPlayCount(value); }
    QDateTime Added() const { return m_Added; }
    void setAdded(const QDateTime &value);
    QDateTime LastPlayed() const { return m_LastPlayed; }
    void setLastPlayed(const QDateTime &value);
    QString SourcePageTitle() const { return m_SourcePageTitle; }
    void setSourcePageTitle(const QString &value);
    std::optional<bool> isValid() const { return m_isValid; }
    void setIsValid(std::optional<bool> value);
    std::optional<bool> isAvailable() const { return m_isAvailable; }
    void setIsAvailable(std::optional<bool> value);

    // Relationships are changed through the library controller, which keeps
    // both sides and the store in step.
    const QList<ZBPlaylist *> &Playlist() const { return m_playlists; }
    const QList<ZBResources *> &Resource() const { return m_resources; }
    ZBType *rel_Type() const { return m_relType; }

    // Generic access by attribute key, as the track table and the rules use it.
    QVariant getUntypedValueByName(const QString &key) const;
    bool setUntypedValueByName(const QString &key, const QVariant &value);

    QVariant valueForKeyPath(const QString &keyPath) const override;
    QString foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const override;
    const QString *cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                           bool diacriticInsensitive) const override;
    void prefetch() const override;

private:
    friend class ZBObjectContext;

    enum TextField
    {
        NameField,
        PathField,
        URLField,
        TypeField,
        SourcePageTitleField,
        ItemUUIDField,
        TextFieldCount
    };
    const QString *textField(const QString &key, int *index) const;
    const QString *cachedFold(int index, const QString &field) const;
    void forgetFolds(int field);

    // Searches, smart lists and lookups compare case- and diacritic-folded
    // text over the whole library many times a second; folding each value once
    // keeps them cheap. Other fold variants are rare and computed on demand.
    // First among the members, so that a scan finds it on the cache line it
    // loads for the object anyway.
    mutable std::array<QString, TextFieldCount> m_folds;
    mutable quint8 m_foldValid = 0;

    QString m_ItemUUID;
    QString m_Name;
    QString m_Path;
    QString m_URL;
    QString m_Type;
    std::optional<qint32> m_Rating;
    std::optional<qint32> m_Length;
    std::optional<qint32> m_PlayCount;
    QDateTime m_Added;
    QDateTime m_LastPlayed;
    QString m_SourcePageTitle;
    std::optional<bool> m_isValid;
    std::optional<bool> m_isAvailable;

    QList<ZBPlaylist *> m_playlists;
    QList<ZBResources *> m_resources;
    ZBType *m_relType = nullptr;

};

using ZBItemList = QList<ZBItem *>;
