#include "ui/app/mainwndcontroller.h"

#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>

#include "library/zblibrarycontroller.h"

MainWndController::MainWndController(QObject *parent)
    : QObject(parent)
    , m_library(std::make_unique<ZBLibraryController>())
    , m_window(std::make_unique<QMainWindow>())
{
    m_window->setWindowTitle(QStringLiteral("Norvik Player"));
    m_window->resize(1024, 680);
}

MainWndController::~MainWndController() = default;

bool MainWndController::start()
{
    if (!openLibrary())
        return false;
    m_library->initLibrary();
    m_window->show();
    return true;
}

bool MainWndController::openLibrary()
{
    if (ZBLibraryController::applicationSupportFolder().isEmpty())
    {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Alert"), QStringLiteral("Can't find application support folder"));
        box.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
        box.exec();
        return false;
    }
    const ZBObjectContext::OpenResult opened = m_library->openStore();
    if (!opened.ok)
    {
        QMessageBox::critical(nullptr, QStringLiteral("Norvik Player"),
                              QStringLiteral("The library cannot be opened.\n\n%1").arg(opened.error));
        return false;
    }
    if (opened.recoveredFromDamage)
    {
        QMessageBox::warning(nullptr, QStringLiteral("Norvik Player"),
                             QStringLiteral("The library file was damaged and could not be read (%1).\n\n"
                                            "It has been kept unchanged as\n%2\n\nand a new, empty library was started.")
                                 .arg(opened.error, opened.quarantinedPath));
    }
    return true;
}
