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

QStringList readKeyList(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QStringList keys;
    while (!file.atEnd())
    {
        const QString line = QString::fromUtf8(file.readLine()).remove(QLatin1Char('\n'));
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            keys.append(line);
    }
    return keys;
}

QSet<QString> placeholders(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("%\\d+"));
    QSet<QString> found;
    for (auto it = pattern.globalMatch(text); it.hasNext();)
        found.insert(it.next().captured());
    return found;
}

// Every title of the tree, depth first, separators included as "".
void collectTitles(const QList<ZBMenuEntry> &entries, QStringList &titles)
{
    for (const ZBMenuEntry &entry : entries)
    {
        titles.append(entry.title);
        collectTitles(entry.children, titles);
    }
}
} // namespace

class TestZBLocalizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    // The tables shipped with the program.
    void shippedEnglishTablesLoad();
    void everyUsedKeyHasEnglishText();
    void translationsCoverEveryEnglishKey_data();
    void translationsCoverEveryEnglishKey();
    void translationsKeepPlaceholders_data();
    void translationsKeepPlaceholders();
    void buttonTitlesFollowTheLanguage();
    void smartListJoinersDifferInEveryLanguage();
    void mainMenuDefinitionIsFullyTranslated_data();
    void mainMenuDefinitionIsFullyTranslated();

    // Fallback chain.
    void translationWins();
    void englishWhenTranslationLacksKey();
    void englishWhenTranslationIsUnfinished();
    void keyWhenMissingEverywhere();
    void defaultValueWhenMissingEverywhere();
    void englishWhenLanguageHasNoSuchTable();
    void nonLocalizedIgnoresTheLanguage();
    void languageByFolderOrLocaleName();
    void unknownLanguageFallsBackToEnglish();
    void languageFromEnvironment();

    // Missing English tables.
    void missingEnglishTableIsCritical();
    void unreadableEnglishTableIsCritical();
    void lookupThroughMissingEnglishTableIsCritical();
    void englishTableStaysCachedOnceLoaded();

    // Menu retitling on a menu definition.
    void menuItemsAreRetitledWithNestedKeys();
    void applicationMenuUsesProgramName();
    void untitledItemsAndTheirSubmenusAreSkipped();
    void unknownMenuKeyShowsTheKey();

    // Fitting controls.
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

void TestZBLocalizer::shippedEnglishTablesLoad()
{
    const QHash<QString, QString> localizable = ZBLocalizer::englishDictionaryForTable(kLocalizable);
    QVERIFY(!localizable.isEmpty());
    QCOMPARE(ZBLocalizer::englishDictionaryForTable(QString()), localizable);
    QVERIFY(!ZBLocalizer::englishDictionaryForTable(kMainMenu).isEmpty());
    QCOMPARE(localizable.value(QStringLiteral("Button_OK_Title")), QStringLiteral("OK"));
    QVERIFY(ZBLocalizer::availableLanguages().contains(QStringLiteral("English")));
    QVERIFY(ZBLocalizer::availableLanguages().contains(QStringLiteral("German")));
}

void TestZBLocalizer::everyUsedKeyHasEnglishText()
{
    const QString listPath = QFINDTESTDATA("localizablekeys.txt");
    QVERIFY2(!listPath.isEmpty(), "localizablekeys.txt not found beside the test");
    const QStringList keys = readKeyList(listPath);
    QVERIFY(keys.size() > 200);

    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable(kLocalizable);
    QStringList missing;
    for (const QString &key : keys)
    {
        // Some keys are their own English text ("Ready", "Today"), so only
        // presence counts.
        if (english.value(key).isEmpty())
            missing.append(key);
    }
    QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("No English text for: ") + missing.join(u", ")));
}

void TestZBLocalizer::translationsCoverEveryEnglishKey_data()
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

void TestZBLocalizer::translationsCoverEveryEnglishKey()
{
    QFETCH(QString, language);
    QFETCH(QString, table);
    // Asks the compiled table itself, so a message lrelease dropped (an
    // unfinished one, say) counts as missing even though the English
    // fallback would hide it on screen.
    QTranslator translation;
    QVERIFY(translation.load(QStringLiteral(":/strings/%1/%2.qm").arg(language, table)));

    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable(table);
    QStringList missing;
    for (auto it = english.cbegin(); it != english.cend(); ++it)
    {
        if (translation.translate(table.toUtf8().constData(), it.key().toUtf8().constData()).isEmpty())
            missing.append(it.key());
    }
    QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("No translation for: ") + missing.join(u", ")));
}

