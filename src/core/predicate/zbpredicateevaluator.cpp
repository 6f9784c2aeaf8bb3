#include "predicate/zbpredicateevaluator.h"

#include <string_view>

#include <QDateTime>
#include <QStringList>
#include <QVarLengthArray>

#include "predicate/zbpredicate.h"
#include "predicate/zbpredicatenode.h"
#include "predicate/zbpredicatesubject.h"
#include "predicate/zbtextfold.h"

// Per-evaluation state. The standard lists test the same key several times
// ("!(Type contains[cd] 'SWF') AND !(Type contains[cd] 'EXE') ..."), so the
// folded text of a key is asked from the subject once per evaluation.
struct ZBPredicateEvaluator::Context
{
    struct Entry
    {
        const QString *key;
        int flags;
        const QString *value; // into the subject, or to owned
        QString owned;
    };

    explicit Context(const ZBPredicateSubject &s)
        : subject(s)
    {
    }

    const QString &folded(const QString &key, bool caseInsensitive, bool diacriticInsensitive)
    {
        const int flags = (caseInsensitive ? 1 : 0) | (diacriticInsensitive ? 2 : 0);
        for (Entry &entry : entries)
        {
            if (entry.flags == flags && (entry.key == &key || *entry.key == key))
                return *entry.value;
        }
        Entry *entry = nullptr;
        if (entries.size() < Size)
        {
            entries.append(Entry{&key, flags, nullptr, QString()});
            entry = &entries.back();
        }
        else
        {
            // Beyond the cache's size the oldest slot is reused; correctness
            // never depends on a hit.
            entry = &entries[next];
            next = (next + 1) % Size;
            entry->key = &key;
            entry->flags = flags;
        }
        entry->value = subject.cachedFoldedValueForKey(key, caseInsensitive, diacriticInsensitive);
        if (!entry->value)
        {
            entry->owned = subject.foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
            entry->value = &entry->owned;
        }
        return *entry->value;
    }

    static constexpr qsizetype Size = 4;
    const ZBPredicateSubject &subject;
    // Filled on demand: most texts ask for one or two keys. Entries never
    // move once appended, since the array does not outgrow its inline size.
    QVarLengthArray<Entry, Size> entries;
    qsizetype next = 0;
};

namespace
{
bool isList(const QVariant &value)
{
    const int type = value.typeId();
    return type == QMetaType::QVariantList || type == QMetaType::QStringList;
}

QVariantList listElements(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList)
    {
        QVariantList elements;
        const QStringList strings = value.toStringList();
        elements.reserve(strings.size());
        for (const QString &s : strings)
            elements.append(s);
        return elements;
    }
    return value.toList();
}

bool isNumber(int type)
{
    switch (type)
    {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Double:
        case QMetaType::Float:
            return true;
        default:
            return false;
    }
}

bool isReal(int type)
{
    return type == QMetaType::Double || type == QMetaType::Float;
}

bool isText(int type)
{
    return type == QMetaType::QString || type == QMetaType::QByteArray || type == QMetaType::QChar;
}

bool isDate(int type)
{
    return type == QMetaType::QDateTime || type == QMetaType::QDate;
}

qint64 dateMSecs(const QVariant &value)
{
    if (value.typeId() == QMetaType::QDate)
        return value.toDate().startOfDay().toMSecsSinceEpoch();
    // Read in place: every track's date passes here when a list filters by it.
    return static_cast<const QDateTime *>(value.constData())->toMSecsSinceEpoch();
}

template <typename T>
ZBPredicateEvaluator::Order orderOf(T a, T b)
{
    if (a < b)
        return ZBPredicateEvaluator::Order::Less;
    if (b < a)
        return ZBPredicateEvaluator::Order::Greater;
    if (a == b)
        return ZBPredicateEvaluator::Order::Equal;
    return ZBPredicateEvaluator::Order::Unordered; // NaN
}

// Substring test on folded texts. Library values are short, where the
// standard library's inlined search beats the general one's set-up cost.
bool contains(const QString &haystack, const QString &needle)
{
    const std::u16string_view h(reinterpret_cast<const char16_t *>(haystack.constData()),
                                static_cast<size_t>(haystack.size()));
    const std::u16string_view n(reinterpret_cast<const char16_t *>(needle.constData()),
                                static_cast<size_t>(needle.size()));
    return h.find(n) != std::u16string_view::npos;
}

ZBPredicateEvaluator::Order compareNumbers(const QVariant &a, const QVariant &b)
{
    if (!isReal(a.typeId()) && !isReal(b.typeId()))
        return orderOf(a.toLongLong(), b.toLongLong());
    return orderOf(a.toDouble(), b.toDouble());
}

