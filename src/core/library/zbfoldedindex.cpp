#include "library/zbfoldedindex.h"

#include <array>

#include "library/zbitem.h"
#include "predicate/zbtextfold.h"

namespace
{
// FNV-1a over UTF-16 units, finished with a mixer so that the low bits the
// table probes by depend on every unit.
constexpr quint64 Offset = 14695981039346656037ull;
constexpr quint64 Prime = 1099511628211ull;

quint64 step(quint64 hash, char16_t unit)
{
    return (hash ^ unit) * Prime;
}

quint64 finish(quint64 hash)
{
    hash ^= hash >> 33;
    hash *= 0xff51afd7ed558ccdull;
    hash ^= hash >> 33;
    return hash | 1;
}
} // namespace

ZBFoldedIndex::ZBFoldedIndex(int slot)
    : m_slot(slot)
{
}

ZBItem *&ZBFoldedIndex::next(ZBItem *item) const
{
    return item->m_indexNext[size_t(m_slot)];
}

void ZBFoldedIndex::clear()
{
    m_slots.clear();
    m_used = 0;
}

void ZBFoldedIndex::reserve(qsizetype count)
{
    size_t capacity = 16;
    while (capacity < size_t(count) * 2)
        capacity *= 2;
    if (capacity <= m_slots.size())
        return;
    std::vector<Slot> old;
    old.swap(m_slots);
    m_slots.resize(capacity);
    m_used = 0;
    for (const Slot &slot : old)
    {
        if (slot.head)
        {
            Slot *target = find(slot.hash);
            *target = slot;
            ++m_used;
        }
    }
}

void ZBFoldedIndex::grow()
{
    reserve(qsizetype(m_slots.size()));
}

quint64 ZBFoldedIndex::hashOf(QStringView folded)
{
    quint64 hash = Offset;
    for (const QChar ch : folded)
        hash = step(hash, ch.unicode());
    return finish(hash);
}

quint64 ZBFoldedIndex::foldedHash(const QString &value)
{
    // Latin-1 text folds one character at a time: its characters decompose
    // into a Latin base and marks only, nothing recomposes once the marks are
    // gone, and case folds one character to one. So it is hashed as it folds,
    // from a table of each character's own fold, without building the text.
    static const std::array<QString, 256> latin1Folds = []() {
        std::array<QString, 256> folds;
        for (char16_t u = 0; u < 256; ++u)
            folds[u] = ZBTextFold::fold(QString(QChar(u)), true, true);
        return folds;
    }();
    quint64 hash = Offset;
    for (const QChar ch : value)
    {
        const char16_t u = ch.unicode();
        if (u < 0x80)
            hash = step(hash, (u >= u'A' && u <= u'Z') ? char16_t(u + 32) : u);
        else if (u < 0x100)
        {
            for (const QChar folded : latin1Folds[u])
                hash = step(hash, folded.unicode());
        }
        else
            return hashOf(ZBTextFold::fold(value, true, true));
    }
    return finish(hash);
}

ZBFoldedIndex::Slot *ZBFoldedIndex::find(quint64 hash) const
{
    // Linear probing; the table is at most half full, so a free slot ends
    // every search. The lowest bit is always set (it marks a used slot), so
    // the start comes from the bits above it.
    const size_t mask = m_slots.size() - 1;
    for (size_t i = size_t(hash >> 1) & mask;; i = (i + 1) & mask)
    {
        const Slot &slot = m_slots[i];
        if (slot.hash == 0 || slot.hash == hash)
            return const_cast<Slot *>(&slot);
    }
}

void ZBFoldedIndex::insert(const QString &value, ZBItem *item)
{
    if (value.isNull())
        return;
    if (size_t(m_used + 1) * 2 > m_slots.size())
        grow();
    const quint64 hash = foldedHash(value);
    Slot *slot = find(hash);
    if (slot->hash == 0)
    {
        slot->hash = hash;
        ++m_used;
    }
    next(item) = slot->head;
    slot->head = item;
}

void ZBFoldedIndex::remove(const QString &value, ZBItem *item)
{
    if (value.isNull() || m_slots.empty())
        return;
    Slot *slot = find(foldedHash(value));
    if (slot->hash == 0)
        return;
    for (ZBItem **link = &slot->head; *link; link = &next(*link))
    {
        if (*link == item)
        {
            *link = next(item);
            next(item) = nullptr;
            return;
        }
    }
}

QList<ZBItem *> ZBFoldedIndex::values(const QString &folded, QString (*valueOf)(const ZBItem &)) const
{
    QList<ZBItem *> result;
    if (m_slots.empty() || folded.isNull())
        return result;
    const Slot *slot = find(hashOf(folded));
    if (slot->hash == 0)
        return result;
    for (ZBItem *item = slot->head; item; item = next(item))
    {
        if (ZBTextFold::fold(valueOf(*item), true, true) == folded)
            result.append(item);
    }
    return result;
}
