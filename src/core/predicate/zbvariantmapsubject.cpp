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
    : m_values(values)
{
}

void ZBVariantMapSubject::setValue(const QString &key, const QVariant &value)
{
    m_values.insert(key, value);
    if (!m_cacheFolds)
        return;
    if (value.typeId() == QMetaType::QString)
        m_folded.insert(key, foldAll(value.toString()));
    else
        m_folded.remove(key);
}

void ZBVariantMapSubject::removeValue(const QString &key)
{
    m_values.remove(key);
    m_folded.remove(key);
}

ZBVariantMapSubject::FoldedTexts ZBVariantMapSubject::foldAll(const QString &text)
{
    // The raw text must read as present even when empty.
    const QString raw = text.isNull() ? QStringLiteral("") : text;
    FoldedTexts texts;
    texts[0] = raw;
    texts[1] = ZBTextFold::fold(raw, true, false);
    texts[2] = ZBTextFold::fold(raw, false, true);
    texts[3] = ZBTextFold::fold(raw, true, true);
    return texts;
}

void ZBVariantMapSubject::cacheFoldedValues()
{
    m_cacheFolds = true;
    m_folded.clear();
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
    {
        if (it.value().typeId() == QMetaType::QString)
            m_folded.insert(it.key(), foldAll(it.value().toString()));
    }
}

QVariant ZBVariantMapSubject::valueForKeyPath(const QString &keyPath) const
{
    if (!keyPath.contains(u'.'))
        return m_values.value(keyPath);
    return valueForKeyPath(QVariant(m_values), keyPath);
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
        const auto it = m_folded.constFind(key);
        if (it == m_folded.cend())
            return {};
        return (*it)[(caseInsensitive ? 1 : 0) | (diacriticInsensitive ? 2 : 0)];
    }
    return ZBPredicateSubject::foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
}
