#include "util/zbcollationkeys.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace
{
constexpr size_t HeadBytes = 16;

struct Stopped
{
};

quint64 bigEndian(const uint8_t *bytes, size_t available)
{
    quint64 value = 0;
    for (size_t i = 0; i < 8; ++i)
        value = (value << 8) | (i < available ? bytes[i] : 0);
    return value;
}
} // namespace

ZBCollationKeys::ZBCollationKeys(const QLocale &locale)
    : m_tails(1, '\0')
    , m_buffer(256)
{
    // QCollator opens its collator by this name and sets these four
    // attributes, whatever the locale's own defaults; so must we, or the two
    // orders part (some locales shift punctuation by default).
    const QByteArray name = locale.bcp47Name().replace(u'-', u'_').toLatin1();
    UErrorCode status = U_ZERO_ERROR;
    m_collator = ucol_open(name.constData(), &status);
    if (U_FAILURE(status))
    {
        m_collator = nullptr;
        return;
    }
    ucol_setAttribute(m_collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    ucol_setAttribute(m_collator, UCOL_STRENGTH, UCOL_SECONDARY, &status);
    ucol_setAttribute(m_collator, UCOL_NUMERIC_COLLATION, UCOL_OFF, &status);
    ucol_setAttribute(m_collator, UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &status);
    if (U_FAILURE(status))
    {
        ucol_close(m_collator);
        m_collator = nullptr;
    }
}

ZBCollationKeys::~ZBCollationKeys()
{
    if (m_collator)
        ucol_close(m_collator);
}

void ZBCollationKeys::reserve(qsizetype count)
{
    m_entries.reserve(size_t(count));
    // Names of a few words: about eight bytes of key past the head each.
    m_tails.reserve(size_t(count) * 8);
}

void ZBCollationKeys::append(QStringView text, quint32 tag)
{
    Q_ASSERT(m_collator);
    const auto *chars = reinterpret_cast<const UChar *>(text.utf16());
    const auto length = int32_t(std::min<qsizetype>(text.size(), std::numeric_limits<int32_t>::max()));
    int32_t size = ucol_getSortKey(m_collator, chars, length, m_buffer.data(), int32_t(m_buffer.size()));
    if (size > int32_t(m_buffer.size()))
    {
        m_buffer.resize(size_t(size));
        size = ucol_getSortKey(m_collator, chars, length, m_buffer.data(), size);
    }
    // The size counts the closing zero.
    const size_t bytes = size_t(std::max(size, 0));
    Entry entry{bigEndian(m_buffer.data(), bytes), bytes > 8 ? bigEndian(m_buffer.data() + 8, bytes - 8) : 0, 0, tag};
    if (bytes > HeadBytes)
    {
        entry.tail = quint32(m_tails.size());
        m_tails.insert(m_tails.end(), m_buffer.begin() + HeadBytes, m_buffer.begin() + qsizetype(bytes));
    }
    m_entries.push_back(entry);
}

int ZBCollationKeys::compareEntries(const Entry &a, const char *aTails, const Entry &b, const char *bTails)
{
    if (a.head != b.head)
        return a.head < b.head ? -1 : 1;
    if (a.next != b.next)
        return a.next < b.next ? -1 : 1;
    return std::strcmp(aTails + a.tail, bTails + b.tail);
}

bool ZBCollationKeys::sort(const std::function<bool()> &stop)
{
    // Only a throw leaves std::sort halfway.
    const char *tails = m_tails.data();
    quint32 compared = 0;
    try
    {
        std::sort(m_entries.begin(), m_entries.end(), [&](const Entry &a, const Entry &b) {
            if ((++compared & 4095) == 0 && stop && stop())
                throw Stopped();
            return compareEntries(a, tails, b, tails) < 0;
        });
    }
    catch (const Stopped &)
    {
        return false;
    }
    return true;
}

int ZBCollationKeys::compare(const ZBCollationKeys &a, qsizetype i, const ZBCollationKeys &b, qsizetype j)
{
    return compareEntries(a.m_entries[size_t(i)], a.m_tails.data(), b.m_entries[size_t(j)], b.m_tails.data());
}