void TestZBLocalizer::translationsKeepPlaceholders_data()
{
    translationsCoverEveryEnglishKey_data();
}

void TestZBLocalizer::translationsKeepPlaceholders()
{
    QFETCH(QString, language);
    QFETCH(QString, table);
    QTranslator translation;
    QVERIFY(translation.load(QStringLiteral(":/strings/%1/%2.qm").arg(language, table)));

    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable(table);
    QStringList mismatched;
    for (auto it = english.cbegin(); it != english.cend(); ++it)
    {
        const QString translated = translation.translate(table.toUtf8().constData(), it.key().toUtf8().constData());
        if (!translated.isEmpty() && placeholders(translated) != placeholders(it.value()))
            mismatched.append(it.key());
    }
    QVERIFY2(mismatched.isEmpty(),
             qPrintable(QStringLiteral("Placeholders differ from English in: ") + mismatched.join(u", ")));
}

void TestZBLocalizer::buttonTitlesFollowTheLanguage()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::okButtonTitle(), QStringLiteral("OK"));
    QCOMPARE(ZBLocalizer::cancelButtonTitle(), QStringLiteral("Cancel"));
    QCOMPARE(ZBLocalizer::yesButtonTitle(), QStringLiteral("Yes"));
    QCOMPARE(ZBLocalizer::noButtonTitle(), QStringLiteral("No"));

    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::cancelButtonTitle(), QStringLiteral("Abbrechen"));
    QCOMPARE(ZBLocalizer::yesButtonTitle(), QStringLiteral("Ja"));
    QCOMPARE(ZBLocalizer::noButtonTitle(), QStringLiteral("Nein"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu), QStringLiteral("Datei"));
}

void TestZBLocalizer::smartListJoinersDifferInEveryLanguage()
{
    // The smart-list editor tells "all" from "any" by comparing the shown
    // title with the "all" text, ignoring case.
    for (const QString &language : ZBLocalizer::availableLanguages())
    {
        ZBLocalizer::setLanguage(language);
        const QString all = ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAll"));
        const QString any = ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAny"));
        QVERIFY2(all.compare(any, Qt::CaseInsensitive) != 0, qPrintable(language));
    }
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
        // A key missing from the tables would show as the key itself.
        QVERIFY2(!after.at(i).startsWith(QLatin1String("MainMenu_")), qPrintable(after.at(i)));
        QCOMPARE(after.at(i).isEmpty(), before.at(i).isEmpty());
        // In English the texts are the titles the keys were made from.
        if (language == QLatin1String("English") && before.at(i) != ZBMainMenuDefinition::applicationMenuTitle())
            QCOMPARE(after.at(i), before.at(i));
    }
}

void TestZBLocalizer::translationWins()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    StringTableFixture tables;
    QVERIFY2(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}), qPrintable(tables.errorString()));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Hallo"}}), qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("German"));

    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hallo"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting"), kLocalizable), QStringLiteral("Hallo"));
}

void TestZBLocalizer::englishWhenTranslationLacksKey()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}, {"farewell", "Goodbye"}}));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Hallo"}}), qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("German"));

    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("farewell")), QStringLiteral("Goodbye"));
}

void TestZBLocalizer::englishWhenTranslationIsUnfinished()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Halloo (draft)"}}, {"greeting"}),
             qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("German"));

    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));
}

void TestZBLocalizer::keyWhenMissingEverywhere()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Hallo"}}), qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());

    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("noSuchKey")), QStringLiteral("noSuchKey"));
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("noSuchKey")), QStringLiteral("noSuchKey"));
}

void TestZBLocalizer::defaultValueWhenMissingEverywhere()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QCOMPARE(ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("noSuchKey"), QStringLiteral("fallback")),
             QStringLiteral("fallback"));
    QCOMPARE(ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("greeting"), QStringLiteral("fallback")),
             QStringLiteral("Hello"));
}

