#pragma once

#include <QLocale>
#include <QStringView>

#include <functional>
#include <vector>

struct UCollator;

// The collation keys of many texts, in the order QCollator gives them when it
// ignores case (the same ICU collator, set up the same way), each with a tag
// the caller chooses.
//
// A QCollatorSortKey holds its bytes behind a pointer of its own: sorting a
// million of them is a cache miss per comparison, and making them two
// allocations per text. Here the keys' first sixteen bytes sit beside the
// tag as two integers, which decide most comparisons, and the rest of every
// key is in one block.
class ZBCollationKeys
{
public:
    explicit ZBCollationKeys(const QLocale &locale);
    ~ZBCollationKeys();
    ZBCollationKeys(const ZBCollationKeys &) = delete;
    ZBCollationKeys &operator=(const ZBCollationKeys &) = delete;

    // False when ICU has no collator for the locale. QCollator then calls
    // every text equal, which is no order to copy: sort another way.
    bool isValid() const { return m_collator != nullptr; }

    void reserve(qsizetype count);
    void append(QStringView text, quint32 tag);
    // Orders the keys; equal keys in no particular order. `stop` is asked
    // every few thousand comparisons: once it says true the sort is left
    // unfinished and this returns false.
    bool sort(const std::function<bool()> &stop);

    qsizetype size() const { return qsizetype(m_entries.size()); }
    quint32 tagAt(qsizetype i) const { return m_entries[size_t(i)].tag; }
    // Below, at or above zero as key i of `a` collates before, with or after
    // key j of `b`.
    static int compare(const ZBCollationKeys &a, qsizetype i, const ZBCollationKeys &b, qsizetype j);

private:
    struct Entry
    {
        // The key's first sixteen bytes, big-endian, zero after its end. An
        // ICU key has no zero byte but its last, so equal heads mean equal
        // keys or keys that both go on.
        quint64 head;
        quint64 next;
        // Where the bytes after the sixteenth start in m_tails, up to and
        // with the closing zero; 0, a lone zero, for a short key.
        quint32 tail;
        quint32 tag;
    };

    static int compareEntries(const Entry &a, const char *aTails, const Entry &b, const char *bTails);

    UCollator *m_collator = nullptr;
    std::vector<Entry> m_entries;
    std::vector<char> m_tails;
    std::vector<uint8_t> m_buffer;
};
