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

QStringList titles(const QList<ZBMenuEntry> &entries)
{
    QStringList result;
    for (const ZBMenuEntry &entry : entries)
        result << entry.title << titles(entry.children);
    return result;
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
    void fallbackChain_data();
    void fallbackChain();
    void languageChoice();
    void missingEnglishTableIsCritical();
    void menuRetitling();
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
    // A key the sources name literally in a one-argument lookup, whichever
    // helper wraps the localizer, without English text would show as itself.
    static const QRegularExpression call(QString::fromLatin1(
        R"re(\b(?:localizedStringForKey|localized|text|tr)\((?:(?:QStringLiteral|QLatin1String)\("(\w+)"\)|"(\w+)")\))re"));
    const QHash<QString, QString> localizable = ZBLocalizer::englishDictionaryForTable(QString());
    QStringList found;
    QStringList missing;
    QDirIterator files(qEnvironmentVariable("NVK_SOURCE_DIR") + QStringLiteral("/src"), {QStringLiteral("*.cpp")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
    {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        for (auto it = call.globalMatch(QString::fromUtf8(file.readAll())); it.hasNext();)
        {
            const QRegularExpressionMatch match = it.next();
            found << match.captured(1) + match.captured(2);
            if (localizable.value(found.last()).isEmpty())
                missing << found.last();
        }
    }
    QVERIFY(found.size() > 30);
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u", ")));

    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBLocalizer::cancelButtonTitle() + ZBLocalizer::yesButtonTitle(), QStringLiteral("AbbrechenJa"));
    QCOMPARE(ZBLocalizer::nonLocalizedStringForKey(QStringLiteral("Button_Cancel_Title")), QStringLiteral("Cancel"));
}

void TestZBLocalizer::translations_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &language : ZBLocalizer::availableLanguages())
        QTest::newRow(qPrintable(language)) << language;
    QVERIFY(ZBLocalizer::availableLanguages().contains(QStringLiteral("German")));
}

void TestZBLocalizer::translations()
{
    QFETCH(QString, language);
    ZBLocalizer::setLanguage(language);
    const bool english = language == ZBLocalizer::englishLanguage();
    for (const QString &table : {kLocalizable, kMainMenu})
    {
        // Asks the compiled table itself, so a message lrelease dropped
        // counts as missing though the English fallback would hide it.
        QTranslator translation;
        QVERIFY(english || translation.load(QStringLiteral(":/strings/%1/%2.qm").arg(language, table)));
        const QHash<QString, QString> source = ZBLocalizer::englishDictionaryForTable(table);
        QStringList wrong;
        for (auto it = source.cbegin(); !english && it != source.cend(); ++it)
        {
            const QString translated = translation.translate(table.toUtf8().constData(), it.key().toUtf8().constData());
            if (translated.isEmpty() || placeholders(translated) != placeholders(it.value()))
                wrong.append(it.key());
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(QStringLiteral("Missing or other placeholders: ") + wrong.join(u", ")));
    }

    // The smart-list editor tells "all" from "any" by their shown titles.
    QVERIFY(ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAll"))
                .compare(ZBLocalizer::localizedStringForKey(QStringLiteral("smartWindowRuleAny")),
                         Qt::CaseInsensitive) != 0);

    // Every title of the real main menu is found.
    QList<ZBMenuEntry> menuBar = ZBMainMenuDefinition::mainMenu();
    const QStringList before = titles(menuBar);
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);
    const QStringList after = titles(menuBar);
    QCOMPARE(after.size(), before.size());
    for (int i = 0; i < after.size(); ++i)
    {
        QVERIFY2(!after.at(i).startsWith(QLatin1String("MainMenu_")), qPrintable(after.at(i)));
        QCOMPARE(after.at(i).isEmpty(), before.at(i).isEmpty());
        if (english && before.at(i) != ZBMainMenuDefinition::applicationMenuTitle())
            QCOMPARE(after.at(i), before.at(i));
    }
}

void TestZBLocalizer::fallbackChain_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("expected");
    const auto row =
        [](const char *name, const char *language, const char *key, const QString &table, const char *expected)
    {
        QTest::newRow(name) << language << key << table << expected;
    };

    row("translation wins", "German", "greeting", "", "Hallo");
    row("English when the translation lacks it", "German", "farewell", kLocalizable, "Goodbye");
    row("English when the translation is unfinished", "German", "draft", "", "Sketch");
    row("English when the language lacks the table", "German", "MainMenu_File", kMainMenu, "File");
    row("key when missing everywhere", "German", "noSuchKey", "", "noSuchKey");
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

