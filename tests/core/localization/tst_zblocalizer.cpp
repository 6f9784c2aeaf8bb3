#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTranslator>
#include <QtTest>

#include "localization/zbcriticalerror.h"
#include "localization/zblocalizer.h"
#include "localization/zbmainmenudefinition.h"
#include "localization/zbmenuentryadapter.h"
#include "support/stringtablefixture.h"

using nvktest::StringTableFixture;

namespace
{
const QString kLocalizable = QStringLiteral("Localizable");
const QString kMainMenu = QStringLiteral("MainMenu");

QSet<QString> placeholders(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("%\\d+"));
    QSet<QString> found;
    for (auto it = pattern.globalMatch(text); it.hasNext();)
        found.insert(it.next().captured());
    return found;
}

void collectTitles(const QList<ZBMenuEntry> &entries, QStringList &titles)
{
    for (const ZBMenuEntry &entry : entries)
    {
        titles.append(entry.title);
        collectTitles(entry.children, titles);
    }
}

// Keys the sources name literally in a one-argument lookup, whichever helper
// wraps the localizer.
QStringList keysNamedInSources()
{
    static const QRegularExpression call(QString::fromLatin1(
        R"re(\b(?:localizedStringForKey|localized|text|tr)\((?:(?:QStringLiteral|QLatin1String)\("(\w+)"\)|"(\w+)")\))re"));
    QStringList keys;
    QDirIterator files(qEnvironmentVariable("NVK_SOURCE_DIR") + QStringLiteral("/src"), {QStringLiteral("*.cpp")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
    {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromUtf8(file.readAll());
        for (auto it = call.globalMatch(text); it.hasNext();)
        {
            const QRegularExpressionMatch match = it.next();
            keys.append(match.captured(1).isEmpty() ? match.captured(2) : match.captured(1));
        }
    }
    return keys;
}
} // namespace

class TestZBLocalizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void shippedTables();
    void translations_data();
    void translations();
    void mainMenuDefinitionIsFullyTranslated_data();
    void mainMenuDefinitionIsFullyTranslated();
    void fallbackChain_data();
    void fallbackChain();
    void languageChoice_data();
    void languageChoice();
    void missingEnglishTableIsCritical();
    void menuRetitling();
    void sizeToFit_data();
    void sizeToFit();
};

void TestZBLocalizer::initTestCase()
{
    // The developer's own choice must not leak into the expectations.
    qunsetenv("NVK_LANGUAGE");
}

void TestZBLocalizer::cleanup()
{
    ZBLocalizer::setResourceRoot(QString());
    ZBLocalizer::setLanguage(QString());
    qunsetenv("NVK_LANGUAGE");
}

void TestZBLocalizer::shippedTables()
{
    const QHash<QString, QString> localizable = ZBLocalizer::englishDictionaryForTable(kLocalizable);
    QCOMPARE(ZBLocalizer::englishDictionaryForTable(QString()), localizable);
    QVERIFY(!ZBLocalizer::englishDictionaryForTable(kMainMenu).isEmpty());
    QVERIFY(ZBLocalizer::availableLanguages().contains(QStringLiteral("German")));

    // A key without English text would show as the key itself.
    const QStringList keys = keysNamedInSources();
    QVERIFY(keys.size() > 30);
    QStringList missing;
    for (const QString &key : keys)
    {
        if (localizable.value(key).isEmpty())
            missing.append(key);
    }
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u", ")));

    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::okButtonTitle() + ZBLocalizer::cancelButtonTitle() + ZBLocalizer::yesButtonTitle() +
                 ZBLocalizer::noButtonTitle(),
             QStringLiteral("OKCancelYesNo"));
    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::cancelButtonTitle() + ZBLocalizer::yesButtonTitle() + ZBLocalizer::noButtonTitle(),
             QStringLiteral("AbbrechenJaNein"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu), QStringLiteral("Datei"));
    QCOMPARE(ZBLocalizer::nonLocalizedStringForKey(QStringLiteral("Button_Cancel_Title")), QStringLiteral("Cancel"));
    QCOMPARE(ZBLocalizer::nonLocalizedStringForKey(QStringLiteral("noSuchKey")), QStringLiteral("noSuchKey"));
}

void TestZBLocalizer::translations_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("table");
    for (const QString &language : ZBLocalizer::availableLanguages())
    {
        if (language == ZBLocalizer::englishLanguage())
            continue;
        for (const QString &table : {kLocalizable, kMainMenu})
            QTest::newRow(qPrintable(language + u'/' + table)) << language << table;
    }
}

