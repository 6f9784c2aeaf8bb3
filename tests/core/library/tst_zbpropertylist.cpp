#include <cmath>
#include <limits>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringEncoder>
#include <QTest>
#include <QUrl>

#include "library/zbpropertylist.h"
#include "support/testsupport.h"

namespace
{
QVariant roundTrip(const QVariant &value)
{
    QString error;
    const std::optional<QByteArray> document = ZBPropertyList::write(value, &error);
    if (!document)
    {
        qWarning() << "write:" << error;
        return QVariant();
    }
    const std::optional<QVariant> back = ZBPropertyList::read(*document, &error);
    if (!back)
    {
        qWarning() << "read:" << error << *document;
        return QVariant();
    }
    return *back;
}

QByteArray plist(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body + "</plist>";
}

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

// Every kind of value, nested, with the texts most likely to be mangled.
QVariantMap everything()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i));
    QVariantMap inner;
    inner.insert(QStringLiteral("when"), utc(1999, 12, 31, 23, 59, 58));
    inner.insert(QStringLiteral("bytes"), bytes);
    inner.insert(QStringLiteral("empty dict"), QVariantMap());
    inner.insert(QStringLiteral("empty list"), QVariantList());
    QVariantMap root;
    root.insert(QStringLiteral("Name"), QStringLiteral("Ünïcødé 日本語 🎬 <&> \"q\" 'a' ]]>"));
    root.insert(QStringLiteral("  spaced key\t"), QStringLiteral("  leading and trailing  "));
    root.insert(QStringLiteral("lines"), QStringLiteral("one\ntwo\tthree"));
    root.insert(QStringLiteral("empty"), QStringLiteral(""));
    root.insert(QStringLiteral("count"), qlonglong(-42));
    root.insert(QStringLiteral("big"), std::numeric_limits<qlonglong>::max());
    root.insert(QStringLiteral("huge"), std::numeric_limits<qulonglong>::max());
    root.insert(QStringLiteral("ratio"), 0.1);
    root.insert(QStringLiteral("tiny"), -2.5e-300);
    root.insert(QStringLiteral("yes"), true);
    root.insert(QStringLiteral("no"), false);
    root.insert(QStringLiteral("list"), QVariantList{qlonglong(1), QStringLiteral("two"), QVariantList{inner}, 3.5});
    root.insert(QStringLiteral("inner"), inner);
    return root;
}
} // namespace

class TestZBPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesSurviveARoundTrip_data();
    void valuesSurviveARoundTrip();
    void nestedValuesSurviveARoundTrip();
    void specialRealsSurviveARoundTrip();
    void documentsCarryTheStandardHeader();
    void datesAreWholeSecondsInUTC();
    void dateTexts_data();
    void dateTexts();
    void readsWhatOtherWritersWrite_data();
    void readsWhatOtherWritersWrite();
    void anotherReaderAndWriterAgree();
    void malformedDocumentsAreRefused_data();
    void malformedDocumentsAreRefused();
    void valuesWithoutAPropertyListFormAreRefused_data();
    void valuesWithoutAPropertyListFormAreRefused();
    void filesThatCannotBeReadOrWritten();
};

