#include "predicate/zbvariantmapsubject.h"

#include <vector>

#include "predicate/zbtextfold.h"

namespace
{
constexpr int MaximumPathSegments = 64;

QVariant walk(const QVariant &current, const QList<QStringView> &segments, qsizetype index)
{
    if (index >= segments.size())
        return current;
    const int type = current.typeId();
    if (type == QMetaType::QVariantList)
    {
        const QVariantList elements = current.toList();
        QVariantList results;
        results.reserve(elements.size());
        for (const QVariant &element : elements)
        {
            const QVariant result = walk(element, segments, index);
            // A to-many step inside a to-many step flattens, as one list of
            // related values is what a quantifier expects.
            if (result.typeId() == QMetaType::QVariantList)
                results.append(result.toList());
            else if (result.isValid())
                results.append(result);
        }
        return results;
    }
    const QString key = segments[index].toString();
    if (type == QMetaType::QVariantHash)
        return walk(current.toHash().value(key), segments, index + 1);
    if (type == QMetaType::QVariantMap)
        return walk(current.toMap().value(key), segments, index + 1);
    return {};
}
} // namespace

ZBVariantMapSubject::ZBVariantMapSubject(const QVariantHash &values)
{
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        setValue(it.key(), it.value());
}

QVariantHash ZBVariantMapSubject::values() const
{
    QVariantHash values;
    for (const Entry &entry : m_entries)
        values.insert(entry.key, entry.value);
    return values;
}

quint32 ZBVariantMapSubject::fingerprint(const QString &key)
{
    // Cheap to compute and distinct for the attribute names in use; a clash
    // only costs a full comparison.
    if (key.isEmpty())
        return 0;
    return (quint32(key.size()) << 20) ^ (quint32(key.front().unicode()) << 10) ^ quint32(key.back().unicode());
}

size_t ZBVariantMapSubject::foldIndex(bool caseInsensitive, bool diacriticInsensitive)
{
    // Both flags first: that is what searches and smart lists ask for.
    if (caseInsensitive && diacriticInsensitive)
        return 0;
    if (caseInsensitive)
        return 1;
    return diacriticInsensitive ? 2 : 3;
}

const ZBVariantMapSubject::Entry *ZBVariantMapSubject::find(const QString &key) const
{
    const quint32 wanted = fingerprint(key);
    for (qsizetype i = 0; i < m_fingerprints.size(); ++i)
    {
        if (m_fingerprints[i] != wanted)
            continue;
        const Entry &entry = m_entries[i];
        if (entry.key == key)
            return &entry;
    }
    return nullptr;
}

QVariant ZBVariantMapSubject::value(const QString &key) const
{
    const Entry *entry = find(key);
    return entry ? entry->value : QVariant();
}

void ZBVariantMapSubject::rebuildFolds()
{
    std::vector<std::array<QString, 4>> folded(static_cast<size_t>(m_entries.size()));
    qsizetype total = 0;
    for (qsizetype i = 0; i < m_entries.size(); ++i)
    {
        const QVariant &value = m_entries[i].value;
        if (value.typeId() != QMetaType::QString)
            continue;
        const QString raw = value.toString();
        std::array<QString, 4> &texts = folded[static_cast<size_t>(i)];
        texts[foldIndex(false, false)] = raw;
        texts[foldIndex(true, false)] = ZBTextFold::fold(raw, true, false);
        texts[foldIndex(false, true)] = ZBTextFold::fold(raw, false, true);
        texts[foldIndex(true, true)] = ZBTextFold::fold(raw, true, true);
        for (const QString &text : texts)
            total += text.size();
    }

    QString arena;
    arena.reserve(total + 1);
    std::vector<std::array<qsizetype, 4>> offsets(folded.size());
    for (size_t variant = 0; variant < 4; ++variant)
    {
        for (size_t i = 0; i < folded.size(); ++i)
        {
            offsets[i][variant] = arena.size();
            arena += folded[i][variant];
        }
    }

    for (qsizetype i = 0; i < m_entries.size(); ++i)
    {
        Entry &entry = m_entries[i];
        const bool text = entry.value.typeId() == QMetaType::QString;
        for (size_t variant = 0; variant < 4; ++variant)
        {
            const std::array<QString, 4> &texts = folded[static_cast<size_t>(i)];
            // The views must read as present even when empty, so they always
            // point into the buffer.
            entry.folded[variant] =
                text ? QString::fromRawData(arena.constData() + offsets[static_cast<size_t>(i)][variant],
                                            texts[variant].size())
                     : QString();
        }
    }
    m_arena = arena;
}

