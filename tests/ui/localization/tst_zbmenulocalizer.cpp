#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QtTest>

#include "localization/zblocalizer.h"
#include "localization/zbmainmenudefinition.h"
#include "localization/zbmenulocalizer.h"
#include "support/stringtablefixture.h"
#include "ui/app/zbmainmenubuilder.h"

namespace
{
// Every action text of the menu bar, depth first.
void collectTexts(const QWidget *menu, QStringList &texts)
{
    for (const QAction *action : menu->actions())
    {
        texts.append(action->text());
        if (action->menu())
            collectTexts(action->menu(), texts);
    }
}

QMenu *submenuTitled(const QWidget *menu, const QString &text)
{
    for (QAction *action : menu->actions())
    {
        if (action->menu() && action->text() == text)
            return action->menu();
    }
    return nullptr;
}
} // namespace

class TestZBMenuLocalizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void mainMenuBarInGerman();
    void mainMenuBarInEnglishKeepsItsTitles();
    void commandTagsAreOnTheirItems();
    void menusAreRetitledFromTheirKeys();
    void sizeToFitKeepsThePlaceAndCutsToTheLimits_data();
    void sizeToFitKeepsThePlaceAndCutsToTheLimits();
};

void TestZBMenuLocalizer::initTestCase()
{
    qunsetenv("NVK_LANGUAGE");
}

void TestZBMenuLocalizer::cleanup()
{
    ZBLocalizer::setResourceRoot(QString());
    ZBLocalizer::setLanguage(QString());
}

void TestZBMenuLocalizer::commandTagsAreOnTheirItems()
{
    QMenuBar menuBar;
    const QHash<QString, QAction *> actions = ZBMainMenuBuilder::build(&menuBar, ZBMainMenuDefinition::mainMenu(), {});
    QHash<int, QString> byTag;
    for (auto it = actions.cbegin(); it != actions.cend(); ++it)
    {
        const int tag = it.value()->data().toInt();
        if (tag == 0)
            continue;
        // One item per command.
        QVERIFY2(!byTag.contains(tag), qPrintable(QStringLiteral("%1 on %2 and %3").arg(tag).arg(byTag.value(tag), it.key())));
        byTag.insert(tag, it.key());
    }
    // The commands whose titles follow the state, and the rating stars.
    QCOMPARE(byTag.value(401), QStringLiteral("Playback/Play"));
    QCOMPARE(byTag.value(701), QStringLiteral("Help/Show Tutorial"));
    QCOMPARE(byTag.value(305), QStringLiteral("View/Enter Full Screen"));
    for (int tag = 221; tag <= 225; ++tag)
        QVERIFY(byTag.value(tag).startsWith(QStringLiteral("Track/Rating/")));
    QCOMPARE(byTag.value(411), QStringLiteral("Playback/Repeat/None"));
    QCOMPARE(byTag.value(413), QStringLiteral("Playback/Repeat/One"));
}

void TestZBMenuLocalizer::mainMenuBarInGerman()
{
    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QMenuBar menuBar;
    ZBMainMenuBuilder::build(&menuBar, ZBMainMenuDefinition::mainMenu(), {});
    QStringList before;
    collectTexts(&menuBar, before);

    ZBMenuLocalizer::localizeMainMenuBar(&menuBar);

    QStringList after;
    collectTexts(&menuBar, after);
    QCOMPARE(after.size(), before.size());
    for (const QString &text : after)
        QVERIFY2(!text.startsWith(QLatin1String("MainMenu_")), qPrintable(text));

    QMenu *file = submenuTitled(&menuBar, QStringLiteral("Datei"));
    QVERIFY(file);
    QCOMPARE(file->title(), QStringLiteral("Datei"));
    QCOMPARE(file->actions().first()->text(), QStringLiteral("Öffnen …"));
    // Separators stay separators.
    QVERIFY(file->actions().at(2)->isSeparator());
    QVERIFY(file->actions().at(2)->text().isEmpty());

    QMenu *application = submenuTitled(&menuBar, QStringLiteral("Norvik Player"));
    QVERIFY(application);
    QCOMPARE(application->actions().first()->text(), QStringLiteral("Über Norvik Player"));
}

