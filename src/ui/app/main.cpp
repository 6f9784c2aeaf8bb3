#include <QApplication>
#include <QFileInfo>

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
    QStringList files;
    for (const QString &argument : app.arguments().mid(1))
    {
        if (!argument.startsWith(QLatin1Char('-')))
            files << QFileInfo(argument).absoluteFilePath();
    }
    controller.openFiles(files);
    return app.exec();
}
