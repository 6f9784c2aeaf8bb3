#include "predicate/zbpredicatelexer.h"

#include <cmath>

#include <QSet>

namespace
{
bool isIdentifierStart(QChar ch)
{
    return ch.isLetter() || ch == u'_';
}

bool isIdentifierPart(QChar ch)
{
    return ch.isLetterOrNumber() || ch == u'_';
}

bool isAsciiDigit(QChar ch)
{
    return ch >= u'0' && ch <= u'9';
}

QString describeChar(QChar ch)
{
    if (ch.isPrint())
        return QStringLiteral("'%1'").arg(ch);
    return QStringLiteral("U+%1").arg(ch.unicode(), 4, 16, QLatin1Char('0')).toUpper();
}
} // namespace

ZBPredicateLexer::ZBPredicateLexer(const QString &text)
    : m_text(text)
{
}

bool ZBPredicateLexer::isReservedWord(const QString &upperCaseWord)
{
    static const QSet<QString> words = {
        QStringLiteral("AND"),
        QStringLiteral("OR"),
        QStringLiteral("NOT"),
        QStringLiteral("ANY"),
        QStringLiteral("SOME"),
        QStringLiteral("ALL"),
        QStringLiteral("NONE"),
        QStringLiteral("LIKE"),
        QStringLiteral("CONTAINS"),
        QStringLiteral("BEGINSWITH"),
        QStringLiteral("ENDSWITH"),
        QStringLiteral("MATCHES"),
        QStringLiteral("IN"),
        QStringLiteral("BETWEEN"),
        QStringLiteral("YES"),
        QStringLiteral("NO"),
        QStringLiteral("TRUE"),
        QStringLiteral("FALSE"),
        QStringLiteral("NIL"),
        QStringLiteral("NULL"),
        QStringLiteral("CAST"),
        QStringLiteral("SELF"),
        QStringLiteral("SUBQUERY"),
        QStringLiteral("FUNCTION"),
        QStringLiteral("TRUEPREDICATE"),
        QStringLiteral("FALSEPREDICATE"),
    };
    return words.contains(upperCaseWord);
}

bool ZBPredicateLexer::fail(qsizetype position, const QString &message)
{
    m_errorPosition = position;
    m_error = QStringLiteral("Syntax error at position %1: %2").arg(position + 1).arg(message);
    return false;
}

void ZBPredicateLexer::finish(Token *token, TokenType type, qsizetype start, const QString &text,
                              const QVariant &value) const
{
    token->type = type;
    token->text = text;
    token->value = value;
    token->position = start;
    token->length = m_pos - start;
}

bool ZBPredicateLexer::next(Token *token)
{
    const qsizetype n = m_text.size();
    while (m_pos < n && m_text[m_pos].isSpace())
        ++m_pos;
    if (m_pos >= n)
    {
        finish(token, TokenType::End, m_pos);
        return true;
    }

    const QChar ch = m_text[m_pos];
    const QChar next = (m_pos + 1 < n) ? m_text[m_pos + 1] : QChar();
    if (ch == u'(' || ch == u')' || ch == u',')
    {
        const qsizetype start = m_pos++;
        const TokenType type = ch == u'('   ? TokenType::LeftParen
                               : ch == u')' ? TokenType::RightParen
                                            : TokenType::Comma;
        finish(token, type, start);
        return true;
    }
    if (ch == u'\'' || ch == u'"')
        return readString(token);
    if (isAsciiDigit(ch) || (ch == u'.' && isAsciiDigit(next)) ||
        ((ch == u'-' || ch == u'+') &&
         (isAsciiDigit(next) || (next == u'.' && m_pos + 2 < n && isAsciiDigit(m_text[m_pos + 2])))))
        return readNumber(token);
    if (isIdentifierStart(ch) || ch == u'#')
        return readIdentifier(token);
    if (ch == u'[')
        return readModifier(token);
    if (ch == u'%')
        return fail(m_pos, QStringLiteral("format arguments such as %@ or %K are not supported; write the key "
                                          "or the value itself"));
    if (ch == u'$' || ch == u'@')
        return fail(m_pos,
                    QStringLiteral("variables and collection operators (%1) are not supported").arg(describeChar(ch)));
    return readSymbol(token);
}

