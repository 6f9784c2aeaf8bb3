#include <QApplication>

#include <clocale>

#include "ui/app/mainwndcontroller.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
    QCoreApplication::setApplicationName(QStringLiteral("Norvik Player"));
    QGuiApplication::setDesktopFileName(QStringLiteral("norvikplayer"));
    // The video engine refuses to start under locales with a decimal comma.
    std::setlocale(LC_NUMERIC, "C");

    MainWndController controller;
    if (!controller.start())
        return 1;
    return app.exec();
}