void TestZBPropertyList::valuesSurviveARoundTrip_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("expected");

    const auto same = [](const char *name, const QVariant &value) {
        QTest::newRow(name) << value << value;
    };
    same("plain text", QStringLiteral("Holiday Movie"));
    same("empty text", QStringLiteral(""));
    same("markup characters", QStringLiteral("<dict>&amp; \"quoted\" 'single' ]]> </string>"));
    same("unicode", QStringLiteral("Ölçü ñandú 東京 Привет 🎞️ 𝄞"));
    same("carriage returns and line ends", QStringLiteral("a\r\nb\rc\n\td"));
    same("surrounding whitespace", QStringLiteral("  \n padded \t "));
    same("zero", qlonglong(0));
    same("negative", qlonglong(-1));
    same("largest", std::numeric_limits<qlonglong>::max());
    same("smallest", std::numeric_limits<qlonglong>::min());
    same("beyond signed", std::numeric_limits<qulonglong>::max());
    same("real", 3.141592653589793);
    same("tiny real", 5e-324);
    same("large real", -1.7976931348623157e308);
    same("true", true);
    same("false", false);
    same("date", utc(2024, 3, 5, 14, 5, 9));
    same("early date", utc(1, 1, 1));
    same("late date", utc(9999, 12, 31, 23, 59, 59));
    same("reference date", utc(2001, 1, 1));
    same("empty data", QByteArray(""));
    same("data", QByteArray("\x00\x01\xff binary \n", 12));
    same("empty dict", QVariantMap());
    same("empty array", QVariantList());

    // Narrower types are written as what a reader gives back.
    QTest::newRow("int") << QVariant(int(-7)) << QVariant(qlonglong(-7));
    QTest::newRow("unsigned") << QVariant(uint(7)) << QVariant(qlonglong(7));
    QTest::newRow("float") << QVariant(float(0.5)) << QVariant(0.5);
    QTest::newRow("string list") << QVariant(QStringList{"a", "b"})
                                 << QVariant(QVariantList{QStringLiteral("a"), QStringLiteral("b")});
    QVariantHash hash;
    hash.insert(QStringLiteral("k"), qlonglong(1));
    QTest::newRow("hash") << QVariant(hash) << QVariant(QVariantMap{{QStringLiteral("k"), qlonglong(1)}});
    QTest::newRow("date with an offset") << QVariant(
                                                QDateTime(QDate(2024, 3, 5), QTime(16, 5, 9), Qt::OffsetFromUTC, 7200))
                                         << QVariant(utc(2024, 3, 5, 14, 5, 9));
}

void TestZBPropertyList::valuesSurviveARoundTrip()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, expected);
    const QVariant back = roundTrip(value);
    QCOMPARE(back.metaType().id(), expected.metaType().id());
    QCOMPARE(back, expected);
    // The library tells an empty text from an absent one.
    if (expected.metaType().id() == QMetaType::QString)
        QVERIFY(!back.toString().isNull());
}

void TestZBPropertyList::nestedValuesSurviveARoundTrip()
{
    const QVariantMap original = everything();
    const QVariant back = roundTrip(original);
    QCOMPARE(back.metaType().id(), QMetaType::QVariantMap);
    QCOMPARE(back.toMap(), original);

    // Deep but within bounds: each level is read back where it was.
    QVariant deep = QStringLiteral("bottom");
    for (int level = 0; level < ZBPropertyList::MaximumDepth - 1; ++level)
        deep = level % 2 ? QVariant(QVariantList{deep}) : QVariant(QVariantMap{{QStringLiteral("k"), deep}});
    QCOMPARE(roundTrip(deep), deep);
}

void TestZBPropertyList::specialRealsSurviveARoundTrip()
{
    QCOMPARE(roundTrip(std::numeric_limits<double>::infinity()).toDouble(), std::numeric_limits<double>::infinity());
    QCOMPARE(roundTrip(-std::numeric_limits<double>::infinity()).toDouble(), -std::numeric_limits<double>::infinity());
    const QVariant nan = roundTrip(std::numeric_limits<double>::quiet_NaN());
    QCOMPARE(nan.metaType().id(), QMetaType::Double);
    QVERIFY(std::isnan(nan.toDouble()));
}

