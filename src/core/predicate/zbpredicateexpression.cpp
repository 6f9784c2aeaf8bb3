#include "predicate/zbpredicateexpression.h"

#include <QDateTime>

#include "predicate/zbpredicate.h"
#include "predicate/zbpredicatelexer.h"
#include "predicate/zbpredicatesubject.h"

ZBPredicateExpression ZBPredicateExpression::keyPath(const QString &path, qsizetype sourceStart, qsizetype sourceLength)
{
    ZBPredicateExpression expression;
    expression.m_kind = Kind::KeyPath;
    expression.m_keyPath = path;
    expression.m_plainKey = !path.contains(u'.');
    expression.m_sourceStart = sourceStart;
    expression.m_sourceLength = sourceLength;
    return expression;
}

ZBPredicateExpression ZBPredicateExpression::constant(const QVariant &value, qsizetype sourceStart,
                                                      qsizetype sourceLength)
{
    ZBPredicateExpression expression;
    expression.m_kind = Kind::Constant;
    expression.m_value = value;
    expression.m_sourceStart = sourceStart;
    expression.m_sourceLength = sourceLength;
    return expression;
}

QVariant ZBPredicateExpression::evaluate(const ZBPredicateSubject &subject) const
{
    if (m_kind == Kind::KeyPath)
        return subject.valueForKeyPath(m_keyPath);
    return m_value;
}

QString ZBPredicateExpression::description() const
{
    if (m_kind == Kind::KeyPath)
    {
        // A key spelled like a reserved word needs its escape to read back.
        if (m_plainKey && ZBPredicateLexer::isReservedWord(m_keyPath.toUpper()))
            return u'#' + m_keyPath;
        return m_keyPath;
    }
    if (!m_value.isValid())
        return QStringLiteral("NIL");
    switch (m_value.typeId())
    {
        case QMetaType::Bool:
            return m_value.toBool() ? QStringLiteral("YES") : QStringLiteral("NO");
        case QMetaType::LongLong:
        case QMetaType::Int:
            return QString::number(m_value.toLongLong());
        case QMetaType::Double:
        {
            // Written so that it reads back as a real, not as an integer.
            QString number = QString::number(m_value.toDouble(), 'g', QLocale::FloatingPointShortest);
            if (!number.contains(u'.') && !number.contains(u'e'))
                number += QLatin1String(".0");
            return number;
        }
        case QMetaType::QDateTime:
            return ZBPredicate::dateLiteral(m_value.toDateTime());
        default:
            break;
    }
    QString text = m_value.toString();
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'\'', QStringLiteral("\\'"));
    return u'\'' + text + u'\'';
}