void TestZBMenuLocalizer::mainMenuBarInEnglishKeepsItsTitles()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QMenuBar menuBar;
    ZBMainMenuBuilder::build(&menuBar, ZBMainMenuDefinition::mainMenu(), {});
    QStringList before;
    collectTexts(&menuBar, before);

    ZBMenuLocalizer::localizeMainMenuBar(&menuBar);

    QStringList after;
    collectTexts(&menuBar, after);
    QCOMPARE(after.size(), before.size());
    QCOMPARE(after.first(), QStringLiteral("Norvik Player"));
    QCOMPARE(after.mid(1), before.mid(1));
}

void TestZBMenuLocalizer::menusAreRetitledFromTheirKeys()
{
    nvktest::StringTableFixture tables;
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"), {}));
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("MainMenu"),
                            {{"MainMenu_NorvikPlayer", "Norvik"},
                             {"MainMenu_NorvikPlayer_Quit", "Leave Norvik"},
                             {"MainMenu_Apple", "wrong key"},
                             {"MainMenu_Apple_Quit", "wrong key"},
                             {"MainMenu_Edit", "Edit"},
                             {"MainMenu_Edit_Copy", "Copy Selection"},
                             {"MainMenu_View", "View"},
                             {"MainMenu_View_Columns", "Table Columns"},
                             {"MainMenu_View_Columns_Type", "Kind"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    // The first menu of a menu bar is the application's, whatever its title.
    QMenuBar menuBar;
    QMenu *application = menuBar.addMenu(QStringLiteral("Apple"));
    QAction *quit = application->addAction(QStringLiteral("Quit"));
    QMenu *untitled = menuBar.addMenu(QString());
    QAction *inside = untitled->addAction(QStringLiteral("Copy"));
    QAction *copy = menuBar.addMenu(QStringLiteral("Edit"))->addAction(QStringLiteral("Copy"));
    ZBMenuLocalizer::localizeMenuBar(&menuBar, QStringLiteral("MainMenu"), QStringLiteral("MainMenu"));
    QCOMPARE(application->title(), QStringLiteral("Norvik"));
    QCOMPARE(application->menuAction()->text(), QStringLiteral("Norvik"));
    QCOMPARE(quit->text(), QStringLiteral("Leave Norvik"));
    // An untitled menu is not visited: it would show "MainMenu__Copy".
    QCOMPARE(untitled->title(), QString());
    QCOMPARE(inside->text(), QStringLiteral("Copy"));
    QCOMPARE(copy->text(), QStringLiteral("Copy Selection"));

    // A single menu (a context menu, say) is retitled under its own prefix,
    // its submenus under theirs.
    QMenu view(QStringLiteral("View"));
    QMenu *columns = view.addMenu(QStringLiteral("Columns"));
    QAction *type = columns->addAction(QStringLiteral("Type"));
    ZBMenuLocalizer::localizeMenu(&view, QStringLiteral("MainMenu_View"), QStringLiteral("MainMenu"));
    QCOMPARE(columns->title(), QStringLiteral("Table Columns"));
    QCOMPARE(columns->menuAction()->text(), QStringLiteral("Table Columns"));
    QCOMPARE(type->text(), QStringLiteral("Kind"));
    QCOMPARE(view.title(), QStringLiteral("View"));
}

void TestZBMenuLocalizer::sizeToFitKeepsThePlaceAndCutsToTheLimits_data()
{
    QTest::addColumn<int>("maxWidth");
    QTest::addColumn<int>("maxHeight");
    QTest::addColumn<int>("width");
    // 0: no limit, or a limit above the fitted size; -1: the fitted size.
    QTest::newRow("no limits") << 0 << 0 << -1;
    QTest::newRow("cut to the width") << 60 << 0 << 60;
    QTest::newRow("limits above the content") << 5000 << 5000 << -1;
}

void TestZBMenuLocalizer::sizeToFitKeepsThePlaceAndCutsToTheLimits()
{
    QFETCH(int, maxWidth);
    QFETCH(int, maxHeight);
    QFETCH(int, width);
    QWidget window;
    auto *button = new QPushButton(QStringLiteral("Zur Mediathek hinzufügen und sofort abspielen"), &window);
    button->move(7, 3);
    button->resize(5, 5);
    const QSize fitted = button->sizeHint();
    QVERIFY(fitted.width() > 60);
    ZBMenuLocalizer::sizeToFit(button, maxWidth, maxHeight);
    QCOMPARE(button->size(), QSize(width < 0 ? fitted.width() : width, fitted.height()));
    QCOMPARE(button->pos(), QPoint(7, 3));
}

QTEST_MAIN(TestZBMenuLocalizer)
#include "tst_zbmenulocalizer.moc"
