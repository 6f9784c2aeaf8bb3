// The reference for the start-up benchmark: an empty main window, and when
// NVK_REPORT_FIRST_PAINT is set, the time of its first painted frame since
// the process started, written the way the player writes it.
#include <QApplication>
#include <QMainWindow>
#include <QTimer>

#include "ui/app/zbfirstpaint.h"

int main(int argc, char *argv[])
{
    ZBFirstPaint::mark("main");
    QApplication app(argc, argv);
    ZBFirstPaint::mark("application");
    QMainWindow window;
    window.resize(1024, 680);
    ZBFirstPaint firstPaint(&window);
    ZBFirstPaint::mark("window built");
    window.show();
    ZBFirstPaint::mark("shown");
    return app.exec();
}
