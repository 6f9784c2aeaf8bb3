#include "predicate/zbpredicatesubject.h"

#include "predicate/zbtextfold.h"

QString ZBPredicateSubject::foldedValueForKey(const QString &key, bool caseInsensitive,
                                              bool diacriticInsensitive) const
{
    const QVariant value = valueForKeyPath(key);
    if (!value.isValid())
        return {};
    const int type = value.typeId();
    if (type == QMetaType::QVariantList || type == QMetaType::QStringList)
        return {};
    const QString text = value.toString();
    if (text.isNull())
        return {};
    return ZBTextFold::fold(text, caseInsensitive, diacriticInsensitive);
}