void TestZBLocalizer::languageChoice()
{
    const QList<std::tuple<const char *, const char *, QLocale::Language>> choices{
        {"german", "German", QLocale::German},
        {"de_AT", "German", QLocale::German},
        {"en-GB", "English", QLocale::English},
        {"Elvish", "English", QLocale::English}};
    for (const auto &[asked, language, locale] : choices)
    {
        if (QLatin1String(asked) == QLatin1String("Elvish"))
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("No string tables for the language")));
        ZBLocalizer::setLanguage(QString::fromLatin1(asked));
        QCOMPARE(ZBLocalizer::language(), QString::fromLatin1(language));
        QCOMPARE(ZBLocalizer::locale().language(), locale);
    }
    // The environment decides only when nothing was chosen.
    qputenv("NVK_LANGUAGE", "German");
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("English"));
    ZBLocalizer::setLanguage(QString());
    QCOMPARE(ZBLocalizer::language(), QStringLiteral("German"));
}

void TestZBLocalizer::missingEnglishTableIsCritical()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    // Once loaded, the table no longer needs its file.
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));
    QVERIFY(QFile::remove(QDir(tables.root()).filePath(QStringLiteral("English/Localizable.ts"))));

    try
    {
        ZBLocalizer::localizedStringForKey(QStringLiteral("MainMenu_File"), kMainMenu);
        QFAIL("a missing English table was accepted");
    }
    catch (const ZBCriticalError &error)
    {
        QCOMPARE(error.name(), QStringLiteral("Critical error"));
        QCOMPARE(error.reason(), QStringLiteral("MainMenu.strings not found"));
    }
    QCOMPARE(ZBLocalizer::localizedStringForKey(QStringLiteral("greeting")), QStringLiteral("Hello"));

    QVERIFY(tables.addRawSource("English", kLocalizable, "<TS><context><name>Localizable</name><message>"));
    ZBLocalizer::setResourceRoot(tables.root());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Localizable.ts is malformed")));
    QVERIFY_THROWS_EXCEPTION(ZBCriticalError, ZBLocalizer::englishDictionaryForTable(kLocalizable));
}

void TestZBLocalizer::menuRetitling()
{
    StringTableFixture tables;
    QVERIFY(tables.addTable("English", kLocalizable, {}));
    QVERIFY(tables.addTable("English", kMainMenu,
                            {{"MainMenu_NorvikPlayer", "Norvik Player"},
                             {"MainMenu_NorvikPlayer_About", "About Norvik Player"},
                             {"MainMenu_Apple", "wrong key"},
                             {"MainMenu_Playback_Repeat", "Loop"},
                             {"MainMenu_Playback_Repeat_One", "Loop One"},
                             {"MainMenu_", "wrong: untitled menu"},
                             {"MainMenu__Hidden", "wrong: child of untitled menu"}}));
    ZBLocalizer::setResourceRoot(tables.root());

    QList<ZBMenuEntry> menuBar = {
        {"Apple", {{"About", {}, 0}}, 0},
        {"Playback", {{}, {"Repeat", {{"One", {}, 0}}, 0}}, 0},
        {"", {{"Hidden", {}, 0}}, 0},
    };
    ZBMenuEntryAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, kMainMenu, kMainMenu);
    // Nested keys carry every English title above them; untitled menus and
    // their items are left alone; an unknown key shows as itself.
    QCOMPARE(titles(menuBar), (QStringList{"Norvik Player", "About Norvik Player", "MainMenu_Playback", "", "Loop",
                                           "Loop One", "", "Hidden"}));
}

void TestZBLocalizer::sizeToFit()
{
    const QSize content(120, 30);
    QCOMPARE(ZBLocalizer::sizeToFit(content, -5.0, 0.0), content);
    QCOMPARE(ZBLocalizer::sizeToFit(content, 100.0, 25.0), QSize(100, 25));
    QCOMPARE(ZBLocalizer::sizeToFit(content, 500.0, 90.0), content);
    // A fractional limit is never exceeded.
    QCOMPARE(ZBLocalizer::sizeToFit(content, 79.9, 0.0), QSize(79, 30));
}

QTEST_GUILESS_MAIN(TestZBLocalizer)
#include "tst_zblocalizer.moc"
