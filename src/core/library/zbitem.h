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
    const QList<ZBPlaylist *> &Playlist() const
    {
        static const QList<ZBPlaylist *> none;
        return m_relations ? m_relations->playlists : none;
    }
    const QList<ZBResources *> &Resource() const
    {
        static const QList<ZBResources *> none;
        return m_relations ? m_relations->resources : none;
    }
    ZBType *rel_Type() const { return m_relType; }

    // Generic access by attribute key, as the track table and the rules use it.
    QVariant getUntypedValueByName(const QString &key) const;
    bool setUntypedValueByName(const QString &key, const QVariant &value);

    QVariant valueForKeyPath(const QString &keyPath) const override;
    QString foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const override;
    const QString *cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                           bool diacriticInsensitive) const override;
    void prefetch() const override;

    // The fields a search reads come first, so that their folds share the
    // track's first cache lines.
    enum TextField
    {
        NameField,
        URLField,
        TypeField,
        PathField,
        SourcePageTitleField,
        ItemUUIDField,
        TextFieldCount,
        // Only the fields searches and lists read keep their fold.
        KeptFoldCount = PathField
    };
    // The text fields by index, for filters and sorts compiled once per call
    // that then read them for every track without comparing key names.
    // Null when the value is absent.
    const QString *rawText(int field) const
    {
        const QString &raw = textAt(field);
        return raw.isNull() ? nullptr : &raw;
    }
    // Folded for case and diacritics, the way a [cd] comparison reads it;
    // for the fields below KeptFoldCount only.
    const QString *foldedText(int field) const
    {
        // A kept fold is null exactly when the text is absent, so the text
        // itself, further into the object, is not read.
        if (m_foldValid & (1u << field))
            return m_folds[size_t(field)].isNull() ? nullptr : &m_folds[size_t(field)];
        const QString &raw = textAt(field);
        return raw.isNull() ? nullptr : cachedFold(field, raw);
    }
    // The index of the text field `key` names, or -1.
    static int textFieldIndex(const QString &key);
    // One bit per stored value: kept lists and sort keys are only dropped by
    // changes to the values they read (a play moves PlayCount and
    // LastPlayed, not the order by name).
    enum ValueBit : quint32
    {
        ItemUUIDValue = 1u << 0,
        NameValue = 1u << 1,
        PathValue = 1u << 2,
        URLValue = 1u << 3,
        TypeValue = 1u << 4,
        RatingValue = 1u << 5,
        LengthValue = 1u << 6,
        PlayCountValue = 1u << 7,
        AddedValue = 1u << 8,
        LastPlayedValue = 1u << 9,
        SourcePageTitleValue = 1u << 10,
        IsValidValue = 1u << 11,
        IsAvailableValue = 1u << 12,
        AllValues = (1u << 13) - 1
    };
    static constexpr int ValueBitCount = 13;
    // The bit of the stored value `key` names; 0 for anything else (a key
    // path through a relationship, an unknown key).
    static quint32 valueBit(QStringView key);
    // Dense per context, in order of creation: sort keys kept by the context
    // are indexed by it.
    quint32 serial() const { return m_serial; }

private:
    friend class ZBObjectContext;
    friend class ZBFoldedIndex;

    const QString &textAt(int field) const
    {
        switch (field)
        {
            case NameField:
                return m_Name;
            case PathField:
                return m_Path;
            case URLField:
                return m_URL;
            case TypeField:
                return m_Type;
            case SourcePageTitleField:
                return m_SourcePageTitle;
            default:
                return m_ItemUUID;
        }
    }
    const QString *textField(const QString &key, int *index) const;
    const QString *cachedFold(int index, const QString &field) const;
    void forgetFolds(int field);

    // Searches, smart lists and lookups compare case- and diacritic-folded
    // text over the whole library many times a second; folding each value once
    // keeps them cheap. Other fold variants are rare and computed on demand.
    // First among the members, so that a scan finds it on the cache line it
    // loads for the object anyway.
    mutable quint8 m_foldValid = 0;
    quint32 m_serial = 0;
    mutable std::array<QString, KeptFoldCount> m_folds;
    // The links of the context's UUID, path and URL indexes, both ways: every
    // local track shares the empty address, and a track leaves that chain
    // without a walk along it.
    std::array<ZBItem *, 3> m_indexNext{};
    std::array<ZBItem *, 3> m_indexPrevious{};

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

    // Most tracks are in no plain list and have no resources: the two lists
    // are made for the few that do, which saves a library of a million
    // tracks some 40 MB.
    struct Relations
    {
        QList<ZBPlaylist *> playlists;
        QList<ZBResources *> resources;
    };
    Relations &relations()
    {
        if (!m_relations)
            m_relations = std::make_unique<Relations>();
        return *m_relations;
    }
    std::unique_ptr<Relations> m_relations;
    ZBType *m_relType = nullptr;

};

using ZBItemList = QList<ZBItem *>;