bool ZBPredicateLexer::readString(Token *token)
{
    const qsizetype start = m_pos;
    const QChar quote = m_text[m_pos++];
    const qsizetype n = m_text.size();
    QString value;
    while (m_pos < n)
    {
        const QChar ch = m_text[m_pos];
        if (ch == quote)
        {
            ++m_pos;
            finish(token, TokenType::String, start, m_text.mid(start, m_pos - start), value);
            return true;
        }
        if (ch != u'\\')
        {
            value.append(ch);
            ++m_pos;
            continue;
        }
        if (m_pos + 1 >= n)
            break;
        const QChar escaped = m_text[m_pos + 1];
        m_pos += 2;
        switch (escaped.unicode())
        {
            case u'\'':
            case u'"':
            case u'\\':
                value.append(escaped);
                break;
            case u'n':
                value.append(u'\n');
                break;
            case u't':
                value.append(u'\t');
                break;
            case u'r':
                value.append(u'\r');
                break;
            default:
                // Kept as written, so a regular expression such as 'a\.b' in a
                // MATCHES pattern keeps its meaning.
                value.append(u'\\');
                value.append(escaped);
                break;
        }
    }
    return fail(start, QStringLiteral("unterminated string (no closing %1)").arg(quote));
}

bool ZBPredicateLexer::readNumber(Token *token)
{
    const qsizetype start = m_pos;
    const qsizetype n = m_text.size();
    if (m_text[m_pos] == u'-' || m_text[m_pos] == u'+')
        ++m_pos;
    bool integral = true;
    while (m_pos < n && isAsciiDigit(m_text[m_pos]))
        ++m_pos;
    if (m_pos < n && m_text[m_pos] == u'.')
    {
        integral = false;
        ++m_pos;
        while (m_pos < n && isAsciiDigit(m_text[m_pos]))
            ++m_pos;
    }
    if (m_pos < n && (m_text[m_pos] == u'e' || m_text[m_pos] == u'E'))
    {
        qsizetype expPos = m_pos + 1;
        if (expPos < n && (m_text[expPos] == u'-' || m_text[expPos] == u'+'))
            ++expPos;
        if (expPos < n && isAsciiDigit(m_text[expPos]))
        {
            integral = false;
            m_pos = expPos;
            while (m_pos < n && isAsciiDigit(m_text[m_pos]))
                ++m_pos;
        }
    }
    if (m_pos < n && (isIdentifierPart(m_text[m_pos]) || m_text[m_pos] == u'.'))
        return fail(start, QStringLiteral("malformed number '%1'").arg(m_text.mid(start, m_pos - start + 1)));

    const QString written = m_text.mid(start, m_pos - start);
    bool ok = false;
    QVariant value;
    if (integral)
    {
        const qlonglong integer = written.toLongLong(&ok);
        if (ok)
            value = integer;
    }
    if (!ok)
    {
        const double real = written.toDouble(&ok);
        if (!ok || !std::isfinite(real))
            return fail(start, QStringLiteral("number '%1' is out of range").arg(written));
        value = real;
    }
    finish(token, TokenType::Number, start, written, value);
    return true;
}

bool ZBPredicateLexer::readIdentifier(Token *token)
{
    const qsizetype start = m_pos;
    const qsizetype n = m_text.size();
    const bool escaped = m_text[m_pos] == u'#';
    if (escaped)
    {
        ++m_pos;
        if (m_pos >= n || !isIdentifierStart(m_text[m_pos]))
            return fail(start, QStringLiteral("'#' must be followed by a key"));
    }
    const qsizetype pathStart = m_pos;
    while (true)
    {
        while (m_pos < n && isIdentifierPart(m_text[m_pos]))
            ++m_pos;
        if (m_pos < n && m_text[m_pos] == u'.')
        {
            if (m_pos + 1 < n && isIdentifierStart(m_text[m_pos + 1]))
            {
                ++m_pos;
                continue;
            }
            return fail(m_pos, QStringLiteral("expected a key after '.'"));
        }
        break;
    }
    const QString path = m_text.mid(pathStart, m_pos - pathStart);
    if (!escaped && !path.contains(u'.'))
    {
        const QString upper = path.toUpper();
        if (isReservedWord(upper))
        {
            finish(token, TokenType::Word, start, upper);
            return true;
        }
    }
    finish(token, TokenType::KeyPath, start, path);
    return true;
}

bool ZBPredicateLexer::readModifier(Token *token)
{
    const qsizetype start = m_pos;
    const qsizetype close = m_text.indexOf(u']', m_pos + 1);
    if (close < 0)
        return fail(start, QStringLiteral("unterminated modifier (no closing ']')"));
    m_pos = close + 1;
    finish(token, TokenType::Modifier, start, m_text.mid(start + 1, close - start - 1));
    return true;
}

bool ZBPredicateLexer::readSymbol(Token *token)
{
    static const char *const symbols[] = {"==", "!=", "<>", "<=", "=<", ">=", "=>", "&&", "||", "=", "<", ">", "!"};
    const qsizetype start = m_pos;
    for (const char *symbol : symbols)
    {
        const QLatin1String candidate(symbol);
        if (QStringView(m_text).mid(m_pos).startsWith(candidate))
        {
            m_pos += candidate.size();
            finish(token, TokenType::Symbol, start, candidate);
            return true;
        }
    }
    return fail(start, QStringLiteral("unexpected character %1").arg(describeChar(m_text[m_pos])));
}