void TestZBLocalizer::englishWhenLanguageHasNoSuchTable()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    QVERIFY(tables.addTable("English", kMainMenu, {{"MainMenu_File", "File"}}));
    QVERIFY2(tables.addTable("German", kLocalizable, {{"greeting", "Hallo"}}), qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("German"));

    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu), QStringLiteral("File"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hallo"));
}

void TestZBLocalizer::nonLocalizedIgnoresTheLanguage()
{
    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("Button_Cancel_Title")), QStringLiteral("Abbrechen"));
    QCOMPARE(ZBLocalizer::nonLocalizedStringForKey(QStringLiteral("Button_Cancel_Title")), QStringLiteral("Cancel"));
    QCOMPARE(ZBLocalizer::nonLocalizedStringForKey(QStringLiteral("noSuchKey")), QStringLiteral("noSuchKey"));
}

void TestZBLocalizer::languageByFolderOrLocaleName()
{
    ZBLocalizer::setLanguage(QStringLiteral("german"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
    ZBLocalizer::setLanguage(QStringLiteral("de"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
    ZBLocalizer::setLanguage(QStringLiteral("de_AT"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::locale().language(), QLocale::German);
    ZBLocalizer::setLanguage(QStringLiteral("en-GB"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::locale().language(), QLocale::English);
}

void TestZBLocalizer::unknownLanguageFallsBackToEnglish()
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("No string tables for the language \"Elvish\"")));
    ZBLocalizer::setLanguage(QStringLiteral("Elvish"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::cancelButtonTitle(), QStringLiteral("Cancel"));
}

void TestZBLocalizer::languageFromEnvironment()
{
    qputenv("NVK_LANGUAGE", "German");
    ZBLocalizer::setLanguage(QString());
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));

    // An explicit choice outranks the environment.
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("English"));
}

void TestZBLocalizer::missingEnglishTableIsCritical()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());

    try
    {
        ZBLocalizer::englishDictionaryForTable(kMainMenu);
        QFAIL("a missing English table was accepted");
    }
    catch (const ZBCriticalError &error)
    {
        QCOMPARE(error.name(), QStringLiteral("Critical error"));
        QCOMPARE(error.reason(), QStringLiteral("MainMenu.strings not found"));
        QVERIFY(QString::fromUtf8(error.what()).contains(QLatin1String("MainMenu.strings not found")));
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
}

void TestZBLocalizer::unreadableEnglishTableIsCritical()
{
    StringTableFixture tables;
    QVERIFY(tables.addRawSource("English", kLocalizable, "<TS><context><name>Localizable</name><message>"));
    ZBLocalizer::setResourceRoot(tables.root());

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Localizable.ts is malformed")));
    QVERIFY_THROWS_EXCEPTION(ZBCriticalError, ZBLocalizer::englishDictionaryForTable(kLocalizable));

    QVERIFY(tables.addRawSource("English", kLocalizable, "this is not a string table"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Localizable.ts is malformed")));
    QVERIFY_THROWS_EXCEPTION(ZBCriticalError, ZBLocalizer::englishDictionaryForTable(kLocalizable));
}

void TestZBLocalizer::lookupThroughMissingEnglishTableIsCritical()
{
    if (!StringTableFixture::canCompile())
        QSKIP("lrelease is not available (NVK_LRELEASE unset)");
    // Even when the translation has the key, a missing English table is an
    // installation fault that must not go unnoticed.
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    QVERIFY2(tables.addTable("German", kMainMenu, {{"MainMenu_File", "Datei"}}), qPrintable(tables.errorString()));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("German"));

    QVERIFY_THROWS_EXCEPTION(ZBCriticalError,
                             ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu));
}

void TestZBLocalizer::englishTableStaysCachedOnceLoaded()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));

    QVERIFY(QFile::remove(QDir(tables.root()).filePath(QStringLiteral("English/Localizable.ts"))));
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));
}

