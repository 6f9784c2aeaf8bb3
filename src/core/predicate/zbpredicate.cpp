#include "predicate/zbpredicate.h"

#include <cmath>

#include <QDateTime>

#include "predicate/zbpredicateevaluator.h"
#include "predicate/zbpredicateparser.h"

namespace
{
// 2001-01-01 00:00:00 UTC in milliseconds since the Unix epoch.
constexpr qint64 ReferenceMSecs = Q_INT64_C(978307200000);
// About 3,170 years either way: far beyond any real date, and small enough
// that a double still carries the milliseconds exactly.
constexpr double MaximumSeconds = 1e11;
} // namespace

ZBPredicate ZBPredicate::parse(const QString &text)
{
    ZBPredicate predicate;
    predicate.m_text = text;
    ZBPredicateParser parser(text);
    std::unique_ptr<ZBPredicateNode> root = parser.parse();
    if (!root)
    {
        predicate.m_error = parser.errorString();
        predicate.m_errorPosition = parser.errorPosition();
        return predicate;
    }
    predicate.m_root = std::move(root);
    return predicate;
}

bool ZBPredicate::evaluate(const ZBPredicateSubject &subject) const
{
    if (!m_root)
        return false;
    return ZBPredicateEvaluator::evaluate(*m_root, subject);
}

QDateTime ZBPredicate::referenceDate()
{
    return QDateTime::fromMSecsSinceEpoch(ReferenceMSecs, Qt::UTC);
}

QDateTime ZBPredicate::dateFromReferenceSeconds(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > MaximumSeconds)
        return {};
    return QDateTime::fromMSecsSinceEpoch(ReferenceMSecs + qRound64(seconds * 1000.0), Qt::UTC);
}

double ZBPredicate::referenceSecondsFromDate(const QDateTime &date)
{
    return static_cast<double>(date.toMSecsSinceEpoch() - ReferenceMSecs) / 1000.0;
}

QString ZBPredicate::dateLiteral(const QDateTime &date)
{
    return QString::asprintf("CAST(%f, 'NSDate')", referenceSecondsFromDate(date));
}
