#include "ui/app/mainwndcontroller.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>

#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "localization/zbmainmenudefinition.h"
#include "settings/zbsettings.h"
#include "ui/localization/zbmenulocalizer.h"

namespace
{
void addEntries(QMenu *menu, const QList<ZBMenuEntry> &entries)
{
    for (const ZBMenuEntry &entry : entries)
    {
        if (entry.isSeparator())
        {
            menu->addSeparator();
            continue;
        }
        if (entry.hasSubmenu())
        {
            addEntries(menu->addMenu(entry.title), entry.children);
            continue;
        }
        QAction *action = menu->addAction(entry.title);
        if (entry.title.startsWith(QLatin1String("Quit")))
        {
            action->setShortcut(QKeySequence::Quit);
            QObject::connect(action, &QAction::triggered, qApp, &QApplication::quit, Qt::QueuedConnection);
            continue;
        }
        // Commands are connected as the features behind them arrive; until
        // then an item must not pretend to work.
        action->setEnabled(false);
    }
}
} // namespace

MainWndController::MainWndController(QObject *parent)
    : QObject(parent)
    , m_settings(std::make_unique<ZBSettings>())
    , m_library(std::make_unique<ZBLibraryController>())
    , m_window(std::make_unique<QMainWindow>())
{
    m_window->setObjectName(QStringLiteral("MainWindow"));
    m_window->resize(1024, 680);
}

MainWndController::~MainWndController() = default;

bool MainWndController::start()
{
    {
        const std::unique_ptr<QSettings> store = ZBSettings::openStore();
        m_settings->loadUserDefaults(*store);
    }
    if (!openLibrary())
        return false;
    m_library->initLibrary();

    buildMainMenu();
    m_window->setWindowTitle(ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")));
    const QByteArray frame = m_settings->windowFrame(ZBSettings::mainWindowFrameName());
    if (!frame.isEmpty())
        m_window->restoreGeometry(frame);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &MainWndController::saveUserDefaults);
    m_window->show();
    return true;
}

void MainWndController::saveUserDefaults()
{
    m_settings->setWindowFrame(ZBSettings::mainWindowFrameName(), m_window->saveGeometry());
    const std::unique_ptr<QSettings> store = ZBSettings::openStore();
    m_settings->saveUserDefaults(*store);
}

void MainWndController::buildMainMenu()
{
    QMenuBar *bar = m_window->menuBar();
    for (const ZBMenuEntry &top : ZBMainMenuDefinition::mainMenu())
        addEntries(bar->addMenu(top.title), top.children);
    // Retitle once: the keys are built from the English titles just added.
    ZBMenuLocalizer::localizeMainMenuBar(bar);
}

bool MainWndController::openLibrary()
{
    if (ZBLibraryController::applicationSupportFolder().isEmpty())
    {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Alert"),
                        QStringLiteral("Can't find application support folder"));
        box.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
        box.exec();
        return false;
    }
    const ZBObjectContext::OpenResult opened = m_library->openStore();
    if (!opened.ok)
    {
        QMessageBox::critical(nullptr, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                              ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryCannotOpenMessage"))
                                  + QStringLiteral("\n\n") + opened.error);
        return false;
    }
    if (opened.recoveredFromDamage)
    {
        QMessageBox::warning(nullptr, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                             ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryDamagedMessage"))
                                 .arg(opened.quarantinedPath, opened.error));
    }
    return true;
}