void TestZBLocalizer::menuItemsAreRetitledWithNestedKeys()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu,
                            {{"MainMenu_File", "Document"},
                             {"MainMenu_File_Open", "Open a File"},
                             {"MainMenu_Playback", "Play"},
                             {"MainMenu_Playback_Repeat", "Loop"},
                             {"MainMenu_Playback_Repeat_One", "Loop One"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QList<ZBMenuEntry> menuBar = {
        {"File", {{"Open", {}, 0}, {}}, 0},
        {"Playback", {{"Repeat", {{"One", {}, 0}}, 0}}, 0},
    };
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);

    QCOMPARE(menuBar[0].title, QStringLiteral("Document"));
    QCOMPARE(menuBar[0].children[0].title, QStringLiteral("Open a File"));
    QVERIFY(menuBar[0].children[1].isSeparator());
    QCOMPARE(menuBar[1].title, QStringLiteral("Play"));
    QCOMPARE(menuBar[1].children[0].title, QStringLiteral("Loop"));
    // The key of a nested item carries every title above it, in English.
    QCOMPARE(menuBar[1].children[0].children[0].title, QStringLiteral("Loop One"));
}

void TestZBLocalizer::applicationMenuUsesProgramName()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu,
                            {{"MainMenu_NorvikPlayer", "Norvik Player"},
                             {"MainMenu_NorvikPlayer_About", "About Norvik Player"},
                             {"MainMenu_Apple", "wrong key"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QList<ZBMenuEntry> menuBar = {{"Apple", {{"About", {}, 0}}, 0}};
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);

    QCOMPARE(menuBar[0].title, QStringLiteral("Norvik Player"));
    QCOMPARE(menuBar[0].children[0].title, QStringLiteral("About Norvik Player"));
}

void TestZBLocalizer::untitledItemsAndTheirSubmenusAreSkipped()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu,
                            {{"MainMenu_", "wrong: untitled menu"},
                             {"MainMenu__Hidden", "wrong: child of untitled menu"},
                             {"MainMenu_View", "View"},
                             {"MainMenu_View_Zoom", "Zoom In"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QList<ZBMenuEntry> menuBar = {
        {"", {{"Hidden", {}, 0}}, 0},
        {"View", {{}, {"Zoom", {}, 0}}, 0},
    };
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);

    QCOMPARE(menuBar[0].title, QString());
    QCOMPARE(menuBar[0].children[0].title, QStringLiteral("Hidden"));
    QVERIFY(menuBar[1].children[0].isSeparator());
    // Items after a separator are still visited.
    QCOMPARE(menuBar[1].children[1].title, QStringLiteral("Zoom In"));
}

void TestZBLocalizer::unknownMenuKeyShowsTheKey()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu, {{"MainMenu_File", "File"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QList<ZBMenuEntry> menuBar = {{"File", {{"Print…", {}, 0}}, 0}};
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);

    QCOMPARE(menuBar[0].children[0].title, QStringLiteral("MainMenu_File_Print…"));
}

void TestZBLocalizer::sizeToFit_data()
{
    QTest::addColumn<QSize>("fitted");
    QTest::addColumn<qreal>("maxWidth");
    QTest::addColumn<qreal>("maxHeight");
    QTest::addColumn<QSize>("expected");

    QTest::newRow("no limits") << QSize(120, 30) << 0.0 << 0.0 << QSize(120, 30);
    QTest::newRow("negative limits") << QSize(120, 30) << -5.0 << -1.0 << QSize(120, 30);
    QTest::newRow("width cut") << QSize(120, 30) << 80.0 << 0.0 << QSize(80, 30);
    QTest::newRow("height cut") << QSize(120, 30) << 0.0 << 20.0 << QSize(120, 20);
    QTest::newRow("both cut") << QSize(120, 30) << 100.0 << 25.0 << QSize(100, 25);
    QTest::newRow("limits above content") << QSize(120, 30) << 500.0 << 90.0 << QSize(120, 30);
    QTest::newRow("fractional limit never exceeded") << QSize(120, 30) << 79.9 << 0.0 << QSize(79, 30);
    QTest::newRow("limit equal to content") << QSize(120, 30) << 120.0 << 30.0 << QSize(120, 30);
}

void TestZBLocalizer::sizeToFit()
{
    QFETCH(QSize, fitted);
    QFETCH(qreal, maxWidth);
    QFETCH(qreal, maxHeight);
    QFETCH(QSize, expected);
    QCOMPARE(ZBLocalizer::sizeToFit(fitted, maxWidth, maxHeight), expected);
}

QTEST_GUILESS_MAIN(TestZBLocalizer)
#include "tst_zblocalizer.moc"