void TestZBPropertyList::documentsCarryTheStandardHeader()
{
    const QByteArray document = ZBPropertyList::write(QVariantMap{{QStringLiteral("a"), true}}).value_or(QByteArray());
    const QList<QByteArray> lines = document.split('\n');
    QVERIFY2(lines.size() > 4, document.constData());
    QVERIFY(lines.at(0).startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    QCOMPARE(lines.at(1), QByteArray("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"));
    QCOMPARE(lines.at(2), QByteArray("<plist version=\"1.0\">"));
    QVERIFY(document.contains("\t<dict>\n\t\t<key>a</key>\n\t\t<true/>\n\t</dict>\n</plist>"));

    // A carriage return is kept as a character reference; empty text as an
    // element with nothing in it.
    const QByteArray text =
        ZBPropertyList::write(QVariantList{QStringLiteral("a\rb"), QStringLiteral("")}).value_or(QByteArray());
    QVERIFY2(text.contains("<string>a&#13;b</string>"), text.constData());
    QVERIFY2(text.contains("<string></string>"), text.constData());
}

void TestZBPropertyList::datesAreWholeSecondsInUTC()
{
    const QDateTime precise = utc(2024, 3, 5, 14, 5, 9).addMSecs(987);
    const QByteArray document = ZBPropertyList::write(precise).value_or(QByteArray());
    QVERIFY2(document.contains("<date>2024-03-05T14:05:09Z</date>"), document.constData());
    const QDateTime back = roundTrip(precise).toDateTime();
    QCOMPARE(back, utc(2024, 3, 5, 14, 5, 9));
    QCOMPARE(back.timeSpec(), Qt::UTC);
}

void TestZBPropertyList::dateTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("expected");

    QTest::newRow("complete") << "2024-03-05T14:05:09Z" << utc(2024, 3, 5, 14, 5, 9);
    QTest::newRow("no seconds") << "2024-03-05T14:05Z" << utc(2024, 3, 5, 14, 5);
    QTest::newRow("hour only") << "2024-03-05T14Z" << utc(2024, 3, 5, 14);
    QTest::newRow("day") << "2024-03-05Z" << utc(2024, 3, 5);
    QTest::newRow("month") << "2024-03Z" << utc(2024, 3, 1);
    QTest::newRow("year") << "2024Z" << utc(2024, 1, 1);
    QTest::newRow("leap day") << "2024-02-29T00:00:00Z" << utc(2024, 2, 29);

    QTest::newRow("without Z") << "2024-03-05T14:05:09" << QDateTime();
    QTest::newRow("with an offset") << "2024-03-05T14:05:09+01:00" << QDateTime();
    QTest::newRow("fractions") << "2024-03-05T14:05:09.5Z" << QDateTime();
    QTest::newRow("blank for T") << "2024-03-05 14:05:09Z" << QDateTime();
    QTest::newRow("no such month") << "2024-13-01T00:00:00Z" << QDateTime();
    QTest::newRow("no such day") << "2023-02-29T00:00:00Z" << QDateTime();
    QTest::newRow("no such hour") << "2024-03-05T24:00:00Z" << QDateTime();
    QTest::newRow("short year") << "24-03-05Z" << QDateTime();
    QTest::newRow("empty") << "" << QDateTime();
}

void TestZBPropertyList::dateTexts()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, expected);
    const QDateTime parsed = ZBPropertyList::dateFromText(text);
    QCOMPARE(parsed.isValid(), expected.isValid());
    if (expected.isValid())
    {
        QCOMPARE(parsed, expected);
        QCOMPARE(parsed.timeSpec(), Qt::UTC);
    }
}

void TestZBPropertyList::readsWhatOtherWritersWrite_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("no declaration, doctype or version")
        << QByteArray("<plist><string>x</string></plist>") << QVariant(QStringLiteral("x"));
    QTest::newRow("comments and instructions")
        << plist("<!-- a --><?app hint?><dict><!-- b --><key>k</key><!-- c --><integer>1</integer></dict>")
        << QVariant(QVariantMap{{QStringLiteral("k"), qlonglong(1)}});
    QTest::newRow("self-closing empties")
        << plist("<array><string/><dict/><array/><data/></array>")
        << QVariant(QVariantList{QStringLiteral(""), QVariantMap(), QVariantList(), QByteArray()});
    QTest::newRow("cdata") << plist("<string><![CDATA[<b>&</b>]]></string>") << QVariant(QStringLiteral("<b>&</b>"));
    QTest::newRow("character references")
        << plist("<string>&#x1F3AC;&#233;&lt;&amp;&#13;</string>") << QVariant(QStringLiteral("🎬é<&\r"));
    QTest::newRow("declared entity")
        << QByteArray("<!DOCTYPE plist [<!ENTITY n \"Norvik\">]><plist><string>&n; Player</string></plist>")
        << QVariant(QStringLiteral("Norvik Player"));
    QTest::newRow("signed and hex integers")
        << plist("<array><integer> +5 </integer><integer>0x1F</integer><integer>-0</integer></array>")
        << QVariant(QVariantList{qlonglong(5), qlonglong(31), qlonglong(0)});
    QTest::newRow("integral and exponent reals")
        << plist("<array><real>3</real><real>-1.5E3</real><real>+infinity</real></array>")
        << QVariant(QVariantList{3.0, -1500.0, std::numeric_limits<double>::infinity()});
    QTest::newRow("wrapped base64") << plist("<data>\n\tTm9y\n\tdmlr\n</data>") << QVariant(QByteArray("Norvik"));
    QTest::newRow("padded date") << plist("<date>\n2024-03-05T14:05:09Z\n</date>")
                                 << QVariant(utc(2024, 3, 5, 14, 5, 9));
    QStringEncoder utf16(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom);
    const QByteArray wide =
        utf16.encode(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>Ö</string></plist>"));
    QTest::newRow("utf-16") << wide << QVariant(QStringLiteral("Ö"));
}

