#include <cmath>
#include <limits>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringEncoder>
#include <QTest>

#include "library/zbpropertylist.h"
#include "support/testsupport.h"

namespace
{
QVariant roundTrip(const QVariant &value)
{
    QString error;
    const std::optional<QByteArray> document = ZBPropertyList::write(value, &error);
    const std::optional<QVariant> back = ZBPropertyList::read(document.value_or(QByteArray()), &error);
    if (!document || !back)
        qWarning() << error;
    return back.value_or(QVariant());
}

QByteArray plist(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body + "</plist>";
}

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

// Every kind of value, nested, with the texts most likely to be mangled; no
// carriage return, which plistlib turns into a line feed.
QVariantMap everything()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i));
    const QVariantMap inner{{QStringLiteral("when"), utc(1999, 12, 31, 23, 59, 58)},
                            {QStringLiteral("bytes"), bytes},
                            {QStringLiteral("empty dict"), QVariantMap()}};
    return QVariantMap{{QStringLiteral("Name"), QStringLiteral("Ünïcødé 日本語 🎬 <&> \"q\" 'a' ]]>")},
                       {QStringLiteral("  spaced key\t"), QStringLiteral("  one\ntwo\tthree  ")},
                       {QStringLiteral("empty"), QStringLiteral("")},
                       {QStringLiteral("huge"), std::numeric_limits<qulonglong>::max()},
                       {QStringLiteral("ratio"), -2.5e-300},
                       {QStringLiteral("no"), false},
                       {QStringLiteral("list"), QVariantList{qlonglong(-42), QVariantList{inner}, QVariantList()}},
                       {QStringLiteral("inner"), inner}};
}
} // namespace

class TestZBPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesSurviveARoundTrip_data();
    void valuesSurviveARoundTrip();
    void documentsAsWritten();
    void readsWhatOtherWritersWrite_data();
    void readsWhatOtherWritersWrite();
    void anotherReaderAndWriterAgree();
    void malformedDocumentsAreRefused_data();
    void malformedDocumentsAreRefused();
    void valuesWithoutAPropertyListFormAreRefused_data();
    void valuesWithoutAPropertyListFormAreRefused();
    void files();
};

void TestZBPropertyList::valuesSurviveARoundTrip_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("expected");

    const auto same = [](const char *name, const QVariant &value)
    {
        QTest::newRow(name) << value << value;
    };
    same("markup and unicode", QStringLiteral("<dict>&amp; \"q\" ]]> </string> Ölçü 東京 🎞️ 𝄞"));
    same("carriage returns, line ends, padding", QStringLiteral("  a\r\nb\rc\n\td "));
    same("smallest", std::numeric_limits<qlonglong>::min());
    same("beyond signed", std::numeric_limits<qulonglong>::max());
    same("tiny real", 5e-324);
    same("infinity", -std::numeric_limits<double>::infinity());
    same("late date", utc(9999, 12, 31, 23, 59, 59));
    same("data", QByteArray("\x00\x01\xff binary \n", 12));
    same("nested", everything());

    // Narrower types are written as what a reader gives back; dates as
    // whole seconds in UTC.
    QTest::newRow("float") << QVariant(float(0.5)) << QVariant(0.5);
    QTest::newRow("string list") << QVariant(QStringList{"a", "b"})
                                 << QVariant(QVariantList{QStringLiteral("a"), QStringLiteral("b")});
    QTest::newRow("hash") << QVariant(QVariantHash{{QStringLiteral("k"), qlonglong(1)}})
                          << QVariant(QVariantMap{{QStringLiteral("k"), qlonglong(1)}});
    QTest::newRow("date with an offset and milliseconds")
        << QVariant(QDateTime(QDate(2024, 3, 5), QTime(16, 5, 9, 987), Qt::OffsetFromUTC, 7200))
        << QVariant(utc(2024, 3, 5, 14, 5, 9));
    QVariant deep = QStringLiteral("bottom");
    for (int level = 0; level < ZBPropertyList::MaximumDepth - 1; ++level)
        deep = level % 2 ? QVariant(QVariantList{deep}) : QVariant(QVariantMap{{QStringLiteral("k"), deep}});
    QTest::newRow("deepest") << deep << deep;
}

