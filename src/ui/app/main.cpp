#include <QApplication>
#include <QMainWindow>
#include <QSocketNotifier>

#include <clocale>
#include <csignal>
#include <thread>
#include <unistd.h>

#include <fontconfig/fontconfig.h>

#include "app/zbmediamoduleloader.h"
#include "localization/zbcriticalerror.h"
#include "localization/zblocalizer.h"
#include "ui/app/mainwndcontroller.h"
#include "ui/app/zbfirstpaint.h"
#include "ui/app/zbsharedglcontext.h"
#include "ui/app/zbsingleinstance.h"
#include "ui/widgets/zbstyle.h"

namespace
{
int quitPipe[2] = {-1, -1};

void requestQuit(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(quitPipe[1], &byte, 1);
}

// A logout or `kill` ends the program the way the Quit command does, so the
// settings and the window's place are saved. Only a write to a pipe is safe
// inside a signal handler; the event loop does the rest.
void quitOnTerminationSignals(QCoreApplication &app)
{
    if (::pipe(quitPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(quitPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, []() { QCoreApplication::quit(); });
    struct sigaction action = {};
    action.sa_handler = requestQuit;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}
} // namespace

int main(int argc, char *argv[])
{
    ZBFirstPaint::mark("main");
    // The web engine itself is loaded later, with the media module; what it
    // needs from the application object is set now, but for the shared GL
    // context, made once the window shows (ZBSharedGLContext).
    ZBMediaModuleLoader::prepareApplication(true);
    // The first widget needs fonts and texts: fontconfig spends some 5 ms
    // reading its configuration and caches, and the English string tables
    // another one or two. Both are read beside the application object's own
    // set-up (the display connection), on the second core, and nothing uses
    // them before the thread is joined.
    std::thread warmUp([]() {
        FcInit();
        try
        {
            ZBLocalizer::englishDictionaryForTable(ZBLocalizer::defaultTable());
            ZBLocalizer::englishDictionaryForTable(ZBLocalizer::mainMenuTable());
        }
        catch (const ZBCriticalError &)
        {
            // Told when the window asks for its first text.
        }
    });
    QApplication app(argc, argv);
    ZBFirstPaint::mark("application");
    // The window's pictures are drawn, not looked up in the icon theme.
    QApplication::setStyle(new ZBStyle);
    // Every GL view is made after the module loads, and so after the shared
    // context; views that change windows keep their own contexts.
    ZBMediaModuleLoader::setBeforeLoading([]() { ZBSharedGLContext::create(); });
    // Qt warns that this attribute comes late, though it reads it only when
    // a view changes windows, long after the shared context exists.
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    qInstallMessageHandler(previous);
    QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
    QCoreApplication::setApplicationName(QStringLiteral("Norvik Player"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NVK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("norvikplayer"));
    // The video engine refuses to start under locales with a decimal comma.
    std::setlocale(LC_NUMERIC, "C");

    quitOnTerminationSignals(app);

    // A second start hands its files and URLs to the running player and
    // leaves, so the library is never opened twice.
    const QStringList arguments = app.arguments().mid(1);
    ZBSingleInstance singleInstance;
    if (singleInstance.tryToHandOver(arguments))
    {
        warmUp.join();
        return 0;
    }
    warmUp.join();

    MainWndController controller;
    if (!controller.start())
        return 1;
    controller.openArguments(ZBSingleInstance::normalizedArguments(arguments));

    // What later starts hand over: absolute paths and "norvikplayer://" URLs.
    QObject::connect(&singleInstance, &ZBSingleInstance::argumentsReceived, &controller,
                     [&controller](const QStringList &received) {
                         controller.raiseWindow();
                         controller.openArguments(received);
                     });
    singleInstance.listen();
    return app.exec();
}
