#pragma once

#include <memory>

#include <QList>
#include <QString>

#include "predicate/zbpredicatenode.h"
#include "predicate/zbpredicatesubject.h"

class QDateTime;

// A parsed filter text in the store's predicate syntax (the subset used by the
// standard lists, the smart-list rules and the track search). Parsing never
// throws; a text that does not parse gives an invalid predicate that matches
// nothing and carries the reason.
//
// A ZBPredicate is cheap to copy (copies share the tree) and may be evaluated
// from several threads at once.
class ZBPredicate
{
public:
    ZBPredicate() = default;

    static ZBPredicate parse(const QString &text);

    bool isValid() const { return m_root != nullptr; }
    QString errorString() const { return m_error; }
    // 0-based offset of the parse error in text(), -1 when valid. The message
    // counts positions from 1.
    qsizetype errorPosition() const { return m_errorPosition; }
    QString text() const { return m_text; }

    // False for an invalid predicate.
    bool evaluate(const ZBPredicateSubject &subject) const;

    // The subjects that match, in their order; none for an invalid predicate.
    // Over a whole library the time goes to loading each subject's values
    // from memory, so each subject is asked to prefetch() a few places ahead.
    template <typename Subject>
    QList<Subject *> filter(const QList<Subject *> &subjects) const;

    // The syntax tree, for readers that turn a text back into rule rows.
    const ZBPredicateNode *root() const { return m_root.get(); }

    // Stored texts write dates as seconds since 2001-01-01 00:00:00 UTC.
    static QDateTime referenceDate();
    // UTC; invalid when the seconds are not finite or beyond +-10^11.
    static QDateTime dateFromReferenceSeconds(double seconds);
    static double referenceSecondsFromDate(const QDateTime &date);
    // "CAST(752000000.000000, 'NSDate')": the seconds with six decimals, the
    // way stored requests write a date.
    static QString dateLiteral(const QDateTime &date);

private:
    static constexpr qsizetype PrefetchDistance = 8;

    std::shared_ptr<const ZBPredicateNode> m_root;
    QString m_text;
    QString m_error;
    qsizetype m_errorPosition = -1;
};

template <typename Subject>
QList<Subject *> ZBPredicate::filter(const QList<Subject *> &subjects) const
{
    QList<Subject *> matches;
    if (!m_root)
        return matches;
    const qsizetype count = subjects.size();
    for (qsizetype i = 0; i < count; ++i)
    {
        // Two stages: the subject's own memory first (its address is known
        // without touching it), then, once that has arrived, what it points
        // to; calling prefetch() on a subject not yet loaded would stall on
        // its vtable instead.
        if (i + 2 * PrefetchDistance < count)
            __builtin_prefetch(subjects[i + 2 * PrefetchDistance]);
        if (i + PrefetchDistance < count)
            static_cast<const ZBPredicateSubject *>(subjects[i + PrefetchDistance])->prefetch();
        if (evaluate(*subjects[i]))
            matches.append(subjects[i]);
    }
    return matches;
}
