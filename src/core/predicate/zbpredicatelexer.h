#pragma once

#include <QString>
#include <QVariant>

// Splits a filter text into tokens for ZBPredicateParser.
//
// Reserved words are recognised in any letter case and reported upper-cased
// in Token::text; a reserved word can still be used as a key by writing '#'
// in front of it ("#Like"). Modifiers written after an operator ("[cd]") come
// as one Modifier token holding the letters between the brackets.
class ZBPredicateLexer
{
public:
    enum class TokenType
    {
        End,
        LeftParen, // punctuation tokens carry no text
        RightParen,
        Comma,
        KeyPath,  // text: the path
        Word,     // text: the reserved word, upper case
        Symbol,   // text: "==", "!=", "<", "&&", "!", ...
        String,   // value: the unescaped text
        Number,   // value: qlonglong or double; text: as written
        Modifier, // text: the letters between '[' and ']'
    };

    struct Token
    {
        TokenType type = TokenType::End;
        QString text;
        QVariant value;
        qsizetype position = 0; // 0-based, in UTF-16 units
        qsizetype length = 0;
    };

    explicit ZBPredicateLexer(const QString &text);

    // Reads the next token; End once the text is used up. Tokens are read on
    // demand, so a parser that gives up early never looks at the rest of a
    // long hostile text. On failure returns false and sets errorString() and
    // errorPosition().
    bool next(Token *token);

    QString errorString() const { return m_error; }
    qsizetype errorPosition() const { return m_errorPosition; }

    static bool isReservedWord(const QString &upperCaseWord);

private:
    bool readString(Token *token);
    bool readNumber(Token *token);
    bool readIdentifier(Token *token);
    bool readModifier(Token *token);
    bool readSymbol(Token *token);
    bool fail(qsizetype position, const QString &message);
    void finish(Token *token, TokenType type, qsizetype start, const QString &text = QString(),
                const QVariant &value = QVariant()) const;

    const QString m_text;
    qsizetype m_pos = 0;
    QString m_error;
    qsizetype m_errorPosition = -1;
};
