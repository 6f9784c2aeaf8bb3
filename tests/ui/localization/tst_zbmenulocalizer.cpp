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

class TestZBMenuLocalizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void mainMenuBarInGerman();
    void menusAreRetitledFromTheirKeys();
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

void TestZBMenuLocalizer::mainMenuBarInGerman()
{
    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QMenuBar menuBar;
    ZBMainMenuBuilder::build(&menuBar, ZBMainMenuDefinition::mainMenu(), {});
    ZBMenuLocalizer::localizeMainMenuBar(&menuBar);
    // Every item and every menu's own title.
    for (const QAction *action : menuBar.findChildren<QAction *>())
        QVERIFY2(!action->text().startsWith(QLatin1String("MainMenu_")), qPrintable(action->text()));

    QMenu *file = menuBar.actions().at(1)->menu();
    QCOMPARE(file->title() + u'/' + file->actions().first()->text(), QStringLiteral("Datei/Öffnen …"));
    // Separators stay separators.
    QVERIFY(file->actions().at(2)->isSeparator() && file->actions().at(2)->text().isEmpty());
    QCOMPARE(menuBar.actions().first()->menu()->actions().first()->text(), QStringLiteral("Über Norvik Player"));
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
    QCOMPARE(application->menuAction()->text() + u'/' + quit->text(), QStringLiteral("Norvik/Leave Norvik"));
    // An untitled menu is not visited: it would show "MainMenu__Copy".
    QCOMPARE(untitled->title() + u'/' + inside->text(), QStringLiteral("/Copy"));
    QCOMPARE(copy->text(), QStringLiteral("Copy Selection"));

    // A single menu (a context menu, say) is retitled under its own prefix,
    // its submenus under theirs.
    QMenu view(QStringLiteral("View"));
    QMenu *columns = view.addMenu(QStringLiteral("Columns"));
    QAction *type = columns->addAction(QStringLiteral("Type"));
    ZBMenuLocalizer::localizeMenu(&view, QStringLiteral("MainMenu_View"), QStringLiteral("MainMenu"));
    QCOMPARE(view.title() + u'/' + columns->menuAction()->text() + u'/' + type->text(),
             QStringLiteral("View/Table Columns/Kind"));
}

// Fitted to the text unless a limit cuts it, and left where it was.
void TestZBMenuLocalizer::sizeToFitKeepsThePlaceAndCutsToTheLimits()
{
    for (const auto &[maxWidth, maxHeight, cut] : {std::tuple{0, 0, false}, {60, 0, true}, {5000, 5000, false}})
    {
        QWidget window;
        auto *button = new QPushButton(QStringLiteral("Zur Mediathek hinzufügen und sofort abspielen"), &window);
        button->setGeometry(7, 3, 5, 5);
        const QSize fitted = button->sizeHint();
        QVERIFY(fitted.width() > 60);
        ZBMenuLocalizer::sizeToFit(button, maxWidth, maxHeight);
        QCOMPARE(button->geometry(), QRect(QPoint(7, 3), QSize(cut ? 60 : fitted.width(), fitted.height())));
    }
}

QTEST_MAIN(TestZBMenuLocalizer)
#include "tst_zbmenulocalizer.moc"
