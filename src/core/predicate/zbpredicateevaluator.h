#pragma once

#include <QVariant>

class ZBPredicateNode;
class ZBPredicateSubject;

// Answers a parsed tree for one subject.
//
// Comparison rules:
// - Dates compare with dates; a date against a number compares the date's
//   seconds since 2001-01-01 00:00:00 UTC. Numbers compare numerically, a
//   boolean counting as 0 or 1. Text compares by UTF-16 code units after
//   folding for [c] and [d]; text against a number compares numerically when
//   the text is a number.
// - An absent value (or NIL) equals only NIL; ordering with it is false, and
//   "!=" is always the negation of "==".
// - The string operators are false for an absent value. An empty pattern is
//   contained in, begins and ends every present text.
// - A list on the left side is reduced by the node's quantifier (ANY when none
//   was written); ALL and NONE are true for an empty or absent list.
class ZBPredicateEvaluator
{
public:
    enum class Order
    {
        Less,
        Equal,
        Greater,
        Unordered
    };

    static bool evaluate(const ZBPredicateNode &node, const ZBPredicateSubject &subject);

    // The comparison used by ==, !=, <, <=, > and >=.
    static Order compare(const QVariant &left, const QVariant &right, bool caseInsensitive, bool diacriticInsensitive);
    // Whether an order satisfies one of those operators (the operator as
    // ZBPredicateNode::Operator); false for any other operator.
    static bool satisfies(int comparisonOperator, Order order);

    // A comparison node whose right side is a prepared text constant, answered
    // for a present value already folded with the node's flags. Compiled
    // filters call it so that they match text exactly as evaluate() does.
    static bool matchText(const ZBPredicateNode &node, const QString &foldedValue);

private:
    struct Context;

    static bool evaluateNode(const ZBPredicateNode &node, Context &context);
    static bool evaluateComparison(const ZBPredicateNode &node, Context &context);
    static bool compareOne(const ZBPredicateNode &node, const QVariant &left, const QVariant &right);
    static bool matchTextDynamic(const ZBPredicateNode &node, const QString &foldedValue, const QString &foldedPattern);
};
