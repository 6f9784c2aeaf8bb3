#include "predicate/zbpredicatenode.h"

#include "predicate/zbtextfold.h"

ZBPredicateNode::ZBPredicateNode(Type type)
    : m_type(type)
{
}

std::unique_ptr<ZBPredicateNode> ZBPredicateNode::makeConstant(bool value)
{
    return std::unique_ptr<ZBPredicateNode>(new ZBPredicateNode(value ? Type::TruePredicate : Type::FalsePredicate));
}

std::unique_ptr<ZBPredicateNode> ZBPredicateNode::makeCompound(Type type,
                                                               std::vector<std::unique_ptr<ZBPredicateNode>> children)
{
    Q_ASSERT(type == Type::And || type == Type::Or);
    std::unique_ptr<ZBPredicateNode> node(new ZBPredicateNode(type));
    node->m_children = std::move(children);
    return node;
}

std::unique_ptr<ZBPredicateNode> ZBPredicateNode::makeNot(std::unique_ptr<ZBPredicateNode> child)
{
    std::unique_ptr<ZBPredicateNode> node(new ZBPredicateNode(Type::Not));
    node->m_children.push_back(std::move(child));
    return node;
}

std::unique_ptr<ZBPredicateNode> ZBPredicateNode::makeComparison(Quantifier quantifier,
                                                                 const ZBPredicateExpression &left, Operator op,
                                                                 bool caseInsensitive, bool diacriticInsensitive,
                                                                 const ZBPredicateExpression &right)
{
    std::unique_ptr<ZBPredicateNode> node(new ZBPredicateNode(Type::Comparison));
    node->m_quantifier = quantifier;
    node->m_left = left;
    node->m_operator = op;
    node->m_caseInsensitive = caseInsensitive;
    node->m_diacriticInsensitive = diacriticInsensitive;
    node->m_right = right;

    const bool textConstant = right.isConstant() && right.constantValue().typeId() == QMetaType::QString;
    if (textConstant)
    {
        const QString pattern = right.constantValue().toString();
        node->m_preparedPattern = true;
        if (op == Operator::Matches)
        {
            node->m_foldedPattern = ZBTextFold::fold(pattern, false, diacriticInsensitive);
            node->m_regex = compileMatches(node->m_foldedPattern, caseInsensitive);
        }
        else
        {
            node->m_foldedPattern = ZBTextFold::fold(pattern, caseInsensitive, diacriticInsensitive);
            node->m_patternIsStar = node->m_foldedPattern == QLatin1String("*");
            node->m_patternHasWildcards = ZBTextFold::hasWildcards(node->m_foldedPattern);
        }
        node->m_fastPath = quantifier == Quantifier::None && left.isKeyPath() && left.isPlainKey();
    }
    return node;
}

QRegularExpression ZBPredicateNode::compileMatches(const QString &foldedPattern, bool caseInsensitive)
{
    QRegularExpression::PatternOptions options = QRegularExpression::UseUnicodePropertiesOption;
    if (caseInsensitive)
        options |= QRegularExpression::CaseInsensitiveOption;
    QRegularExpression regex(QRegularExpression::anchoredPattern(foldedPattern), options);
    if (regex.isValid())
        regex.optimize();
    return regex;
}

bool ZBPredicateNode::isStringOperator(Operator op)
{
    switch (op)
    {
        case Operator::Like:
        case Operator::Contains:
        case Operator::BeginsWith:
        case Operator::EndsWith:
        case Operator::Matches:
            return true;
        default:
            return false;
    }
}

QString ZBPredicateNode::operatorText(Operator op)
{
    switch (op)
    {
        case Operator::Equal:
            return QStringLiteral("==");
        case Operator::NotEqual:
            return QStringLiteral("!=");
        case Operator::Less:
            return QStringLiteral("<");
        case Operator::LessOrEqual:
            return QStringLiteral("<=");
        case Operator::Greater:
            return QStringLiteral(">");
        case Operator::GreaterOrEqual:
            return QStringLiteral(">=");
        case Operator::Like:
            return QStringLiteral("LIKE");
        case Operator::Contains:
            return QStringLiteral("CONTAINS");
        case Operator::BeginsWith:
            return QStringLiteral("BEGINSWITH");
        case Operator::EndsWith:
            return QStringLiteral("ENDSWITH");
        case Operator::Matches:
            return QStringLiteral("MATCHES");
    }
    return {};
}

QString ZBPredicateNode::description() const
{
    switch (m_type)
    {
        case Type::TruePredicate:
            return QStringLiteral("TRUEPREDICATE");
        case Type::FalsePredicate:
            return QStringLiteral("FALSEPREDICATE");
        case Type::Not:
            return QStringLiteral("NOT ") + m_children.front()->description();
        case Type::And:
        case Type::Or:
        {
            const QString joiner = (m_type == Type::And) ? QStringLiteral(" AND ") : QStringLiteral(" OR ");
            QString text = QStringLiteral("(");
            for (size_t i = 0; i < m_children.size(); ++i)
            {
                if (i > 0)
                    text += joiner;
                text += m_children[i]->description();
            }
            return text + u')';
        }
        case Type::Comparison:
            break;
    }

    QString text = QStringLiteral("(");
    switch (m_quantifier)
    {
        case Quantifier::Any:
            text += QStringLiteral("ANY ");
            break;
        case Quantifier::All:
            text += QStringLiteral("ALL ");
            break;
        case Quantifier::NoneOf:
            text += QStringLiteral("NONE ");
            break;
        case Quantifier::None:
            break;
    }
    text += m_left.description() + u' ' + operatorText(m_operator);
    if (m_caseInsensitive || m_diacriticInsensitive)
    {
        text += u'[';
        if (m_caseInsensitive)
            text += u'c';
        if (m_diacriticInsensitive)
            text += u'd';
        text += u']';
    }
    return text + u' ' + m_right.description() + u')';
}
