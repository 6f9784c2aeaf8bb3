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
    void registeredTypes_data();
    void registeredTypes();
    void nameHelpers_data();
    void nameHelpers();
};

void TestZBMediaTypes::registeredTypes_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("registered");
    for (const QString &type : ZBMediaTypes::getSupportedFileTypes())
        QTest::newRow(qPrintable(type)) << type << true;
    QTest::newRow("3G2") << "3G2" << true;
    QTest::newRow("upper MP4") << "MP4" << true;
    QTest::newRow("quoted appl any case") << "'appl'" << true;
    QTest::newRow("APPL without quotes") << "APPL" << false;
    QTest::newRow("mp3") << "mp3" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("dotted") << ".mp4" << false;
    QTest::newRow("padded") << " mp4" << false;
    QTest::newRow("prefix of a type") << "mp" << false;
}

void TestZBMediaTypes::registeredTypes()
{
    QFETCH(QString, extension);
    QFETCH(bool, registered);
    QCOMPARE(ZBMediaTypes::isRegisteredType(extension), registered);
    // Open panels take the supported list: 3g2 is registered but left out.
    QVERIFY(!ZBMediaTypes::getSupportedFileTypes().contains("3g2", Qt::CaseInsensitive));
}

void TestZBMediaTypes::nameHelpers_data()
{
    QTest::addColumn<NameHelper>("helper");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");

    const NameHelper type = &ZBMediaTypes::getFileType;
    const NameHelper name = &ZBMediaTypes::getFileNameFromPath;
    const NameHelper stem = &ZBMediaTypes::getFileNameWithoutExtension;
    const NameHelper extension = &ZBMediaTypes::pathExtension;
    const auto row = [](const char *what, const NameHelper &helper, const char *input, const char *expected)
    {
        QTest::newRow(what) << helper << QString::fromUtf8(input) << QString::fromUtf8(expected);
    };

    row("type: plain", type, "/home/u/Movies/clip.mp4", "mp4");
    row("type: case kept", type, "Clip.MOV", "MOV");
    row("type: last dot wins", type, "a.tar.swf", "swf");
    row("type: dot in a folder", type, "/media/v.1/clip", "1/clip");
    row("type: ends in a dot", type, "movie.", "");
    row("type: empty", type, "", "");
    row("type: no dot drops the first character", type, "movie", "ovie");
    row("type: one character, no dot", type, "m", "");
    row("type: hidden file", type, ".swf", "swf");
    row("name: absolute", name, "/home/u/clip.mp4", "clip.mp4");
    row("name: no slash", name, "clip.mp4", "clip.mp4");
    row("name: trailing slash", name, "/home/u/", "unknown");
    row("name: empty", name, "", "unknown");
    row("name: spaces kept", name, "/v/My Clip .swf", "My Clip .swf");
    row("stem: plain", stem, "clip.mp4", "clip");
    row("stem: two dots", stem, "my.holiday.mov", "my.holiday");
    row("stem: no dot", stem, "README", "README");
    row("stem: empty stays empty", stem, "", "");
    row("stem: only an extension", stem, ".mp4", "unknown");
    row("stem: only a dot", stem, ".", "unknown");
    row("stem: trailing dot", stem, "clip.", "clip");
    row("extension: plain", extension, "/v/clip.SWF", "SWF");
    row("extension: no dot", extension, "/v/movie", "");
    row("extension: dot only in a folder", extension, "/v.d/movie", "");
    row("extension: trailing dot", extension, "/v/movie.", "");
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