void TestZBLocalizer::translations()
{
    QFETCH(QString, language);
    QFETCH(QString, table);
    // Asks the compiled table itself, so a message lrelease dropped counts as
    // missing even though the English fallback would hide it on screen.
    QTranslator translation;
    QVERIFY(translation.load(QStringLiteral(":/strings/%1/%2.qm").arg(language, table)));

    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable(table);
    QStringList missing;
    QStringList mismatched;
    for (auto it = english.cbegin(); it != english.cend(); ++it)
    {
        const QString translated = translation.translate(table.toUtf8().constData(), it.key().toUtf8().constData());
        if (translated.isEmpty())
            missing.append(it.key());
        else if (placeholders(translated) != placeholders(it.value()))
            mismatched.append(it.key());
    }
    QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("No translation for: ") + missing.join(u", ")));
    QVERIFY2(mismatched.isEmpty(), qPrintable(QStringLiteral("Placeholders differ in: ") + mismatched.join(u", ")));

    // The smart-list editor tells "all" from "any" by their shown titles.
    ZBLocalizer::setLanguage(language);
    QVERIFY(ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAll"))
                .compare(ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAny")),
                         Qt::CaseInsensitive) != 0);
}

void TestZBLocalizer::mainMenuDefinitionIsFullyTranslated_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &language : ZBLocalizer::availableLanguages())
        QTest::newRow(qPrintable(language)) << language;
}

void TestZBLocalizer::mainMenuDefinitionIsFullyTranslated()
{
    QFETCH(QString, language);
    ZBLocalizer::setLanguage(language);

    QList<ZBMenuEntry> menuBar = ZBMainMenuDefinition::mainMenu();
    QStringList before;
    collectTitles(menuBar, before);
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);
    QStringList after;
    collectTitles(menuBar, after);

    QCOMPARE(after.size(), before.size());
    for (int i = 0; i < after.size(); ++i)
    {
        QVERIFY2(!after.at(i).startsWith(QLatin1String("MainMenu_")), qPrintable(after.at(i)));
        QCOMPARE(after.at(i).isEmpty(), before.at(i).isEmpty());
        if (language == QLatin1String("English") && before.at(i) != ZBMainMenuDefinition::applicationMenuTitle())
            QCOMPARE(after.at(i), before.at(i));
    }
}

void TestZBLocalizer::fallbackChain_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("expected");

    QTest::newRow("translation wins") << "German"
                                      << "greeting"
                                      << ""
                                      << "Hallo";
    QTest::newRow("translation wins, named table") << "German"
                                                   << "greeting" << kLocalizable << "Hallo";
    QTest::newRow("English when the translation lacks it") << "German"
                                                           << "farewell"
                                                           << ""
                                                           << "Goodbye";
    QTest::newRow("English when the translation is unfinished") << "German"
                                                                << "draft"
                                                                << ""
                                                                << "Sketch";
    QTest::newRow("English when the language lacks the table") << "German"
                                                               << "MainMenu_File" << kMainMenu << "File";
    QTest::newRow("key when missing everywhere") << "German"
                                                 << "noSuchKey"
                                                 << ""
                                                 << "noSuchKey";
    QTest::newRow("key when missing in English") << "English"
                                                 << "noSuchKey"
                                                 << ""
                                                 << "noSuchKey";
}

void TestZBLocalizer::fallbackChain()
{
    QFETCH(QString, language);
    QFETCH(QString, key);
    QFETCH(QString, table);
    QFETCH(QString, expected);
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");

    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable,
                            {{"greeting", "Hello"}, {"farewell", "Goodbye"}, {"draft", "Sketch"}}));
    QVERIFY(tables.addTable("English", kMainMenu, {{"MainMenu_File", "File"}}));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Hallo"}, {"draft", "Entwurf"}}, {"draft"}),
             qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(language);
    QCOMPARE(ZBLocalizer::localizedStringForKey(key, table), expected);
    QCOMPARE(ZBLocalizer::localizedStringForKeyWithDefault(key, QStringLiteral("fallback"), table),
             expected == key ? QStringLiteral("fallback") : expected);
}

void TestZBLocalizer::languageChoice_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QLocale::Language>("locale");

    QTest::newRow("folder name, any case") << "german"
                                           << "German" << QLocale::German;
    QTest::newRow("locale name") << "de"
                                 << "German" << QLocale::German;
    QTest::newRow("locale with region") << "de_AT"
                                        << "German" << QLocale::German;
    QTest::newRow("English region") << "en-GB"
                                    << "English" << QLocale::English;
    QTest::newRow("unknown falls back to English") << "Elvish"
                                                   << "English" << QLocale::English;
}

