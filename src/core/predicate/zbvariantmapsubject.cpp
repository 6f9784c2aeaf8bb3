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
    m_entries.reserve(static_cast<size_t>(values.size()));
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

const ZBVariantMapSubject::Entry *ZBVariantMapSubject::find(const QString &key) const
{
    for (const Entry &entry : m_entries)
    {
        if (entry.key.size() == key.size() && entry.key == key)
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
    entry.hasFolded = entry.value.typeId() == QMetaType::QString;
    if (!entry.hasFolded)
    {
        entry.folded = {};
        return;
    }
    // The raw text must read as present even when empty.
    const QString text = entry.value.toString();
    const QString raw = text.isNull() ? QStringLiteral("") : text;
    entry.folded[0] = raw;
    entry.folded[1] = ZBTextFold::fold(raw, true, false);
    entry.folded[2] = ZBTextFold::fold(raw, false, true);
    entry.folded[3] = ZBTextFold::fold(raw, true, true);
}

void ZBVariantMapSubject::setValue(const QString &key, const QVariant &value)
{
    Entry *entry = const_cast<Entry *>(find(key));
    if (!entry)
    {
        m_entries.push_back(Entry());
        entry = &m_entries.back();
        entry->key = key;
    }
    entry->value = value;
    if (m_cacheFolds)
        fold(*entry);
}

void ZBVariantMapSubject::removeValue(const QString &key)
{
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it)
    {
        if (it->key == key)
        {
            m_entries.erase(it);
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
        if (!entry || !entry->hasFolded)
            return {};
        return entry->folded[static_cast<size_t>((caseInsensitive ? 1 : 0) | (diacriticInsensitive ? 2 : 0))];
    }
    return ZBPredicateSubject::foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
}