void TestZBPropertyList::readsWhatOtherWritersWrite()
{
    QFETCH(QByteArray, document);
    QFETCH(QVariant, expected);
    QString error;
    const std::optional<QVariant> value = ZBPropertyList::read(document, &error);
    QVERIFY2(value, qPrintable(error));
    QVERIFY(error.isEmpty());
    QCOMPARE(*value, expected);
}

void TestZBPropertyList::anotherReaderAndWriterAgree()
{
    // Python's plistlib stands for the rest of the world: it must take our
    // files, and what it writes back must read as the value we started with.
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        QSKIP("python3 is not installed");
    // No carriage returns in it: plistlib turns them into line feeds.
    const QVariantMap value = everything();
    const QByteArray document = ZBPropertyList::write(value).value_or(QByteArray());
    QVERIFY(!document.isEmpty());

    QProcess process;
    process.start(python, {QStringLiteral("-c"),
                           QStringLiteral("import plistlib, sys\n"
                                          "value = plistlib.loads(sys.stdin.buffer.read())\n"
                                          "sys.stdout.buffer.write(plistlib.dumps(value, fmt=plistlib.FMT_XML))\n")});
    QVERIFY(process.waitForStarted());
    process.write(document);
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(60000));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
    const QByteArray rewritten = process.readAllStandardOutput();

    QString error;
    const std::optional<QVariant> back = ZBPropertyList::read(rewritten, &error);
    QVERIFY2(back, qPrintable(error + u'\n' + QString::fromUtf8(rewritten)));
    QCOMPARE(back->toMap(), value);
}

void TestZBPropertyList::malformedDocumentsAreRefused_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("because");

    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("not XML") << QByteArray("Name = Road trip") << "";
    QTest::newRow("unclosed") << plist("<dict><key>a</key><string>b</string>") << "";
    QTest::newRow("cut short") << QByteArray("<plist><dict><key>a</key><str") << "";
    QTest::newRow("crossed tags") << plist("<array><string>a</array></string>") << "";
    QTest::newRow("other root") << QByteArray("<dict><key>a</key><true/></dict>") << "not <plist>";
    QTest::newRow("empty plist") << plist("") << "holds no value";
    QTest::newRow("two values") << plist("<string>a</string><string>b</string>") << "more than one value";
    QTest::newRow("unknown version") << QByteArray("<plist version=\"2.0\"><true/></plist>") << "version";
    QTest::newRow("unknown element") << plist("<dict><key>a</key><number>1</number></dict>") << "<number>";
    QTest::newRow("last key without value")
        << plist("<dict><key>a</key><true/><key>b</key></dict>") << "\"b\" has no value";
    QTest::newRow("key followed by key") << plist("<dict><key>a</key><key>b</key><true/></dict>")
                                         << "\"a\" has no value";
    QTest::newRow("value without key") << plist("<dict><string>a</string></dict>") << "no <key>";
    QTest::newRow("key outside dict") << plist("<array><key>a</key></array>") << "outside a <dict>";
    QTest::newRow("key twice") << plist("<dict><key>a</key><true/><key>a</key><false/></dict>") << "twice";
    QTest::newRow("element in text") << plist("<string>a<b>bold</b></string>") << "only text";
    QTest::newRow("element in key") << plist("<dict><key><string>a</string></key><true/></dict>") << "only text";
    QTest::newRow("stray text") << plist("<array>loose<true/></array>") << "outside any value";
    QTest::newRow("text in true") << plist("<true>yes</true>") << "<true/>";
    QTest::newRow("integer with letters") << plist("<integer>12abc</integer>") << "whole number";
    QTest::newRow("integer with a point") << plist("<integer>1.5</integer>") << "whole number";
    QTest::newRow("empty integer") << plist("<integer></integer>") << "whole number";
    QTest::newRow("two signs") << plist("<integer>--3</integer>") << "whole number";
    QTest::newRow("integer too large") << plist("<integer>18446744073709551616</integer>") << "64 bits";
    QTest::newRow("integer too small") << plist("<integer>-9223372036854775809</integer>") << "64 bits";
    QTest::newRow("real with letters") << plist("<real>fast</real>") << "not a number";
    QTest::newRow("real overflowing") << plist("<real>1e999</real>") << "not a number";
    QTest::newRow("bad date") << plist("<date>yesterday</date>") << "not a date";
    QTest::newRow("bad base64") << plist("<data>*not base64*</data>") << "base64";
    QTest::newRow("undeclared entity") << QByteArray("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"
                                                     "<plist><string>a&nbsp;b</string></plist>")
                                       << "&nbsp;";
    QTest::newRow("content after the root") << plist("<true/>") + "<plist><true/></plist>"
                                            << "";
    QByteArray deep;
    for (int level = 0; level <= ZBPropertyList::MaximumDepth; ++level)
        deep += "<array>";
    QTest::newRow("nested too deep") << plist(deep) << "nested more than";
}

