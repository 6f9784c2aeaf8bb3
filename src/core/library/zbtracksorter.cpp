#include "library/zbtracksorter.h"

#include <QCollator>
#include <QThread>

#include <algorithm>
#include <array>
#include <utility>
#include <limits>
#include <thread>
#include <vector>

#include "library/zblibraryguard.h"
#include "library/zbobjectcontext.h"
#include "util/zbcollationkeys.h"

namespace
{
// Natural order of stored values; an absent value sorts before every present
// one.
int compareValues(const QVariant &a, const QVariant &b)
{
    const bool aAbsent = !a.isValid() || a.isNull();
    const bool bAbsent = !b.isValid() || b.isNull();
    if (aAbsent || bAbsent)
        return int(bAbsent) - int(aAbsent);
    if (a.metaType().id() == QMetaType::QDateTime && b.metaType().id() == QMetaType::QDateTime)
    {
        const qint64 x = a.toDateTime().toMSecsSinceEpoch();
        const qint64 y = b.toDateTime().toMSecsSinceEpoch();
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    const double x = a.toDouble();
    const double y = b.toDouble();
    return x < y ? -1 : (x > y ? 1 : 0);
}

// Under the C locale (a bare session, a service) the collator compares code
// points and puts every capital first; the table wants a dictionary order.
QLocale tableLocale()
{
    const QLocale system = QLocale::system();
    return system.language() == QLocale::C ? QLocale(QLocale::English) : system;
}

QCollator tableCollator()
{
    QCollator collator(tableLocale());
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

constexpr qsizetype PrefetchDistance = 16;

struct Keyed
{
    quint64 key;
    ZBItem *item;
};

// Least significant digit first, each pass stable, so tracks with equal keys
// keep the order they came in, as std::stable_sort keeps them. Passes stop at
// the highest bit any key uses.
void radixSort(std::vector<Keyed> &keyed)
{
    constexpr int Bits = 11;
    constexpr quint64 Mask = (quint64(1) << Bits) - 1;
    constexpr int MaxPasses = (64 + Bits - 1) / Bits;
    quint64 all = 0;
    for (const Keyed &k : keyed)
        all |= k.key;
    int passes = 0;
    while (passes < MaxPasses && (all >> (passes * Bits)) != 0)
        ++passes;
    if (passes == 0)
        return;
    // Every pass's counts in one read of the keys.
    std::vector<std::array<size_t, Mask + 1>> counts{size_t(passes), std::array<size_t, Mask + 1>{}};
    for (const Keyed &k : keyed)
    {
        for (int pass = 0; pass < passes; ++pass)
            ++counts[size_t(pass)][(k.key >> (pass * Bits)) & Mask];
    }
    std::vector<Keyed> buffer(keyed.size());
    for (int pass = 0; pass < passes; ++pass)
    {
        std::array<size_t, Mask + 1> &start = counts[size_t(pass)];
        size_t sum = 0;
        for (size_t &count : start)
            sum += std::exchange(count, sum);
        const int shift = pass * Bits;
        for (const Keyed &k : keyed)
            buffer[start[(k.key >> shift) & Mask]++] = k;
        keyed.swap(buffer);
    }
}

// The collation keys of tracks [begin, end), tagged with their serials, sorted;
// false when the read was stopped.
bool sortedKeys(const ZBItemList &items, qsizetype begin, qsizetype end, int field, ZBCollationKeys &keys)
{
    keys.reserve(end - begin);
    for (qsizetype i = begin; i < end; ++i)
    {
        if ((i & 1023) == 0 && ZBLibraryGuard::cancelled())
            return false;
        const QString *text = items[i]->rawText(field);
        keys.append(text ? QStringView(*text) : QStringView(), items[i]->serial());
    }
    // A million keys take long enough to sort that a newer read or a write
    // must be able to stop it halfway.
    return keys.sort([]() { return ZBLibraryGuard::cancelled(); });
}

// Every track's place in the collation of one text field, by serial; equal
// texts share a place. Kept by the context until a track's value changes.
const std::vector<quint32> *textRanks(ZBObjectContext &context, const QString &key, int field)
{
    const QLocale locale = tableLocale();
    ZBObjectContext::SortRanks &cache = context.sortRanks(key);
    const quint64 generation = context.itemGeneration(ZBItem::valueBit(key), false);
    if (cache.generation == generation && cache.locale == locale.name())
        return &cache.bySerial;

    // Collation keys are most of the first sort by name of a large library:
    // two halves on two cores, merged below.
    const ZBItemList &items = context.items();
    constexpr qsizetype ParallelFrom = 50000;
    const qsizetype middle = items.size() >= ParallelFrom && QThread::idealThreadCount() >= 2 ? items.size() / 2
                                                                                             : items.size();
    ZBCollationKeys first(locale);
    ZBCollationKeys second(locale);
    if (!first.isValid() || !second.isValid())
        return nullptr;
    bool secondDone = true;
    std::thread helper;
    if (middle < items.size())
    {
        helper = std::thread([&, flag = ZBLibraryGuard::currentFlag()]() {
            const ZBLibraryGuard::ReadScope scope(flag);
            secondDone = sortedKeys(items, middle, items.size(), field, second);
        });
    }
    const bool firstDone = sortedKeys(items, 0, middle, field, first);
    if (helper.joinable())
        helper.join();
    if (!firstDone || !secondDone)
        return nullptr;

    cache.bySerial.assign(context.serialCount(), std::numeric_limits<quint32>::max());
    quint32 rank = 0;
    const ZBCollationKeys *previousKeys = nullptr;
    qsizetype previous = 0;
    for (qsizetype a = 0, b = 0; a < first.size() || b < second.size();)
    {
        const bool fromFirst = b == second.size() || (a < first.size() && ZBCollationKeys::compare(first, a, second, b) <= 0);
        const ZBCollationKeys &keys = fromFirst ? first : second;
        const qsizetype next = fromFirst ? a++ : b++;
        if (previousKeys && ZBCollationKeys::compare(*previousKeys, previous, keys, next) != 0)
            ++rank;
        cache.bySerial[keys.tagAt(next)] = rank;
        previousKeys = &keys;
        previous = next;
    }
    cache.generation = generation;
    cache.locale = locale.name();
    return &cache.bySerial;
}

// A stored number or date as a signed integer, or nothing when absent; false
// when the key is not one of them.
bool integerValue(const ZBItem &item, const QString &key, std::optional<qint64> *value)
{
    std::optional<qint32> number;
    if (key == u"Rating")
        number = item.Rating();
    else if (key == u"Length")
        number = item.Length();
    else if (key == u"PlayCount")
        number = item.PlayCount();
    else if (key == u"Added" || key == u"LastPlayed")
    {
        const QDateTime date = key == u"Added" ? item.Added() : item.LastPlayed();
        *value = date.isValid() ? std::optional<qint64>(date.toMSecsSinceEpoch()) : std::nullopt;
        return true;
    }
    else
        return false;
    *value = number ? std::optional<qint64>(*number) : std::nullopt;
    return true;
}
} // namespace

bool ZBTrackSorter::isInvertedSortKey(const QString &key)
{
    for (const char *inverted : {"Added", "LastPlayed", "Rating", "Length", "PlayCount"})
    {
        if (key.compare(QLatin1String(inverted), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void ZBTrackSorter::prepare(ZBObjectContext &context, const QString &key)
{
    if (isInvertedSortKey(key))
        valueRanks(context, key);
    else if (const int field = ZBItem::textFieldIndex(key); field >= 0)
        textRanks(context, key, field);
}

ZBItemList ZBTrackSorter::sort(const ZBItemList &tracks, const QString &key, bool ascend)
{
    // Fills the context's kept ranks.
    ZBLibraryGuard::willWrite();
    if (std::optional<ZBItemList> sorted = fastSort(tracks, key, ascend))
        return *sorted;
    // Stopped, not unable: the read that asked is dropped anyway.
    if (ZBLibraryGuard::cancelled())
        return {};
    return plainSort(tracks, key, ascend);
}

std::optional<ZBItemList> ZBTrackSorter::fastSort(const ZBItemList &tracks, const QString &key, bool ascend)
{
    if (tracks.isEmpty())
        return std::nullopt;
    ZBObjectContext *context = tracks.first()->context();
    if (!context)
        return std::nullopt;
    const std::vector<quint32> *ranks = nullptr;
    bool descending = false;
    if (isInvertedSortKey(key))
    {
        ranks = valueRanks(*context, key);
        descending = ascend;
    }
    else if (const int field = ZBItem::textFieldIndex(key); field >= 0)
    {
        ranks = textRanks(*context, key, field);
        descending = !ascend;
    }
    if (!ranks)
        return std::nullopt;

    std::vector<Keyed> keyed;
    keyed.reserve(size_t(tracks.size()));
    quint64 top = 0;
    for (qsizetype i = 0; i < tracks.size(); ++i)
    {
        if ((i & 4095) == 0 && ZBLibraryGuard::cancelled())
            return std::nullopt;
        // Each track is a cache miss of its own: start loading ahead.
        if (i + PrefetchDistance < tracks.size())
            __builtin_prefetch(tracks[i + PrefetchDistance]);
        ZBItem *item = tracks[i];
        // A track of another library, or one deleted since, has no kept key.
        if (item->context() != context || item->isDeleted() || item->serial() >= ranks->size()
            || (*ranks)[item->serial()] == std::numeric_limits<quint32>::max())
            return std::nullopt;
        const quint64 rank = (*ranks)[item->serial()];
        top = std::max(top, rank);
        keyed.push_back({rank, item});
    }
    if (descending)
    {
        for (Keyed &k : keyed)
            k.key = top - k.key;
    }
    radixSort(keyed);
    ZBItemList sorted;
    sorted.reserve(tracks.size());
    for (const Keyed &k : keyed)
        sorted.append(k.item);
    return sorted;
}

const std::vector<quint32> *ZBTrackSorter::valueRanks(ZBObjectContext &context, const QString &key)
{
    ZBObjectContext::SortRanks &cache = context.sortRanks(key);
    const quint64 generation = context.itemGeneration(ZBItem::valueBit(key), false);
    if (cache.generation == generation && !cache.bySerial.empty())
        return &cache.bySerial;

    // Absent first, then present values in order: 0, then 1 + (value - min).
    // The raw values go in first, an absent one as the lowest integer.
    constexpr qint64 Absent = std::numeric_limits<qint64>::min();
    const ZBItemList &items = context.items();
    std::vector<Keyed> keyed;
    keyed.reserve(size_t(items.size()));
    qint64 low = std::numeric_limits<qint64>::max();
    qint64 high = Absent;
    for (qsizetype i = 0; i < items.size(); ++i)
    {
        if ((i & 4095) == 0 && ZBLibraryGuard::cancelled())
            return nullptr;
        if (i + PrefetchDistance < items.size())
            __builtin_prefetch(items[i + PrefetchDistance]);
        std::optional<qint64> value;
        if (!integerValue(*items[i], key, &value) || (value && *value == Absent))
            return nullptr;
        if (value)
        {
            low = std::min(low, *value);
            high = std::max(high, *value);
        }
        keyed.push_back({quint64(value ? *value : Absent), items[i]});
    }
    if (low <= high && quint64(high) - quint64(low) == std::numeric_limits<quint64>::max())
        return nullptr;
    for (Keyed &k : keyed)
        k.key = qint64(k.key) == Absent ? 0 : quint64(qint64(k.key)) - quint64(low) + 1;
    radixSort(keyed);
    cache.bySerial.assign(context.serialCount(), std::numeric_limits<quint32>::max());
    quint32 rank = 0;
    for (size_t i = 0; i < keyed.size(); ++i)
    {
        if (i > 0 && keyed[i - 1].key != keyed[i].key)
            ++rank;
        cache.bySerial[keyed[i].item->serial()] = rank;
    }
    cache.generation = generation;
    cache.locale.clear();
    return &cache.bySerial;
}

ZBItemList ZBTrackSorter::plainSort(const ZBItemList &tracks, const QString &key, bool ascend)
{
    ZBItemList sorted = tracks;
    if (isInvertedSortKey(key))
    {
        // Decorate once: reading a value through its key costs more than the
        // comparison itself.
        std::vector<std::pair<QVariant, ZBItem *>> decorated;
        decorated.reserve(sorted.size());
        for (ZBItem *item : std::as_const(sorted))
            decorated.emplace_back(item->getUntypedValueByName(key), item);
        std::stable_sort(decorated.begin(), decorated.end(), [ascend](const auto &a, const auto &b) {
            const int order = compareValues(a.first, b.first);
            return ascend ? order > 0 : order < 0;
        });
        for (qsizetype i = 0; i < sorted.size(); ++i)
            sorted[i] = decorated[size_t(i)].second;
        return sorted;
    }

    const QCollator collator = tableCollator();
    std::vector<std::pair<QCollatorSortKey, ZBItem *>> decorated;
    decorated.reserve(sorted.size());
    for (ZBItem *item : std::as_const(sorted))
        decorated.emplace_back(collator.sortKey(item->getUntypedValueByName(key).toString()), item);
    std::stable_sort(decorated.begin(), decorated.end(), [ascend](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return ascend ? order < 0 : order > 0;
    });
    for (qsizetype i = 0; i < sorted.size(); ++i)
        sorted[i] = decorated[size_t(i)].second;
    return sorted;
}
