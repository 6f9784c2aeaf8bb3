#pragma once

#include <QString>
#include <QVariant>

class ZBPredicateSubject;

// One side of a comparison: a key path read from the subject, or a constant
// written in the text. Constants keep where they were written so that a reader
// can recover a value exactly as typed (the smart-list rules keep numbers that
// way).
class ZBPredicateExpression
{
public:
    enum class Kind
    {
        KeyPath,
        Constant
    };

    ZBPredicateExpression() = default;

    static ZBPredicateExpression keyPath(const QString &path, qsizetype sourceStart, qsizetype sourceLength);
    // value: QString, qlonglong, double, bool, QDateTime (from CAST), or an
    // invalid QVariant for NIL.
    static ZBPredicateExpression constant(const QVariant &value, qsizetype sourceStart, qsizetype sourceLength);

    Kind kind() const { return m_kind; }
    bool isKeyPath() const { return m_kind == Kind::KeyPath; }
    bool isConstant() const { return m_kind == Kind::Constant; }

    const QString &keyPath() const { return m_keyPath; }
    // A key without dots: the subject can answer it from its folded-text cache.
    bool isPlainKey() const { return m_plainKey; }

    const QVariant &constantValue() const { return m_value; }
    bool isNil() const { return m_kind == Kind::Constant && !m_value.isValid(); }

    // Position (0-based, in UTF-16 units) and length of the expression in the
    // parsed text.
    qsizetype sourceStart() const { return m_sourceStart; }
    qsizetype sourceLength() const { return m_sourceLength; }

    QVariant evaluate(const ZBPredicateSubject &subject) const;

    // The expression in the predicate syntax, for diagnostics.
    QString description() const;

private:
    Kind m_kind = Kind::Constant;
    QString m_keyPath;
    bool m_plainKey = false;
    QVariant m_value;
    qsizetype m_sourceStart = 0;
    qsizetype m_sourceLength = 0;
};