void ZBVariantMapSubject::setValue(const QString &key, const QVariant &value)
{
    Entry *entry = const_cast<Entry *>(find(key));
    if (!entry)
    {
        m_entries.append(Entry());
        m_fingerprints.append(fingerprint(key));
        entry = &m_entries.back();
        entry->key = key;
    }
    entry->value = value;
    if (m_cacheFolds)
        rebuildFolds();
}

void ZBVariantMapSubject::removeValue(const QString &key)
{
    for (qsizetype i = 0; i < m_entries.size(); ++i)
    {
        if (m_entries[i].key == key)
        {
            m_entries.remove(i);
            m_fingerprints.remove(i);
            if (m_cacheFolds)
                rebuildFolds();
            return;
        }
    }
}

void ZBVariantMapSubject::cacheFoldedValues()
{
    m_cacheFolds = true;
    rebuildFolds();
}

QVariant ZBVariantMapSubject::valueForKeyPath(const QString &keyPath) const
{
    if (!keyPath.contains(u'.'))
        return value(keyPath);
    const qsizetype dot = keyPath.indexOf(u'.');
    const Entry *entry = find(keyPath.left(dot));
    if (!entry)
        return {};
    return valueForKeyPath(entry->value, QStringView(keyPath).mid(dot + 1));
}

QVariant ZBVariantMapSubject::valueForKeyPath(const QVariant &root, QStringView keyPath)
{
    const QList<QStringView> segments = keyPath.split(u'.');
    if (segments.size() > MaximumPathSegments)
        return {};
    return walk(root, segments, 0);
}

QString ZBVariantMapSubject::foldedValueForKey(const QString &key, bool caseInsensitive,
                                               bool diacriticInsensitive) const
{
    if (m_cacheFolds)
    {
        const Entry *entry = find(key);
        if (!entry)
            return {};
        // A copy of its own: the cached text is a view into this subject.
        const QString &view = entry->folded[foldIndex(caseInsensitive, diacriticInsensitive)];
        return view.isNull() ? QString() : QString(view.constData(), view.size());
    }
    return ZBPredicateSubject::foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
}

const QString *ZBVariantMapSubject::cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                                            bool diacriticInsensitive) const
{
    if (!m_cacheFolds)
        return nullptr;
    const Entry *entry = find(key);
    if (!entry)
        return nullptr;
    const QString &folded = entry->folded[foldIndex(caseInsensitive, diacriticInsensitive)];
    return folded.isNull() ? nullptr : &folded;
}

void ZBVariantMapSubject::prefetch() const
{
#if defined(__GNUC__) || defined(__clang__)
    // The fingerprints and the first entries, then the start of the folded
    // texts, where the case- and diacritic-folded ones are. Measured over
    // 100,000 records: more lines cost more bandwidth than they save.
    const char *object = reinterpret_cast<const char *>(this);
    for (size_t offset = 0; offset < sizeof(*this) && offset < 6 * 64; offset += 64)
        __builtin_prefetch(object + offset);
    if (m_cacheFolds && !m_arena.isEmpty())
    {
        const char *texts = reinterpret_cast<const char *>(m_arena.constData());
        __builtin_prefetch(texts);
        __builtin_prefetch(texts + 64);
    }
#endif
}