ZBPredicateEvaluator::Order compareTextWithNumber(const QVariant &text, const QVariant &number, bool textOnLeft)
{
    bool ok = false;
    const double value = text.toString().trimmed().toDouble(&ok);
    if (!ok)
        return ZBPredicateEvaluator::Order::Unordered;
    return textOnLeft ? orderOf(value, number.toDouble()) : orderOf(number.toDouble(), value);
}
} // namespace

bool ZBPredicateEvaluator::evaluate(const ZBPredicateNode &node, const ZBPredicateSubject &subject)
{
    Context context(subject);
    return evaluateNode(node, context);
}

bool ZBPredicateEvaluator::evaluateNode(const ZBPredicateNode &node, Context &context)
{
    switch (node.type())
    {
        case ZBPredicateNode::Type::TruePredicate:
            return true;
        case ZBPredicateNode::Type::FalsePredicate:
            return false;
        case ZBPredicateNode::Type::And:
            for (qsizetype i = 0; i < node.childCount(); ++i)
            {
                if (!evaluateNode(*node.child(i), context))
                    return false;
            }
            return true;
        case ZBPredicateNode::Type::Or:
            for (qsizetype i = 0; i < node.childCount(); ++i)
            {
                if (evaluateNode(*node.child(i), context))
                    return true;
            }
            return false;
        case ZBPredicateNode::Type::Not:
            return !evaluateNode(*node.child(0), context);
        case ZBPredicateNode::Type::Comparison:
            return evaluateComparison(node, context);
    }
    return false;
}

bool ZBPredicateEvaluator::evaluateComparison(const ZBPredicateNode &node, Context &context)
{
    if (node.usesFoldedFastPath())
    {
        const QString &folded =
            context.folded(node.left().keyPath(), node.caseInsensitive(), node.diacriticInsensitive());
        if (!folded.isNull())
            return matchText(node, folded);
        // Absent, a list or not kept as text: the general path sorts it out.
    }

    const ZBPredicateSubject &subject = context.subject;
    const QVariant leftValue = node.left().evaluate(subject);
    QVariant rightStorage;
    const QVariant *rightValue = &node.right().constantValue();
    if (!node.right().isConstant())
    {
        rightStorage = node.right().evaluate(subject);
        rightValue = &rightStorage;
    }

    ZBPredicateNode::Quantifier quantifier = node.quantifier();
    const bool leftIsList = isList(leftValue);
    if (quantifier == ZBPredicateNode::Quantifier::None)
    {
        if (!leftIsList)
            return compareOne(node, leftValue, *rightValue);
        quantifier = ZBPredicateNode::Quantifier::Any;
    }

    QVariantList elements;
    if (leftIsList)
        elements = listElements(leftValue);
    else if (leftValue.isValid())
        elements.append(leftValue);

    for (const QVariant &element : std::as_const(elements))
    {
        const bool match = compareOne(node, element, *rightValue);
        if (match && quantifier != ZBPredicateNode::Quantifier::All)
            return quantifier == ZBPredicateNode::Quantifier::Any;
        if (!match && quantifier == ZBPredicateNode::Quantifier::All)
            return false;
    }
    return quantifier != ZBPredicateNode::Quantifier::Any;
}

bool ZBPredicateEvaluator::compareOne(const ZBPredicateNode &node, const QVariant &left, const QVariant &right)
{
    using Op = ZBPredicateNode::Operator;
    const Op op = node.comparisonOperator();
    const bool c = node.caseInsensitive();
    const bool d = node.diacriticInsensitive();

    if (ZBPredicateNode::isStringOperator(op))
    {
        if (!left.isValid() || !right.isValid() || isList(left) || isList(right))
            return false;
        const QString value = left.toString();
        if (value.isNull() && !isText(left.typeId()))
            return false;
        const QString foldedValue = ZBTextFold::fold(value, c, d);
        if (node.hasPreparedPattern())
            return matchText(node, foldedValue);
        const QString pattern = right.toString();
        if (pattern.isNull() && !isText(right.typeId()))
            return false;
        return matchTextDynamic(node, foldedValue, ZBTextFold::fold(pattern, op == Op::Matches ? false : c, d));
    }

    return satisfies(int(op), compare(left, right, c, d));
}

bool ZBPredicateEvaluator::satisfies(int comparisonOperator, Order order)
{
    using Op = ZBPredicateNode::Operator;
    switch (Op(comparisonOperator))
    {
        case Op::Equal:
            return order == Order::Equal;
        case Op::NotEqual:
            return order != Order::Equal;
        case Op::Less:
            return order == Order::Less;
        case Op::LessOrEqual:
            return order == Order::Less || order == Order::Equal;
        case Op::Greater:
            return order == Order::Greater;
        case Op::GreaterOrEqual:
            return order == Order::Greater || order == Order::Equal;
        default:
            return false;
    }
}

