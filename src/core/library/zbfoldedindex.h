#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <vector>

class ZBItem;

// Tracks by the case- and diacritic-folded value of one text field (UUID,
// path or URL), for the exact lookups of the library controller.
//
// A hash table of folded strings cost more memory than the tracks' own text
// and most of the time of opening a large library. This one keeps only a
// 64-bit hash of each folded value, computed without building the folded text
// when the value is ASCII; the tracks that share a hash are chained through
// the tracks themselves (both ways, so that a track leaves a long chain at
// once), and a lookup confirms each candidate by folding its value. Like the
// hash it replaces, a lookup lists the track added last first.
class ZBFoldedIndex
{
public:
    // `slot` picks the track's chain link this index uses (0 to 2); `field`
    // is the text it indexes.
    ZBFoldedIndex(int slot, QString ZBItem::*field);

    void clear();
    void reserve(qsizetype count);
    // Indexes all of `items` in their order, as insert() one by one would.
    void build(const QList<ZBItem *> &items);
    // The same with each track's hash worked out already (foldedHash(), or
    // 0 for an absent value), one per track.
    void build(const QList<ZBItem *> &items, const std::vector<quint64> &hashes);

    // What an index keeps of a value: never 0, equal for values that fold
    // alike. The UTF-8 form gives what the text's own does.
    static quint64 foldedHash(const QString &value);
    static quint64 foldedHashUtf8(QByteArrayView utf8);
    // `value` as the track holds it, not folded; absent values are never
    // indexed.
    void insert(const QString &value, ZBItem *item);
    void remove(const QString &value, ZBItem *item);
    // The tracks whose value folds to `folded`.
    QList<ZBItem *> values(const QString &folded) const;

private:
    struct Slot
    {
        // Never 0 in a used slot (the lowest bit is set), so 0 marks a free one.
        quint64 hash = 0;
        // Null when the slot was emptied; it keeps its hash so that probing
        // goes on past it.
        ZBItem *head = nullptr;
    };

    static quint64 hashOf(QStringView folded);
    Slot *find(quint64 hash) const;
    void grow();
    ZBItem *&next(ZBItem *item) const;
    ZBItem *&previous(ZBItem *item) const;

    void link(quint64 hash, ZBItem *item);

    int m_slot;
    QString ZBItem::*m_field;
    std::vector<Slot> m_slots;
    qsizetype m_used = 0;
};