void TestZBPropertyList::valuesSurviveARoundTrip()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, expected);
    const QVariant back = roundTrip(value);
    QCOMPARE(back.metaType().id(), expected.metaType().id());
    QCOMPARE(back, expected);
    // The library tells an empty text from an absent one.
    QVERIFY(expected.metaType().id() != QMetaType::QString || !back.toString().isNull());
    if (expected.metaType().id() == QMetaType::QDateTime)
        QCOMPARE(back.toDateTime().timeSpec(), Qt::UTC);
}

void TestZBPropertyList::documentsAsWritten()
{
    const QByteArray document = ZBPropertyList::write(QVariantMap{{QStringLiteral("a"), true}}).value_or(QByteArray());
    QVERIFY2(
        document.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
                            "\"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                            "<plist version=\"1.0\">\n\t<dict>\n\t\t<key>a</key>\n\t\t<true/>\n\t</dict>\n</plist>"),
        document.constData());

    // A carriage return is kept as a character reference.
    const QByteArray text =
        ZBPropertyList::write(QVariantList{QStringLiteral("a\rb"), utc(2024, 3, 5, 14, 5, 9)}).value_or(QByteArray());
    QVERIFY2(text.contains("<string>a&#13;b</string>"), text.constData());
    QVERIFY2(text.contains("<date>2024-03-05T14:05:09Z</date>"), text.constData());

    const QVariant nan = roundTrip(std::numeric_limits<double>::quiet_NaN());
    QVERIFY(nan.metaType().id() == QMetaType::Double && std::isnan(nan.toDouble()));
}

void TestZBPropertyList::readsWhatOtherWritersWrite_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("comments, no declaration or version")
        << QByteArray("<!-- a --><plist><?app hint?><dict><!-- b --><key>k</key><integer>1</integer></dict></plist>")
        << QVariant(QVariantMap{{QStringLiteral("k"), qlonglong(1)}});
    QTest::newRow("self-closing empties") << plist("<array><string/><dict/><data/></array>")
                                          << QVariant(QVariantList{QStringLiteral(""), QVariantMap(), QByteArray()});
    QTest::newRow("cdata and references")
        << plist("<string><![CDATA[<b>]]>&#x1F3AC;&#233;&lt;&#13;</string>") << QVariant(QStringLiteral("<b>🎬é<\r"));
    QTest::newRow("numbers in other forms")
        << plist("<array><integer> +5 </integer><integer>0x1F</integer><real>-1.5E3</real><real>3</real></array>")
        << QVariant(QVariantList{qlonglong(5), qlonglong(31), -1500.0, 3.0});
    QTest::newRow("wrapped base64, padded and short dates")
        << plist("<array><data>\n\tTm9y\n\tdmlr\n</data><date>\n2024-03-05T14:05:09Z\n</date>"
                 "<date>2024-02-29T14:05Z</date></array>")
        << QVariant(QVariantList{QByteArray("Norvik"), utc(2024, 3, 5, 14, 5, 9), utc(2024, 2, 29, 14, 5)});
    QStringEncoder utf16(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom);
    QTest::newRow("utf-16") << QByteArray(utf16.encode(QStringLiteral(
                                   "<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>Ö</string></plist>")))
                            << QVariant(QStringLiteral("Ö"));
}

void TestZBPropertyList::readsWhatOtherWritersWrite()
{
    QFETCH(QByteArray, document);
    QFETCH(QVariant, expected);
    QString error;
    const std::optional<QVariant> value = ZBPropertyList::read(document, &error);
    QVERIFY2(value, qPrintable(error));
    QCOMPARE(*value, expected);
}

void TestZBPropertyList::anotherReaderAndWriterAgree()
{
    // Python's plistlib stands for the rest of the world: it must take our
    // files, and what it writes back must read as the value we started with.
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        QSKIP("python3 is not installed");
    QProcess process;
    process.start(python, {QStringLiteral("-c"),
                           QStringLiteral("import plistlib, sys\n"
                                          "value = plistlib.loads(sys.stdin.buffer.read())\n"
                                          "sys.stdout.buffer.write(plistlib.dumps(value, fmt=plistlib.FMT_XML))\n")});
    QVERIFY(process.waitForStarted());
    process.write(ZBPropertyList::write(everything()).value_or(QByteArray()));
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(60000));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
    QString error;
    const std::optional<QVariant> back = ZBPropertyList::read(process.readAllStandardOutput(), &error);
    QVERIFY2(back, qPrintable(error));
    QCOMPARE(back->toMap(), everything());
}

