#include "predicate/zbpredicateparser.h"

#include <QDateTime>

#include "predicate/zbpredicate.h"

ZBPredicateParser::ZBPredicateParser(const QString &text)
    : m_text(text)
    , m_lexer(text)
{
}

void ZBPredicateParser::advance()
{
    if (m_lexer.next(&m_current))
        return;
    if (m_errorPosition < 0)
    {
        m_error = m_lexer.errorString();
        m_errorPosition = m_lexer.errorPosition();
    }
    m_current = Token();
    m_current.type = TokenType::End;
    m_current.position = m_lexer.errorPosition();
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parse()
{
    m_error.clear();
    m_errorPosition = -1;
    advance();
    if (m_errorPosition >= 0)
        return nullptr;
    if (peek().type == TokenType::End)
    {
        failAt(0, QStringLiteral("the filter text is empty"));
        return nullptr;
    }

    std::unique_ptr<ZBPredicateNode> root = parseOr(0);
    if (!root || m_errorPosition >= 0)
        return nullptr;
    if (peek().type != TokenType::End)
    {
        if (peek().type == TokenType::RightParen)
            failAt(peek().position, QStringLiteral("')' without a matching '('"));
        else
            expected(QStringLiteral("AND, OR or the end of the text"));
        return nullptr;
    }
    return root;
}

bool ZBPredicateParser::isWord(const Token &token, const char *word) const
{
    return token.type == TokenType::Word && token.text == QLatin1String(word);
}

bool ZBPredicateParser::isSymbol(const Token &token, const char *symbol) const
{
    return token.type == TokenType::Symbol && token.text == QLatin1String(symbol);
}

bool ZBPredicateParser::enter(int depth)
{
    if (depth <= MaximumDepth)
        return true;
    failAt(peek().position,
           QStringLiteral("parentheses and negations are nested deeper than %1 levels").arg(MaximumDepth));
    return false;
}

void ZBPredicateParser::failAt(qsizetype position, const QString &message)
{
    if (m_errorPosition >= 0)
        return;
    m_errorPosition = position;
    m_error = QStringLiteral("Syntax error at position %1: %2").arg(position + 1).arg(message);
}

void ZBPredicateParser::expected(const QString &what)
{
    failAt(peek().position, QStringLiteral("expected %1, found %2").arg(what, describe(peek())));
}

QString ZBPredicateParser::describe(const Token &token)
{
    switch (token.type)
    {
        case TokenType::End:
            return QStringLiteral("the end of the text");
        case TokenType::Modifier:
            return QStringLiteral("'[%1]'").arg(token.text);
        case TokenType::String:
            return QStringLiteral("the text %1").arg(token.text);
        case TokenType::LeftParen:
            return QStringLiteral("'('");
        case TokenType::RightParen:
            return QStringLiteral("')'");
        case TokenType::Comma:
            return QStringLiteral("','");
        default:
            return QStringLiteral("'%1'").arg(token.text);
    }
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parseOr(int depth)
{
    return parseJoined(depth, ZBPredicateNode::Type::Or, "OR", "||", &ZBPredicateParser::parseAnd);
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parseAnd(int depth)
{
    return parseJoined(depth, ZBPredicateNode::Type::And, "AND", "&&", &ZBPredicateParser::parseNot);
}

// One level of the grammar: operands of the next tighter level joined by one
// connective, collected into a single n-ary node rather than a deep chain.
std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parseJoined(int depth, ZBPredicateNode::Type type,
                                                                const char *word, const char *symbol,
                                                                std::unique_ptr<ZBPredicateNode> (ZBPredicateParser::*operand)(int))
{
    std::vector<std::unique_ptr<ZBPredicateNode>> operands;
    std::unique_ptr<ZBPredicateNode> first = (this->*operand)(depth);
    if (!first)
        return nullptr;
    while (isWord(peek(), word) || isSymbol(peek(), symbol))
    {
        advance();
        std::unique_ptr<ZBPredicateNode> next = (this->*operand)(depth);
        if (!next)
            return nullptr;
        if (operands.empty())
            operands.push_back(std::move(first));
        operands.push_back(std::move(next));
    }
    if (operands.empty())
        return first;
    return ZBPredicateNode::makeCompound(type, std::move(operands));
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parseNot(int depth)
{
    // Negations are read in a loop and wrapped afterwards so that a long run
    // of "!!!!" costs no stack; the depth limit still applies to it because
    // evaluating and destroying the tree recurse.
    int negations = 0;
    while (isWord(peek(), "NOT") || isSymbol(peek(), "!"))
    {
        if (!enter(depth + negations + 1))
            return nullptr;
        advance();
        ++negations;
    }
    std::unique_ptr<ZBPredicateNode> node = parsePrimary(depth + negations);
    if (!node)
        return nullptr;
    for (int i = 0; i < negations; ++i)
        node = ZBPredicateNode::makeNot(std::move(node));
    return node;
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parsePrimary(int depth)
{
    const Token &token = peek();
    if (token.type == TokenType::LeftParen)
    {
        if (!enter(depth + 1))
            return nullptr;
        const qsizetype open = token.position;
        advance();
        std::unique_ptr<ZBPredicateNode> inner = parseOr(depth + 1);
        if (!inner)
            return nullptr;
        if (peek().type != TokenType::RightParen)
        {
            if (peek().type == TokenType::End)
                failAt(peek().position,
                       QStringLiteral("expected ')' to close the '(' at position %1, found the end of the text")
                           .arg(open + 1));
            else
                expected(QStringLiteral("')', AND or OR"));
            return nullptr;
        }
        advance();
        return inner;
    }
    if (isWord(token, "TRUEPREDICATE"))
    {
        advance();
        return ZBPredicateNode::makeConstant(true);
    }
    if (isWord(token, "FALSEPREDICATE"))
    {
        advance();
        return ZBPredicateNode::makeConstant(false);
    }
    return parseComparison();
}

std::unique_ptr<ZBPredicateNode> ZBPredicateParser::parseComparison()
{
    using Op = ZBPredicateNode::Operator;
    using Quantifier = ZBPredicateNode::Quantifier;

    Quantifier quantifier = Quantifier::None;
    if (isWord(peek(), "ANY") || isWord(peek(), "SOME"))
        quantifier = Quantifier::Any;
    else if (isWord(peek(), "ALL"))
        quantifier = Quantifier::All;
    else if (isWord(peek(), "NONE"))
        quantifier = Quantifier::NoneOf;
    if (quantifier != Quantifier::None)
    {
        advance();
        if (peek().type != TokenType::KeyPath)
        {
            expected(QStringLiteral("a key path after the quantifier"));
            return nullptr;
        }
    }

    ZBPredicateExpression left;
    if (!parseExpression(&left))
        return nullptr;

    const Token &opToken = peek();
    Op op = Op::Equal;
    if (opToken.type == TokenType::Symbol)
    {
        const QString &s = opToken.text;
        if (s == QLatin1String("==") || s == QLatin1String("="))
            op = Op::Equal;
        else if (s == QLatin1String("!=") || s == QLatin1String("<>"))
            op = Op::NotEqual;
        else if (s == QLatin1String("<"))
            op = Op::Less;
        else if (s == QLatin1String("<=") || s == QLatin1String("=<"))
            op = Op::LessOrEqual;
        else if (s == QLatin1String(">"))
            op = Op::Greater;
        else if (s == QLatin1String(">=") || s == QLatin1String("=>"))
            op = Op::GreaterOrEqual;
        else
        {
            expected(QStringLiteral("a comparison operator"));
            return nullptr;
        }
    }
    else if (isWord(opToken, "LIKE"))
        op = Op::Like;
    else if (isWord(opToken, "CONTAINS"))
        op = Op::Contains;
    else if (isWord(opToken, "BEGINSWITH"))
        op = Op::BeginsWith;
    else if (isWord(opToken, "ENDSWITH"))
        op = Op::EndsWith;
    else if (isWord(opToken, "MATCHES"))
        op = Op::Matches;
    else if (isWord(opToken, "IN") || isWord(opToken, "BETWEEN"))
    {
        failAt(opToken.position, QStringLiteral("the operator %1 is not supported").arg(opToken.text));
        return nullptr;
    }
    else
    {
        expected(QStringLiteral("a comparison operator (==, !=, <, <=, >, >=, LIKE, CONTAINS, BEGINSWITH, "
                                "ENDSWITH or MATCHES)"));
        return nullptr;
    }
    advance();

    bool caseInsensitive = false;
    bool diacriticInsensitive = false;
    if (peek().type == TokenType::Modifier)
    {
        const Token &modifier = peek();
        if (modifier.text.isEmpty())
        {
            failAt(modifier.position, QStringLiteral("empty modifier '[]'; use [c], [d] or [cd]"));
            return nullptr;
        }
        for (const QChar ch : modifier.text)
        {
            const QChar lower = ch.toLower();
            if (lower == u'c')
                caseInsensitive = true;
            else if (lower == u'd')
                diacriticInsensitive = true;
            else
            {
                failAt(modifier.position,
                       QStringLiteral("unknown modifier '[%1]'; use [c], [d] or [cd]").arg(modifier.text));
                return nullptr;
            }
        }
        advance();
    }

    ZBPredicateExpression right;
    if (!parseExpression(&right))
        return nullptr;

    return ZBPredicateNode::makeComparison(quantifier, left, op, caseInsensitive, diacriticInsensitive, right);
}

bool ZBPredicateParser::parseExpression(ZBPredicateExpression *expression)
{
    const Token &token = peek();
    switch (token.type)
    {
        case TokenType::KeyPath:
            *expression = ZBPredicateExpression::keyPath(token.text, token.position, token.length);
            advance();
            return true;
        case TokenType::String:
        case TokenType::Number:
            *expression = ZBPredicateExpression::constant(token.value, token.position, token.length);
            advance();
            return true;
        case TokenType::Word:
            if (isWord(token, "YES") || isWord(token, "TRUE") || isWord(token, "NO") || isWord(token, "FALSE"))
            {
                const bool value = isWord(token, "YES") || isWord(token, "TRUE");
                *expression = ZBPredicateExpression::constant(value, token.position, token.length);
                advance();
                return true;
            }
            if (isWord(token, "NIL") || isWord(token, "NULL"))
            {
                *expression = ZBPredicateExpression::constant(QVariant(), token.position, token.length);
                advance();
                return true;
            }
            if (isWord(token, "CAST"))
                return parseCast(expression);
            if (isWord(token, "SELF") || isWord(token, "SUBQUERY") || isWord(token, "FUNCTION"))
            {
                failAt(token.position, QStringLiteral("%1 is not supported").arg(token.text));
                return false;
            }
            break;
        default:
            break;
    }
    expected(QStringLiteral("a key or a value"));
    return false;
}

bool ZBPredicateParser::parseCast(ZBPredicateExpression *expression)
{
    const qsizetype start = peek().position;
    advance();
    if (peek().type != TokenType::LeftParen)
    {
        expected(QStringLiteral("'(' after CAST"));
        return false;
    }
    advance();
    if (peek().type != TokenType::Number)
    {
        expected(QStringLiteral("a number of seconds in CAST"));
        return false;
    }
    const double seconds = peek().value.toDouble();
    const qsizetype numberPosition = peek().position;
    const QString numberText = peek().text;
    advance();
    if (peek().type != TokenType::Comma)
    {
        expected(QStringLiteral("',' in CAST"));
        return false;
    }
    advance();
    if (peek().type != TokenType::String)
    {
        expected(QStringLiteral("the type name 'NSDate' in CAST"));
        return false;
    }
    if (peek().value.toString() != QLatin1String("NSDate"))
    {
        failAt(peek().position, QStringLiteral("CAST supports only 'NSDate', found %1").arg(peek().text));
        return false;
    }
    advance();
    if (peek().type != TokenType::RightParen)
    {
        expected(QStringLiteral("')' to close CAST"));
        return false;
    }
    const Token &close = peek();
    const qsizetype end = close.position + close.length;
    advance();

    const QDateTime date = ZBPredicate::dateFromReferenceSeconds(seconds);
    if (!date.isValid())
    {
        failAt(numberPosition, QStringLiteral("the date %1 is out of range").arg(numberText));
        return false;
    }
    *expression = ZBPredicateExpression::constant(date, start, end - start);
    return true;
}
