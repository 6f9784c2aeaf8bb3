#include "library/zbfoldedindex.h"

#include <array>

#include "library/zbitem.h"
#include "predicate/zbtextfold.h"

namespace
{
// Qt's own hash of the bytes (vectorised where the processor allows), with a
// fixed seed: the values never leave the process.
quint64 hashUnits(const char16_t *units, size_t count)
{
    return quint64(qHashBits(units, count * sizeof(char16_t), 0)) | 1;
}

// ASCII folds by case alone.
char16_t foldAscii(char16_t u)
{
    return (u >= u'A' && u <= u'Z') ? char16_t(u + 32) : u;
}
} // namespace

ZBFoldedIndex::ZBFoldedIndex(int slot, QString ZBItem::*field)
    : m_slot(slot)
    , m_field(field)
{
}

ZBItem *&ZBFoldedIndex::next(ZBItem *item) const
{
    return item->m_indexNext[size_t(m_slot)];
}

ZBItem *&ZBFoldedIndex::previous(ZBItem *item) const
{
    return item->m_indexPrevious[size_t(m_slot)];
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
    return hashUnits(reinterpret_cast<const char16_t *>(folded.data()), size_t(folded.size()));
}

quint64 ZBFoldedIndex::foldedHash(const QString &value)
{
    // Latin-1 text folds one character at a time: its characters decompose
    // into a Latin base and marks only, nothing recomposes once the marks are
    // gone, and case folds one character to one. So it is folded here from a
    // table of each character's own fold, on the stack, without the general
    // folding's normalisations.
    static const std::array<QString, 256> latin1Folds = []() {
        std::array<QString, 256> folds;
        for (char16_t u = 0; u < 256; ++u)
            folds[u] = ZBTextFold::fold(QString(QChar(u)), true, true);
        return folds;
    }();
    constexpr qsizetype Room = 512;
    char16_t folded[Room];
    qsizetype length = 0;
    for (const QChar ch : value)
    {
        const char16_t u = ch.unicode();
        if (u < 0x80 && length < Room)
            folded[length++] = foldAscii(u);
        else if (u < 0x100 && length + latin1Folds[u].size() <= Room)
        {
            for (const QChar unit : latin1Folds[u])
                folded[length++] = unit.unicode();
        }
        else
            return hashOf(ZBTextFold::fold(value, true, true));
    }
    return hashUnits(folded, size_t(length));
}

quint64 ZBFoldedIndex::foldedHashUtf8(QByteArrayView utf8)
{
    // Paths, addresses and UUIDs are mostly ASCII, which folds byte by byte.
    constexpr qsizetype Room = 512;
    char16_t folded[Room];
    if (utf8.size() <= Room)
    {
        qsizetype length = 0;
        for (const char byte : utf8)
        {
            const auto u = char16_t(static_cast<unsigned char>(byte));
            if (u >= 0x80)
                break;
            folded[length++] = foldAscii(u);
        }
        if (length == utf8.size())
            return hashUnits(folded, size_t(length));
    }
    return foldedHash(QString::fromUtf8(utf8));
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

void ZBFoldedIndex::build(const QList<ZBItem *> &items)
{
    std::vector<quint64> hashes(size_t(items.size()));
    for (qsizetype i = 0; i < items.size(); ++i)
    {
        const QString &value = items[i]->*m_field;
        hashes[size_t(i)] = value.isNull() ? 0 : foldedHash(value);
    }
    build(items, hashes);
}

void ZBFoldedIndex::build(const QList<ZBItem *> &items, const std::vector<quint64> &hashes)
{
    clear();
    reserve(items.size());
    // Each insertion is a cache miss in a table larger than the cache: with
    // every hash known first, the slots are loaded a few insertions ahead.
    constexpr size_t Distance = 8;
    const size_t mask = m_slots.size() - 1;
    for (size_t i = 0; i < hashes.size(); ++i)
    {
        if (i + Distance < hashes.size())
            __builtin_prefetch(&m_slots[size_t(hashes[i + Distance] >> 1) & mask]);
        if (hashes[i] != 0)
            link(hashes[i], items[qsizetype(i)]);
    }
}

void ZBFoldedIndex::insert(const QString &value, ZBItem *item)
{
    if (value.isNull())
        return;
    link(foldedHash(value), item);
}

void ZBFoldedIndex::link(quint64 hash, ZBItem *item)
{
    if (size_t(m_used + 1) * 2 > m_slots.size())
        grow();
    Slot *slot = find(hash);
    if (slot->hash == 0)
    {
        slot->hash = hash;
        ++m_used;
    }
    next(item) = slot->head;
    previous(item) = nullptr;
    if (slot->head)
        previous(slot->head) = item;
    slot->head = item;
}

void ZBFoldedIndex::remove(const QString &value, ZBItem *item)
{
    if (value.isNull() || m_slots.empty())
        return;
    ZBItem *before = previous(item);
    ZBItem *after = next(item);
    if (before)
        next(before) = after;
    else
    {
        // The head of its chain, or not indexed at all.
        Slot *slot = find(foldedHash(value));
        if (slot->hash == 0 || slot->head != item)
            return;
        slot->head = after;
    }
    if (after)
        previous(after) = before;
    next(item) = nullptr;
    previous(item) = nullptr;
}

QList<ZBItem *> ZBFoldedIndex::values(const QString &folded) const
{
    QList<ZBItem *> result;
    if (m_slots.empty() || folded.isNull())
        return result;
    const Slot *slot = find(hashOf(folded));
    if (slot->hash == 0)
        return result;
    for (ZBItem *item = slot->head; item; item = next(item))
    {
        if (ZBTextFold::fold(item->*m_field, true, true) == folded)
            result.append(item);
    }
    return result;
}