void TestZBPropertyList::malformedDocumentsAreRefused_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("because");

    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("other root") << QByteArray("<dict><key>a</key><true/></dict>") << "not <plist>";
    QTest::newRow("unknown element") << plist("<dict><key>a</key><number>1</number></dict>") << "<number>";
    QTest::newRow("key followed by key") << plist("<dict><key>a</key><key>b</key><true/></dict>")
                                         << "\"a\" has no value";
    QTest::newRow("key twice") << plist("<dict><key>a</key><true/><key>a</key><false/></dict>") << "twice";
    QTest::newRow("integer with a point") << plist("<integer>1.5</integer>") << "whole number";
    QTest::newRow("integer too small") << plist("<integer>-9223372036854775809</integer>") << "64 bits";
    QTest::newRow("bad base64") << plist("<data>*not base64*</data>") << "base64";
    for (const char *date :
         {"2024-03-05T14:05:09", "2024-03-05T14:05:09.5Z", "2023-02-29T00:00:00Z", "2024-03-05T24:00:00Z"})
        QTest::addRow("date %s", date) << plist(QByteArray("<date>") + date + "</date>") << "not a date";
    QTest::newRow("undeclared entity") << plist("<string>a&nbsp;b</string>") << "nbsp";
    QTest::newRow("nested too deep") << plist(QByteArray("<array>").repeated(ZBPropertyList::MaximumDepth + 1))
                                     << "nested more than";
}

void TestZBPropertyList::malformedDocumentsAreRefused()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, because);
    nvktest::DataDir dir;
    QFile file(dir.filePath(QStringLiteral("damaged.plist")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(document) == document.size());
    file.close();
    QString error;
    const std::optional<QVariant> value = ZBPropertyList::readFile(file.fileName(), &error);
    QVERIFY2(!value, qPrintable(value ? value->toString() : QString()));
    // Where, then why: the user has to find the fault in the file.
    QVERIFY2(error.startsWith(file.fileName() + QStringLiteral(", line ")), qPrintable(error));
    QVERIFY2(error.contains(because), qPrintable(error));
    QVERIFY2(error.section(u':', 1).trimmed().size() > 3, qPrintable(error));
}

void TestZBPropertyList::valuesWithoutAPropertyListFormAreRefused_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("because");

    QTest::newRow("year beyond 9999") << QVariant(utc(10000, 1, 1)) << "9999";
    QTest::newRow("control character") << QVariant(QStringLiteral("bell\x07")) << "U+0007";
    QTest::newRow("lone surrogate") << QVariant(QString(QChar(0xD83C))) << "U+D83C";
    QTest::newRow("place in an array") << QVariant(QVariantList{true, QVariantList{QVariant()}}) << "at 1/0:";
    QTest::newRow("key with a control character")
        << QVariant(QVariantMap{{QStringLiteral("a\x01"), true}}) << "key holds the character U+0001";
}

void TestZBPropertyList::valuesWithoutAPropertyListFormAreRefused()
{
    QFETCH(QVariant, value);
    QFETCH(QString, because);
    QString error;
    const std::optional<QByteArray> document = ZBPropertyList::write(value, &error);
    QVERIFY2(!document, document ? document->constData() : "");
    QVERIFY2(error.contains(because), qPrintable(error));

    // Nothing half-written replaces a file that was there.
    nvktest::DataDir dir;
    const QString path = dir.filePath(QStringLiteral("kept.plist"));
    QVERIFY(ZBPropertyList::writeFile(path, QStringLiteral("before")));
    QVERIFY(!ZBPropertyList::writeFile(path, value, &error));
    QCOMPARE(ZBPropertyList::readFile(path).value_or(QVariant()), QVariant(QStringLiteral("before")));
}

void TestZBPropertyList::files()
{
    nvktest::DataDir dir;
    QString error;
    const QString missing = dir.filePath(QStringLiteral("missing.plist"));
    QVERIFY(!ZBPropertyList::readFile(missing, &error));
    QVERIFY2(error.contains(missing) && error.contains(QLatin1String("cannot open")), qPrintable(error));
    QVERIFY(
        !ZBPropertyList::writeFile(dir.filePath(QStringLiteral("no such folder/list.plist")), QVariantMap(), &error));
    QVERIFY2(error.contains(QLatin1String("cannot write")), qPrintable(error));
}

QTEST_GUILESS_MAIN(TestZBPropertyList)
#include "tst_zbpropertylist.moc"