void TestZBLocalizer::languageChoice()
{
    QFETCH(QString, asked);
    QFETCH(QString, language);
    QFETCH(QLocale::Language, locale);

    if (asked == QLatin1String("Elvish"))
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("No string tables for the language")));
    ZBLocalizer::setLanguage(asked);
    QCOMPARE(ZBLocalizer::language(), language);
    QCOMPARE(ZBLocalizer::locale().language(), locale);

    // The environment decides only when nothing was chosen.
    qputenv("NVK_LANGUAGE", "German");
    QCOMPARE(ZBLocalizer::language(), language);
    ZBLocalizer::setLanguage(QString());
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
}

void TestZBLocalizer::missingEnglishTableIsCritical()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));
    // Once loaded, the table no longer needs its file.
    QVERIFY(QFile::remove(QDir(tables.root()).filePath(QStringLiteral("English/Localizable.ts"))));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));

    try
    {
        ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu);
        QFAIL("a missing English table was accepted");
    }
    catch (const ZBCriticalError &error)
    {
        QCOMPARE(error.name(), QStringLiteral("Critical error"));
        QCOMPARE(error.reason(), QStringLiteral("MainMenu.strings not found"));
        QVERIFY(QString::fromUtf8(error.what()).contains(error.reason()));
    }

    // The default table, asked for by an empty name, is named in the reason.
    ZBLocalizer::setResourceRoot(QDir(tables.root()).filePath(QStringLiteral("nothing-here")));
    try
    {
        ZBLocalizer::englishDictionaryForTable(QString());
        QFAIL("a missing English table was accepted");
    }
    catch (const ZBCriticalError &error)
    {
        QCOMPARE(error.reason(), QStringLiteral("Localizable.strings not found"));
    }

    for (const QByteArray &source :
         {QByteArray("<TS><context><name>Localizable</name><message>"), QByteArray("not a string table")})
    {
        QVERIFY(tables.addRawSource("English", kLocalizable, source));
        ZBLocalizer::setResourceRoot(tables.root());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Localizable.ts is malformed")));
        QVERIFY_THROWS_EXCEPTION(ZBCriticalError, ZBLocalizer::englishDictionaryForTable(kLocalizable));
    }
}

void TestZBLocalizer::menuRetitling()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu,
                            {{"MainMenu_NorvikPlayer", "Norvik Player"},
                             {"MainMenu_NorvikPlayer_About", "About Norvik Player"},
                             {"MainMenu_Apple", "wrong key"},
                             {"MainMenu_File", "Document"},
                             {"MainMenu_Playback", "Play"},
                             {"MainMenu_Playback_Repeat", "Loop"},
                             {"MainMenu_Playback_Repeat_One", "Loop One"},
                             {"MainMenu_", "wrong: untitled menu"},
                             {"MainMenu__Hidden", "wrong: child of untitled menu"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QList<ZBMenuEntry> menuBar = {
        {"Apple", {{"About", {}, 0}}, 0},
        {"File", {{}, {"Print…", {}, 0}}, 0},
        {"Playback", {{"Repeat", {{"One", {}, 0}}, 0}}, 0},
        {"", {{"Hidden", {}, 0}}, 0},
    };
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);

    QStringList titles;
    collectTitles(menuBar, titles);
    // Nested keys carry every English title above them; untitled menus and
    // their items are left alone; an unknown key shows as itself.
    QCOMPARE(titles, (QStringList{"Norvik Player", "About Norvik Player", "Document", "", "MainMenu_File_Print…",
                                  "Play", "Loop", "Loop One", "", "Hidden"}));
}

void TestZBLocalizer::sizeToFit_data()
{
    QTest::addColumn<qreal>("maxWidth");
    QTest::addColumn<qreal>("maxHeight");
    QTest::addColumn<QSize>("expected");

    QTest::newRow("no limits") << 0.0 << 0.0 << QSize(120, 30);
    QTest::newRow("negative limits") << -5.0 << -1.0 << QSize(120, 30);
    QTest::newRow("both cut") << 100.0 << 25.0 << QSize(100, 25);
    QTest::newRow("limits above content") << 500.0 << 90.0 << QSize(120, 30);
    QTest::newRow("fractional limit never exceeded") << 79.9 << 0.0 << QSize(79, 30);
    QTest::newRow("limit equal to content") << 120.0 << 30.0 << QSize(120, 30);
}

void TestZBLocalizer::sizeToFit()
{
    QFETCH(qreal, maxWidth);
    QFETCH(qreal, maxHeight);
    QFETCH(QSize, expected);
    QCOMPARE(ZBLocalizer::sizeToFit(QSize(120, 30), maxWidth, maxHeight), expected);
}

QTEST_GUILESS_MAIN(TestZBLocalizer)
#include "tst_zblocalizer.moc"
