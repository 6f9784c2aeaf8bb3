#include <QApplication>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <cstring>
#include <memory>

#include "ctl/ctlcommands.h"
#include "ctl/ctlweb.h"
#include "engines/flash/zbflashview.h"
#include "library/zblibrarycontroller.h"

int main(int argc, char *argv[])
{
    // Snapshots of Flash movies and captures render in a web page: that takes
    // the graphical application object, on the offscreen platform unless the
    // caller chose one. Every other command stays a plain console program.
    std::unique_ptr<QCoreApplication> application;
    const int commandIndex = argc > 1 && std::strcmp(argv[1], "--data-dir") == 0 ? 3 : 1;
    if (commandIndex < argc
        && (std::strcmp(argv[commandIndex], "snapshot") == 0
            || ZBCtlWeb::needsGui(QString::fromLocal8Bit(argv[commandIndex]))))
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        ZBFlashView::prepareApplication();
        application = std::make_unique<QApplication>(argc, argv);
    }
    else
    {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication &app = *application;
    QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
    QCoreApplication::setApplicationName(QStringLiteral("Norvik Player"));

    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = app.arguments().mid(1);
    QString dataDir;
    if (arguments.size() >= 2 && arguments.first() == u"--data-dir")
    {
        dataDir = arguments.at(1);
        arguments = arguments.mid(2);
    }
    if (arguments.isEmpty() || arguments.first() == u"--help" || arguments.first() == u"-h")
    {
        (arguments.isEmpty() ? err : out) << ZBCtlCommands::usage();
        return arguments.isEmpty() ? 2 : 0;
    }

    if (ZBCtlWeb::handles(arguments.first()))
        return ZBCtlWeb::run(arguments.first(), arguments.mid(1), dataDir, out, err);
    if (!ZBCtlCommands::needsLibrary(arguments.first()))
        return ZBCtlCommands::runFileCommand(arguments.first(), arguments.mid(1), out, err);

    ZBLibraryController library;
    const ZBObjectContext::OpenResult opened = library.openStore(dataDir);
    if (!opened.ok)
    {
        err << "norvikctl: the library cannot be opened: " << opened.error << Qt::endl;
        return 1;
    }
    if (opened.recoveredFromDamage)
    {
        // Scripts must notice: a fresh, empty library now stands where theirs was.
        err << "norvikctl: the library file was damaged (" << opened.error << "). It was kept as "
            << opened.quarantinedPath << " and a new, empty library was started." << Qt::endl;
        return 3;
    }
    library.initLibrary();
    // Keep the refreshed download filters now, so that what a command leaves
    // unsaved is only ever its own failure.
    library.save();

    ZBCtlCommands commands(library, out, err);
    return commands.run(arguments.first(), arguments.mid(1));
}
