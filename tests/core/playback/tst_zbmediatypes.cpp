#include <functional>

#include <QTest>

#include "playback/zbmediatypes.h"

using NameHelper = std::function<QString(const QString &)>;
Q_DECLARE_METATYPE(NameHelper)

// The type table and the name helpers every import, drop and engine choice
// goes through.
class TestZBMediaTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nameHelpers_data();
    void nameHelpers();
};

void TestZBMediaTypes::nameHelpers_data()
{
    QTest::addColumn<NameHelper>("helper");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");

    const NameHelper registered = [](const QString &type)
    {
        return QString::fromLatin1(ZBMediaTypes::isRegisteredType(type) ? "yes" : "no");
    };
    const NameHelper type = &ZBMediaTypes::getFileType;
    const NameHelper name = &ZBMediaTypes::getFileNameFromPath;
    const NameHelper stem = &ZBMediaTypes::getFileNameWithoutExtension;
    const NameHelper extension = &ZBMediaTypes::pathExtension;
    const auto row = [](const char *what, const NameHelper &helper, const char *input, const char *expected)
    {
        QTest::newRow(what) << helper << QString::fromUtf8(input) << QString::fromUtf8(expected);
    };

    for (const QString &each : ZBMediaTypes::getSupportedFileTypes())
        QTest::newRow(qPrintable("registered: " + each)) << registered << each << "yes";
    row("registered: 3G2, not offered in open panels", registered, "3G2", "yes");
    row("registered: quoted appl any case", registered, "'appl'", "yes");
    row("registered: APPL without quotes", registered, "APPL", "no");
    row("registered: empty", registered, "", "no");
    row("registered: prefix of a type", registered, "mp", "no");
    row("type: plain", type, "/home/u/Movies/clip.mp4", "mp4");
    row("type: dot in a folder", type, "/media/v.1/clip", "1/clip");
    row("type: ends in a dot", type, "movie.", "");
    row("type: no dot drops the first character", type, "movie", "ovie");
    row("type: one character, no dot", type, "m", "");
    row("name: trailing slash", name, "/home/u/", "unknown");
    row("name: empty", name, "", "unknown");
    row("stem: two dots", stem, "my.holiday.mov", "my.holiday");
    row("stem: empty stays empty", stem, "", "");
    row("stem: only an extension", stem, ".mp4", "unknown");
    row("extension: case kept", extension, "/v/clip.SWF", "SWF");
    row("extension: no dot, no folder", extension, "movie", "");
    row("extension: dot only in a folder", extension, "/v.d/movie", "");
}

void TestZBMediaTypes::nameHelpers()
{
    QFETCH(NameHelper, helper);
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QCOMPARE(helper(input), expected);
}

QTEST_GUILESS_MAIN(TestZBMediaTypes)
#include "tst_zbmediatypes.moc"
