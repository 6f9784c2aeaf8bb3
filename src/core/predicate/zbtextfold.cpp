#include "predicate/zbtextfold.h"

#include <QChar>

namespace
{
bool isHighSurrogateAt(QStringView text, qsizetype i)
{
    return text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
}

// Length in UTF-16 units of the character that starts at i, so that '?' and
// the '*' backtracking never split a surrogate pair.
qsizetype characterLength(QStringView text, qsizetype i)
{
    return isHighSurrogateAt(text, i) ? 2 : 1;
}

QString withoutNonSpacingMarks(const QString &decomposed)
{
    QString out;
    out.reserve(decomposed.size());
    const qsizetype n = decomposed.size();
    for (qsizetype i = 0; i < n; ++i)
    {
        if (isHighSurrogateAt(decomposed, i))
        {
            const char32_t ucs4 = QChar::surrogateToUcs4(decomposed[i], decomposed[i + 1]);
            if (QChar::category(ucs4) != QChar::Mark_NonSpacing)
            {
                out.append(decomposed[i]);
                out.append(decomposed[i + 1]);
            }
            ++i;
            continue;
        }
        if (decomposed[i].category() != QChar::Mark_NonSpacing)
            out.append(decomposed[i]);
    }
    return out;
}
} // namespace

bool ZBTextFold::isAscii(QStringView text)
{
    for (const QChar ch : text)
    {
        if (ch.unicode() >= 0x80)
            return false;
    }
    return true;
}

bool ZBTextFold::hasWildcards(QStringView pattern)
{
    for (const QChar ch : pattern)
    {
        if (ch == u'*' || ch == u'?')
            return true;
    }
    return false;
}

QString ZBTextFold::fold(const QString &text, bool caseInsensitive, bool diacriticInsensitive)
{
    if (text.isEmpty() || (!caseInsensitive && !diacriticInsensitive))
        return text;

    bool ascii = true;
    bool hasUpper = false;
    for (const QChar ch : text)
    {
        const char16_t u = ch.unicode();
        if (u >= 0x80)
        {
            ascii = false;
            break;
        }
        if (u >= u'A' && u <= u'Z')
            hasUpper = true;
    }

    if (ascii)
    {
        // ASCII has no diacritics, and its case folding is plain lowering.
        if (!caseInsensitive || !hasUpper)
            return text;
        QString lowered(text.size(), Qt::Uninitialized);
        QChar *out = lowered.data();
        const QChar *in = text.constData();
        for (qsizetype i = 0; i < text.size(); ++i)
        {
            const char16_t u = in[i].unicode();
            out[i] = QChar((u >= u'A' && u <= u'Z') ? char16_t(u + 32) : u);
        }
        return lowered;
    }

    // Normalising also makes precomposed and decomposed spellings of the same
    // text compare equal, which is what a user means by "ignore case".
    QString folded;
    if (diacriticInsensitive)
        folded = withoutNonSpacingMarks(text.normalized(QString::NormalizationForm_D))
                     .normalized(QString::NormalizationForm_C);
    else
        folded = text.normalized(QString::NormalizationForm_C);
    if (caseInsensitive)
        folded = folded.toCaseFolded();
    return folded;
}

bool ZBTextFold::likeMatchFolded(QStringView value, QStringView pattern)
{
    const qsizetype m = pattern.size();
    if (m == 1 && pattern[0] == u'*')
        return true;
    if (!hasWildcards(pattern))
        return value == pattern;

    // Greedy matching that remembers only the last '*': when a later literal
    // fails, that star swallows one more character and matching resumes.
    // Earlier stars never need revisiting, which keeps this polynomial.
    const qsizetype n = value.size();
    qsizetype v = 0;
    qsizetype p = 0;
    qsizetype starPattern = -1;
    qsizetype starValue = 0;
    while (v < n)
    {
        if (p < m)
        {
            const QChar pc = pattern[p];
            if (pc == u'*')
            {
                starPattern = p++;
                starValue = v;
                continue;
            }
            if (pc == u'?')
            {
                v += characterLength(value, v);
                ++p;
                continue;
            }
            if (pc == value[v])
            {
                ++v;
                ++p;
                continue;
            }
        }
        if (starPattern < 0)
            return false;
        p = starPattern + 1;
        starValue += characterLength(value, starValue);
        v = starValue;
    }
    while (p < m && pattern[p] == u'*')
        ++p;
    return p == m;
}

bool ZBTextFold::likeMatch(const QString &value, const QString &pattern, bool caseInsensitive,
                           bool diacriticInsensitive)
{
    if (pattern.size() == 1 && pattern[0] == u'*')
        return true;
    return likeMatchFolded(fold(value, caseInsensitive, diacriticInsensitive),
                           fold(pattern, caseInsensitive, diacriticInsensitive));
}
