#pragma once

#include <memory>

#include <QString>

#include "predicate/zbpredicatelexer.h"
#include "predicate/zbpredicatenode.h"

// Recursive-descent reader for filter texts.
//
//   predicate  := or
//   or         := and ( (OR | "||") and )*
//   and        := not ( (AND | "&&") not )*
//   not        := (NOT | "!") not | primary
//   primary    := "(" predicate ")" | TRUEPREDICATE | FALSEPREDICATE | comparison
//   comparison := [ANY | SOME | ALL | NONE] expression operator [modifier] expression
//   expression := keypath | string | number | YES | NO | TRUE | FALSE | NIL | NULL
//               | CAST "(" number "," 'NSDate' ")"
//
// Nesting (parentheses and negations) is limited so that hostile texts
// cannot exhaust the stack, here or later when the tree is evaluated.
class ZBPredicateParser
{
public:
    static constexpr int MaximumDepth = 200;

    explicit ZBPredicateParser(const QString &text);

    // Null on failure; errorString() then says where and what was expected.
    std::unique_ptr<ZBPredicateNode> parse();

    QString errorString() const { return m_error; }
    // 0-based offset of the error in the text, -1 when there is none.
    qsizetype errorPosition() const { return m_errorPosition; }

private:
    using Token = ZBPredicateLexer::Token;
    using TokenType = ZBPredicateLexer::TokenType;

    std::unique_ptr<ZBPredicateNode> parseOr(int depth);
    std::unique_ptr<ZBPredicateNode> parseAnd(int depth);
    std::unique_ptr<ZBPredicateNode> parseJoined(int depth, ZBPredicateNode::Type type, const char *word,
                                                const char *symbol,
                                                std::unique_ptr<ZBPredicateNode> (ZBPredicateParser::*operand)(int));
    std::unique_ptr<ZBPredicateNode> parseNot(int depth);
    std::unique_ptr<ZBPredicateNode> parsePrimary(int depth);
    std::unique_ptr<ZBPredicateNode> parseComparison();
    bool parseExpression(ZBPredicateExpression *expression);
    bool parseCast(ZBPredicateExpression *expression);

    // One token of lookahead. A token the lexer cannot read becomes an End
    // token at its position after the error has been recorded, so parsing
    // stops there with the lexer's message.
    const Token &peek() const { return m_current; }
    void advance();
    bool isWord(const Token &token, const char *word) const;
    bool isSymbol(const Token &token, const char *symbol) const;
    bool enter(int depth);
    void expected(const QString &what);
    void failAt(qsizetype position, const QString &message);

    static QString describe(const Token &token);

    const QString m_text;
    ZBPredicateLexer m_lexer;
    Token m_current;
    QString m_error;
    qsizetype m_errorPosition = -1;
};
