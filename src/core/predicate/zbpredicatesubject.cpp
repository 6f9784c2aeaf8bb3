#include "predicate/zbpredicatesubject.h"

#include "predicate/zbtextfold.h"

QString ZBPredicateSubject::foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const
{
    // Only text answers here: a number or a date must keep comparing as a
    // number or a date, which the evaluator's general path does.
    const QVariant value = valueForKeyPath(key);
    if (value.typeId() != QMetaType::QString)
        return {};
    const QString text = value.toString();
    if (text.isNull())
        return {};
    return ZBTextFold::fold(text, caseInsensitive, diacriticInsensitive);
}

const QString *ZBPredicateSubject::cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                                           bool diacriticInsensitive) const
{
    Q_UNUSED(key);
    Q_UNUSED(caseInsensitive);
    Q_UNUSED(diacriticInsensitive);
    return nullptr;
}

void ZBPredicateSubject::prefetch() const {}
