#include "library/zbitemfilter.h"

#include "library/zblibraryguard.h"

#include <algorithm>

#include "predicate/zbpredicateevaluator.h"

namespace
{
using Op = ZBPredicateNode::Operator;
using Order = ZBPredicateEvaluator::Order;

// Which numeric and date fields a comparison can read directly; the order of
// the fields' indexes is private to this file.
enum NumberField
{
    RatingField,
    LengthField,
    PlayCountField
};

enum DateField
{
    AddedField,
    LastPlayedField
};

// 2001-01-01 00:00:00 UTC in milliseconds since the Unix epoch, as the
// evaluator converts a date compared with a number.
constexpr qint64 ReferenceMSecs = Q_INT64_C(978307200000);

template <typename T>
Order orderOf(T a, T b)
{
    if (a < b)
        return Order::Less;
    if (b < a)
        return Order::Greater;
    if (a == b)
        return Order::Equal;
    return Order::Unordered;
}

bool isComparisonOperator(Op op)
{
    return !ZBPredicateNode::isStringOperator(op);
}

// An absent value is unordered against a present constant: only "!=" holds,
// and the string operators are false.
bool absentAnswer(Op op)
{
    return op == Op::NotEqual;
}

std::optional<qint32> numberOf(const ZBItem &item, int field)
{
    switch (field)
    {
        case RatingField:
            return item.Rating();
        case LengthField:
            return item.Length();
        default:
            return item.PlayCount();
    }
}
} // namespace

ZBItemFilter::ZBItemFilter(const ZBPredicate &predicate)
    : m_predicate(predicate)
{
    if (const ZBPredicateNode *root = predicate.root())
        compile(*root);
}

void ZBItemFilter::compile(const ZBPredicateNode &node)
{
    const int index = int(m_steps.size());
    m_steps.push_back(Step{});
    Step step;
    step.node = &node;
    switch (node.type())
    {
        case ZBPredicateNode::Type::TruePredicate:
            step.kind = Step::Kind::True;
            break;
        case ZBPredicateNode::Type::FalsePredicate:
            step.kind = Step::Kind::False;
            break;
        case ZBPredicateNode::Type::And:
        case ZBPredicateNode::Type::Or:
        case ZBPredicateNode::Type::Not:
            step.kind = node.type() == ZBPredicateNode::Type::And
                            ? Step::Kind::And
                            : (node.type() == ZBPredicateNode::Type::Or ? Step::Kind::Or : Step::Kind::Not);
            for (qsizetype i = 0; i < node.childCount(); ++i)
                compile(*node.child(i));
            break;
        case ZBPredicateNode::Type::Comparison:
            if (!compileComparison(node, step))
            {
                step.kind = Step::Kind::Plain;
                ++m_plainCount;
            }
            break;
    }
    step.end = int(m_steps.size());
    m_steps[size_t(index)] = step;
}

bool ZBItemFilter::compileComparison(const ZBPredicateNode &node, Step &step) const
{
    const ZBPredicateExpression &left = node.left();
    const ZBPredicateExpression &right = node.right();
    if (node.quantifier() != ZBPredicateNode::Quantifier::None || !left.isKeyPath() || !left.isPlainKey()
        || !right.isConstant() || !right.constantValue().isValid())
        return false;
    const QString &key = left.keyPath();
    const bool c = node.caseInsensitive();
    const bool d = node.diacriticInsensitive();

    // Text: the evaluator's own folded fast path, with the field found once.
    const int textField = ZBItem::textFieldIndex(key);
    if (textField >= 0)
    {
        // Only the fully folded and the unfolded texts are kept by the track.
        if (!node.usesFoldedFastPath() || c != d || (c && textField >= ZBItem::KeptFoldCount))
            return false;
        step.kind = Step::Kind::Text;
        step.field = textField;
        step.folded = c;
        step.contains = node.comparisonOperator() == Op::Contains;
        step.needle = std::u16string_view(reinterpret_cast<const char16_t *>(node.foldedPattern().constData()),
                                          size_t(node.foldedPattern().size()));
        return true;
    }

    if (!isComparisonOperator(node.comparisonOperator()))
        return false;
    const int type = right.constantValue().typeId();
    const bool integer = type == QMetaType::LongLong || type == QMetaType::Int || type == QMetaType::Bool;
    const bool real = type == QMetaType::Double;

    int numberField = -1;
    if (key == u"Rating")
        numberField = RatingField;
    else if (key == u"Length")
        numberField = LengthField;
    else if (key == u"PlayCount")
        numberField = PlayCountField;
    if (numberField >= 0 && (integer || real))
    {
        step.kind = Step::Kind::Number;
        step.field = numberField;
        step.real = real;
        step.integer = right.constantValue().toLongLong();
        step.number = right.constantValue().toDouble();
        return true;
    }

    int dateField = -1;
    if (key == u"Added")
        dateField = AddedField;
    else if (key == u"LastPlayed")
        dateField = LastPlayedField;
    if (dateField < 0)
        return false;
    step.kind = Step::Kind::Date;
    step.field = dateField;
    if (type == QMetaType::QDateTime)
    {
        step.integer = right.constantValue().toDateTime().toMSecsSinceEpoch();
        return true;
    }
    if (integer || real)
    {
        // A date against a number compares its seconds since 2001.
        step.real = true;
        step.number = right.constantValue().toDouble();
        return true;
    }
    return false;
}

