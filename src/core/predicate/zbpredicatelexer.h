#pragma once

#include <QString>
#include <QVariant>

#include <vector>

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
        LeftParen,
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

    // Tokenises the whole text. On failure returns false and sets
    // errorString() and errorPosition(); the tokens read so far stay.
    bool tokenize();

    const std::vector<Token> &tokens() const { return m_tokens; }
    QString errorString() const { return m_error; }
    qsizetype errorPosition() const { return m_errorPosition; }

    static bool isReservedWord(const QString &upperCaseWord);

private:
    bool readString();
    bool readNumber();
    bool readIdentifier();
    bool readModifier();
    bool readSymbol();
    bool fail(qsizetype position, const QString &message);
    void push(TokenType type, qsizetype start, const QString &text, const QVariant &value = {});

    const QString m_text;
    qsizetype m_pos = 0;
    std::vector<Token> m_tokens;
    QString m_error;
    qsizetype m_errorPosition = -1;
};
