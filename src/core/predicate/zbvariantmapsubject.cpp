#include "predicate/zbvariantmapsubject.h"

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

void ZBVariantMapSubject::fold(Entry &entry)
{
    if (entry.value.typeId() != QMetaType::QString)
    {
        entry.folded = {};
        return;
    }
    // The raw text must read as present even when empty.
    const QString text = entry.value.toString();
    const QString raw = text.isNull() ? QStringLiteral("") : text;
    entry.folded[foldIndex(false, false)] = raw;
    entry.folded[foldIndex(true, false)] = ZBTextFold::fold(raw, true, false);
    entry.folded[foldIndex(false, true)] = ZBTextFold::fold(raw, false, true);
    entry.folded[foldIndex(true, true)] = ZBTextFold::fold(raw, true, true);
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
        fold(*entry);
}

void ZBVariantMapSubject::removeValue(const QString &key)
{
    for (qsizetype i = 0; i < m_entries.size(); ++i)
    {
        if (m_entries[i].key == key)
        {
            m_entries.remove(i);
            m_fingerprints.remove(i);
            return;
        }
    }
}

void ZBVariantMapSubject::cacheFoldedValues()
{
    m_cacheFolds = true;
    for (Entry &entry : m_entries)
        fold(entry);
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
        return entry->folded[foldIndex(caseInsensitive, diacriticInsensitive)];
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
