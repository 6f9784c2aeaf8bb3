#pragma once

#include <QString>
#include <QStringView>

// Case- and diacritic-insensitive text matching, shared by the predicate
// evaluator and the library's name, path and UUID lookups so that both agree
// on what "the same text" means.
//
// Folding for case uses Unicode case folding; folding for diacritics
// decomposes the text, drops the non-spacing marks and recomposes what is
// left ("é" becomes "e", "Ü" becomes "U", or "u" when case is folded too).
// Pure ASCII text takes a fast path that allocates only when an upper-case
// letter has to be lowered.
class ZBTextFold
{
public:
    static QString fold(const QString &text, bool caseInsensitive, bool diacriticInsensitive);

    // LIKE matching over the whole value: '*' matches any run of characters
    // (also none), '?' exactly one character (a surrogate pair counts as one).
    // There is no escape character, so a path or URL used as a pattern keeps
    // its '*' and '?' as wildcards. Runs in O(value * pattern) at worst.
    static bool likeMatch(const QString &value, const QString &pattern, bool caseInsensitive,
                          bool diacriticInsensitive);

    // The same on texts that were already folded with the same flags; the
    // evaluator folds the pattern once and the subject caches folded values.
    static bool likeMatchFolded(QStringView value, QStringView pattern);

    static bool hasWildcards(QStringView pattern);
    static bool isAscii(QStringView text);
};