void TestZBPropertyList::malformedDocumentsAreRefused()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, because);
    QString error;
    const std::optional<QVariant> value = ZBPropertyList::read(document, &error);
    QVERIFY2(!value, qPrintable(value ? value->toString() : QString()));
    // Where, then why: the user has to find the fault in the file.
    QVERIFY2(error.startsWith(QLatin1String("line ")), qPrintable(error));
    QVERIFY2(error.contains(because), qPrintable(error));
    QVERIFY2(error.section(u':', 1).trimmed().size() > 3, qPrintable(error));
}

void TestZBPropertyList::valuesWithoutAPropertyListFormAreRefused_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("because");

    QTest::newRow("no value") << QVariant() << "no value";
    QTest::newRow("url") << QVariant(QUrl(QStringLiteral("http://example.net/"))) << "QUrl";
    QTest::newRow("invalid date") << QVariant(QDateTime()) << "not valid";
    QTest::newRow("year beyond 9999") << QVariant(utc(10000, 1, 1)) << "9999";
    QTest::newRow("control character") << QVariant(QStringLiteral("bell\x07")) << "U+0007";
    QTest::newRow("lone surrogate") << QVariant(QString(QChar(0xD83C))) << "U+D83C";
    QTest::newRow("not a character") << QVariant(QString(QChar(0xFFFF))) << "U+FFFF";

    QVariantMap track;
    track.insert(QStringLiteral("Added"), QDateTime());
    QVariantMap root;
    root.insert(QStringLiteral("0"), track);
    QTest::newRow("place in a dict") << QVariant(root) << "at 0/Added:";
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

void TestZBPropertyList::filesThatCannotBeReadOrWritten()
{
    nvktest::DataDir dir;
    QString error;
    const QString missing = dir.filePath(QStringLiteral("missing.plist"));
    QVERIFY(!ZBPropertyList::readFile(missing, &error));
    QVERIFY2(error.contains(missing), qPrintable(error));

    QVERIFY(!ZBPropertyList::readFile(dir.path(), &error));
    QVERIFY2(error.contains(QLatin1String("cannot open")), qPrintable(error));

    const QString nowhere = dir.filePath(QStringLiteral("no such folder/list.plist"));
    QVERIFY(!ZBPropertyList::writeFile(nowhere, QVariantMap(), &error));
    QVERIFY2(error.contains(QLatin1String("cannot write")), qPrintable(error));

    const QString damaged = dir.filePath(QStringLiteral("damaged.plist"));
    QFile file(damaged);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(plist("<dict><key>a</key></dict>"));
    file.close();
    QVERIFY(!ZBPropertyList::readFile(damaged, &error));
    QVERIFY2(error.startsWith(damaged + QStringLiteral(", line 2, column ")) && error.contains(QLatin1String("\"a\"")),
             qPrintable(error));

    const QString written = dir.filePath(QStringLiteral("written.plist"));
    QVERIFY(ZBPropertyList::writeFile(written, everything(), &error));
    QCOMPARE(ZBPropertyList::readFile(written, &error).value_or(QVariant()).toMap(), everything());
}

QTEST_GUILESS_MAIN(TestZBPropertyList)
#include "tst_zbpropertylist.moc"
