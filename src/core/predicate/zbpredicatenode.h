#pragma once

#include <memory>
#include <vector>

#include <QRegularExpression>
#include <QString>

#include "predicate/zbpredicateexpression.h"

// A node of a parsed filter text. Trees are built once by the parser and then
// only read, from any thread: everything a comparison needs per evaluation
// that depends on the text alone (the folded pattern, the compiled regular
// expression) is prepared when the node is made.
class ZBPredicateNode
{
public:
    enum class Type
    {
        TruePredicate,
        FalsePredicate,
        And, // n-ary: a chain "a AND b AND c" is one node with three children
        Or,  // likewise
        Not,
        Comparison
    };

    enum class Operator
    {
        Equal,
        NotEqual,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Like,
        Contains,
        BeginsWith,
        EndsWith,
        Matches
    };

    // How a to-many left side is reduced to one answer. A list compared
    // without a quantifier behaves as Any.
    enum class Quantifier
    {
        None,
        Any,
        All,
        NoneOf
    };

    ZBPredicateNode(const ZBPredicateNode &) = delete;
    ZBPredicateNode &operator=(const ZBPredicateNode &) = delete;

    static std::unique_ptr<ZBPredicateNode> makeConstant(bool value);
    static std::unique_ptr<ZBPredicateNode> makeCompound(Type type,
                                                         std::vector<std::unique_ptr<ZBPredicateNode>> children);
    static std::unique_ptr<ZBPredicateNode> makeNot(std::unique_ptr<ZBPredicateNode> child);
    static std::unique_ptr<ZBPredicateNode> makeComparison(Quantifier quantifier, const ZBPredicateExpression &left,
                                                           Operator op, bool caseInsensitive, bool diacriticInsensitive,
                                                           const ZBPredicateExpression &right);

    Type type() const { return m_type; }

    // Children of And, Or (two or more) and Not (one).
    qsizetype childCount() const { return static_cast<qsizetype>(m_children.size()); }
    const ZBPredicateNode *child(qsizetype index) const { return m_children[static_cast<size_t>(index)].get(); }

    // Comparison nodes only.
    Quantifier quantifier() const { return m_quantifier; }
    Operator comparisonOperator() const { return m_operator; }
    bool caseInsensitive() const { return m_caseInsensitive; }
    bool diacriticInsensitive() const { return m_diacriticInsensitive; }
    const ZBPredicateExpression &left() const { return m_left; }
    const ZBPredicateExpression &right() const { return m_right; }

    static bool isStringOperator(Operator op);
    static QString operatorText(Operator op);

    // Prepared when the right side is a text constant: the text folded with
    // the node's flags (for MATCHES only the diacritics are folded; case is
    // left to the expression's own option).
    bool hasPreparedPattern() const { return m_preparedPattern; }
    const QString &foldedPattern() const { return m_foldedPattern; }
    bool patternMatchesEverything() const { return m_patternIsStar; }
    bool patternHasWildcards() const { return m_patternHasWildcards; }
    // Anchored to the whole value. Invalid patterns match nothing.
    const QRegularExpression &regularExpression() const { return m_regex; }

    // Whether the comparison of a plain key with a text constant can be
    // answered from the subject's folded text without building QVariants.
    bool usesFoldedFastPath() const { return m_fastPath; }

    // The node in the predicate syntax, fully parenthesised, for diagnostics
    // and tests.
    QString description() const;

    // Builds the regular expression MATCHES uses for a pattern; also used for
    // patterns that come from the subject rather than the text.
    static QRegularExpression compileMatches(const QString &foldedPattern, bool caseInsensitive);

private:
    explicit ZBPredicateNode(Type type);

    Type m_type;
    std::vector<std::unique_ptr<ZBPredicateNode>> m_children;
    Quantifier m_quantifier = Quantifier::None;
    Operator m_operator = Operator::Equal;
    bool m_caseInsensitive = false;
    bool m_diacriticInsensitive = false;
    ZBPredicateExpression m_left;
    ZBPredicateExpression m_right;

    bool m_preparedPattern = false;
    bool m_patternIsStar = false;
    bool m_patternHasWildcards = false;
    bool m_fastPath = false;
    QString m_foldedPattern;
    QRegularExpression m_regex;
};