bool ZBPredicateEvaluator::matchText(const ZBPredicateNode &node, const QString &foldedValue)
{
    const QString &pattern = node.foldedPattern();
    switch (node.comparisonOperator())
    {
        case ZBPredicateNode::Operator::Equal:
            return foldedValue == pattern;
        case ZBPredicateNode::Operator::NotEqual:
            return foldedValue != pattern;
        case ZBPredicateNode::Operator::Less:
            return QString::compare(foldedValue, pattern) < 0;
        case ZBPredicateNode::Operator::LessOrEqual:
            return QString::compare(foldedValue, pattern) <= 0;
        case ZBPredicateNode::Operator::Greater:
            return QString::compare(foldedValue, pattern) > 0;
        case ZBPredicateNode::Operator::GreaterOrEqual:
            return QString::compare(foldedValue, pattern) >= 0;
        case ZBPredicateNode::Operator::Like:
            if (node.patternMatchesEverything())
                return true;
            if (!node.patternHasWildcards())
                return foldedValue == pattern;
            return ZBTextFold::likeMatchFolded(foldedValue, pattern);
        case ZBPredicateNode::Operator::Contains:
            return contains(foldedValue, pattern);
        case ZBPredicateNode::Operator::BeginsWith:
            return foldedValue.startsWith(pattern);
        case ZBPredicateNode::Operator::EndsWith:
            return foldedValue.endsWith(pattern);
        case ZBPredicateNode::Operator::Matches:
        {
            const QRegularExpression &regex = node.regularExpression();
            return regex.isValid() && regex.match(foldedValue).hasMatch();
        }
        default:
            return false;
    }
}

bool ZBPredicateEvaluator::matchTextDynamic(const ZBPredicateNode &node, const QString &foldedValue,
                                            const QString &foldedPattern)
{
    switch (node.comparisonOperator())
    {
        case ZBPredicateNode::Operator::Like:
            return ZBTextFold::likeMatchFolded(foldedValue, foldedPattern);
        case ZBPredicateNode::Operator::Contains:
            return foldedValue.contains(foldedPattern);
        case ZBPredicateNode::Operator::BeginsWith:
            return foldedValue.startsWith(foldedPattern);
        case ZBPredicateNode::Operator::EndsWith:
            return foldedValue.endsWith(foldedPattern);
        case ZBPredicateNode::Operator::Matches:
        {
            const QRegularExpression regex = ZBPredicateNode::compileMatches(foldedPattern, node.caseInsensitive());
            return regex.isValid() && regex.match(foldedValue).hasMatch();
        }
        default:
            return false;
    }
}

ZBPredicateEvaluator::Order ZBPredicateEvaluator::compare(const QVariant &left, const QVariant &right,
                                                          bool caseInsensitive, bool diacriticInsensitive)
{
    const bool leftPresent = left.isValid();
    const bool rightPresent = right.isValid();
    if (!leftPresent || !rightPresent)
        return (!leftPresent && !rightPresent) ? Order::Equal : Order::Unordered;

    const int lt = left.typeId();
    const int rt = right.typeId();
    if (isDate(lt) && isDate(rt))
        return orderOf(dateMSecs(left), dateMSecs(right));
    if (isDate(lt) && isNumber(rt))
        return orderOf(ZBPredicate::referenceSecondsFromDate(QDateTime::fromMSecsSinceEpoch(dateMSecs(left), Qt::UTC)),
                       right.toDouble());
    if (isNumber(lt) && isDate(rt))
        return orderOf(left.toDouble(), ZBPredicate::referenceSecondsFromDate(
                                            QDateTime::fromMSecsSinceEpoch(dateMSecs(right), Qt::UTC)));
    if (isNumber(lt) && isNumber(rt))
        return compareNumbers(left, right);
    if (isText(lt) && isText(rt))
    {
        const QString a = ZBTextFold::fold(left.toString(), caseInsensitive, diacriticInsensitive);
        const QString b = ZBTextFold::fold(right.toString(), caseInsensitive, diacriticInsensitive);
        const int result = QString::compare(a, b, Qt::CaseSensitive);
        return result < 0 ? Order::Less : (result > 0 ? Order::Greater : Order::Equal);
    }
    if (isText(lt) && isNumber(rt))
        return compareTextWithNumber(left, right, true);
    if (isNumber(lt) && isText(rt))
        return compareTextWithNumber(right, left, false);
    return left == right ? Order::Equal : Order::Unordered;
}