bool ZBItemFilter::evaluate(int index, const ZBItem &item) const
{
    const Step &step = m_steps[size_t(index)];
    switch (step.kind)
    {
        case Step::Kind::True:
            return true;
        case Step::Kind::False:
            return false;
        case Step::Kind::And:
            for (int child = index + 1; child < step.end; child = m_steps[size_t(child)].end)
            {
                if (!evaluate(child, item))
                    return false;
            }
            return true;
        case Step::Kind::Or:
            for (int child = index + 1; child < step.end; child = m_steps[size_t(child)].end)
            {
                if (evaluate(child, item))
                    return true;
            }
            return false;
        case Step::Kind::Not:
            return !evaluate(index + 1, item);
        case Step::Kind::Text:
        {
            const QString *value = step.folded ? item.foldedText(step.field) : item.rawText(step.field);
            if (!value)
                return absentAnswer(step.node->comparisonOperator());
            if (step.contains)
                return std::u16string_view(reinterpret_cast<const char16_t *>(value->constData()), size_t(value->size()))
                           .find(step.needle)
                       != std::u16string_view::npos;
            return ZBPredicateEvaluator::matchText(*step.node, *value);
        }
        case Step::Kind::Number:
        {
            const std::optional<qint32> value = numberOf(item, step.field);
            if (!value)
                return absentAnswer(step.node->comparisonOperator());
            const Order order = step.real ? orderOf(double(*value), step.number) : orderOf(qint64(*value), step.integer);
            return ZBPredicateEvaluator::satisfies(int(step.node->comparisonOperator()), order);
        }
        case Step::Kind::Date:
        {
            const QDateTime value = step.field == AddedField ? item.Added() : item.LastPlayed();
            if (!value.isValid())
                return absentAnswer(step.node->comparisonOperator());
            const qint64 msecs = value.toMSecsSinceEpoch();
            const Order order = step.real ? orderOf(double(msecs - ReferenceMSecs) / 1000.0, step.number)
                                          : orderOf(msecs, step.integer);
            return ZBPredicateEvaluator::satisfies(int(step.node->comparisonOperator()), order);
        }
        case Step::Kind::Plain:
            return ZBPredicateEvaluator::evaluate(*step.node, item);
    }
    return false;
}

bool ZBItemFilter::matches(const ZBItem &item) const
{
    return !m_steps.empty() && evaluate(0, item);
}

void ZBItemFilter::filter(ZBItem *const *begin, ZBItem *const *end, ZBItemList &out) const
{
    if (m_steps.empty())
        return;
    // Bound by memory latency over a whole library: start loading tracks a
    // few places ahead, the object first and what it points to once there.
    constexpr std::ptrdiff_t Distance = 8;
    const std::ptrdiff_t count = end - begin;
    // A read on a background thread gives way to a newer one or to a write
    // between two chunks (the caller then drops what is here); the scan of a
    // chunk stays free of calls out.
    constexpr std::ptrdiff_t Chunk = 4096;
    for (std::ptrdiff_t from = 0; from < count; from += Chunk)
    {
        if (ZBLibraryGuard::cancelled())
            return;
        const std::ptrdiff_t to = std::min(count, from + Chunk);
        for (std::ptrdiff_t i = from; i < to; ++i)
        {
            if (i + 2 * Distance < count)
            {
                __builtin_prefetch(begin[i + 2 * Distance]);
                __builtin_prefetch(reinterpret_cast<const char *>(begin[i + 2 * Distance]) + 64);
            }
            if (i + Distance < count)
                begin[i + Distance]->ZBItem::prefetch();
            if (evaluate(0, *begin[i]))
                out.append(begin[i]);
        }
    }
}
