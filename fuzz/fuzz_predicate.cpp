// Feeds arbitrary text to the filter parser and evaluator, and to the rule
// reader, and checks the properties that must hold for every input: nothing
// crashes or hangs, a text that parses prints back to a text that parses the
// same way, and rules read from a text survive a write and a second read.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <QDateTime>
#include <QString>
#include <QVariant>

#include "library/zbsmartlistrules.h"
#include "predicate/zbpredicate.h"
#include "predicate/zbtextfold.h"
#include "predicate/zbvariantmapsubject.h"

namespace
{
ZBVariantMapSubject makeSubject(bool cached)
{
    QVariantMap playlist;
    playlist.insert(QStringLiteral("PlaylistUUID"), QStringLiteral("0A1B2C3D-0000-4000-8000-00000000ABCD"));
    playlist.insert(QStringLiteral("Name"), QStringLiteral("Über Mix"));

    ZBVariantMapSubject subject;
    subject.setValue(QStringLiteral("Name"), QStringLiteral("Crème Brûlée * 2?"));
    subject.setValue(QStringLiteral("Path"), QStringLiteral("/home/u/Vidéos/a?b*.swf"));
    subject.setValue(QStringLiteral("URL"), QStringLiteral(""));
    subject.setValue(QStringLiteral("Type"), QStringLiteral("SWF"));
    subject.setValue(QStringLiteral("Rating"), 3);
    subject.setValue(QStringLiteral("PlayCount"), qlonglong(12));
    subject.setValue(QStringLiteral("Added"), QDateTime::fromMSecsSinceEpoch(Q_INT64_C(1730000000000), Qt::UTC));
    subject.setValue(QStringLiteral("isSmart"), false);
    subject.setValue(QStringLiteral("Playlist"), QVariantList{playlist, playlist});
    subject.setValue(QStringLiteral("Tags"), QStringList{QStringLiteral("a"), QStringLiteral("É")});
    if (cached)
        subject.cacheFoldedValues();
    return subject;
}

void check(bool condition, const char *what)
{
    if (!condition)
    {
        fprintf(stderr, "fuzz_predicate: property violated: %s\n", what);
        abort();
    }
}

void fuzzPredicate(const QString &text)
{
    static const ZBVariantMapSubject plain = makeSubject(false);
    static const ZBVariantMapSubject cached = makeSubject(true);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    if (!predicate.isValid())
    {
        check(!predicate.errorString().isEmpty(), "an invalid predicate explains why");
        check(!predicate.evaluate(plain), "an invalid predicate matches nothing");
        return;
    }
    const bool answer = predicate.evaluate(plain);
    check(answer == predicate.evaluate(cached), "cached folds answer like uncached ones");

    const QString description = predicate.root()->description();
    const ZBPredicate reparsed = ZBPredicate::parse(description);
    // The description parenthesises every comparison, which can take a text
    // at the nesting limit one level over it.
    if (!reparsed.isValid() && reparsed.errorString().contains(QLatin1String("nested")))
        return;
    check(reparsed.isValid(), "a description parses");
    check(reparsed.root()->description() == description, "a description is stable");
    check(reparsed.evaluate(plain) == answer, "a description means the same");
}

void fuzzRules(const QString &text)
{
    ZBSmartListRules rules;
    if (!rules.fillRules(text))
        return;
    const QString generated = rules.generatePredicate();
    ZBSmartListRules again;
    check(again.fillRules(generated), "generated rules read back");
    check(again.rows().size() == rules.rows().size(), "rules survive a round trip");
    check(rules.rows().size() < 2 || again.matchAll() == rules.matchAll(), "all/any survives a round trip");
    for (qsizetype i = 0; i < rules.rows().size(); ++i)
    {
        const ZBSmartListRules::Row &first = rules.rows()[i];
        const ZBSmartListRules::Row &second = again.rows()[i];
        check(first.field == second.field && first.op == second.op, "tags survive a round trip");
        // Text values may lose the upper case of " OR " and " AND ".
        if (ZBSmartListRules::fieldKind(first.field) == ZBSmartListRules::ValueKind::Text)
            check(ZBSmartListRules::quoteText(first.value.toString()) ==
                      ZBSmartListRules::quoteText(second.value.toString()),
                  "text values survive a round trip");
        else
            check(first.value == second.value, "values survive a round trip");
    }
    check(again.generatePredicate() == generated, "generated text is stable");
}

void fuzzLike(const QString &text)
{
    const qsizetype split = text.indexOf(u'\n');
    if (split < 0)
        return;
    const QString value = text.left(split);
    const QString pattern = text.mid(split + 1);
    const bool folded = ZBTextFold::likeMatch(value, pattern, true, true);
    if (!ZBTextFold::hasWildcards(pattern))
        check(folded == (ZBTextFold::fold(value, true, true) == ZBTextFold::fold(pattern, true, true)),
              "a pattern without wildcards is an equality test");
    check(ZBTextFold::likeMatch(value, QStringLiteral("*"), false, false), "'*' matches everything");
    check(ZBTextFold::likeMatch(value, value, false, false) || ZBTextFold::hasWildcards(value),
          "a text without wildcards matches itself");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    fuzzPredicate(text);
    fuzzRules(text);
    fuzzLike(text);
    return 0;
}
