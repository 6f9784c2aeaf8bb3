#include "ctl/ctlcommands.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <cmath>
#include <unistd.h>

#include "engines/mpv/zbmpvengine.h"
#include "engines/zbsnapshotwriter.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "playback/zbmediaprobe.h"
#include "playback/zbmediatypes.h"

int ZBCtlCommands::importFiles(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return fail(QStringLiteral("import needs at least one file or folder"));
    ZBLibraryImporter importer(m_library);
    // Progress only for a person watching; a script's log stays clean.
    if (isatty(STDERR_FILENO))
    {
        auto shown = std::make_shared<QElapsedTimer>();
        QObject::connect(&importer, &ZBLibraryImporter::progress, &importer,
                         [this, shown](int done, int total, const QString &path) {
                             if (shown->isValid() && shown->elapsed() < 100 && done != total)
                                 return;
                             shown->start();
                             m_err << "\r\033[K" << done << "/" << total << "  "
                                   << ZBMediaTypes::getFileNameFromPath(path) << (done == total ? "\n" : "")
                                   << Qt::flush;
                         });
    }
    const ZBLibraryImporter::Counts counts = importer.run(arguments);
    for (const QString &missing : counts.missing)
        m_err << "norvikctl: no such file or folder: " << missing << Qt::endl;
    m_out << "added " << counts.added << ", already in library " << counts.alreadyInLibrary << ", refused "
          << counts.refused << "\n";
    return counts.missing.isEmpty() ? 0 : 1;
}

int ZBCtlCommands::probe(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    if (arguments.size() != 1)
    {
        err << "norvikctl: probe needs exactly one FILE" << Qt::endl;
        return 1;
    }
    const QFileInfo info(arguments.first());
    if (!info.isFile() || !info.isReadable())
    {
        err << "norvikctl: cannot read " << arguments.first() << (info.isDir() ? " (a folder)" : "") << Qt::endl;
        return 1;
    }
    const QString path = info.absoluteFilePath();
    // The same verdict an import would reach.
    const ZBLibraryImporter::Examined examined = ZBLibraryImporter::examine(path, true);
    const std::optional<FlashMovie> flash = flashMovieIn(path);
    const bool counted = ZBMediaTypes::pathExtension(path) == u"swf";

    out << "file: " << path << "\n";
    out << "type: " << examined.type << "\n";
    out << "registered: " << (examined.accepted ? "yes" : "no") << "\n";
    out << "library length: " << examined.length << (counted ? " frames" : " seconds") << "\n";
    if (flash)
    {
        out << "flash: " << flash->origin << ", version " << flash->header.version << ", "
            << (flash->header.isAS3 ? "ActionScript 3" : "ActionScript 1/2") << "\n";
        out << "frames: " << flash->header.frameCount << "\n";
    }
    else
    {
        const std::optional<double> seconds = ZBMediaProbe::durationSeconds(path);
        out << "duration: " << (seconds ? QString(QString::number(*seconds, 'f', 3) + QStringLiteral(" s")) : QStringLiteral("unknown"))
            << "\n";
        const QString summary = ZBMediaProbe::formatSummary(path);
        if (!summary.isEmpty())
            out << "format: " << summary << "\n";
    }
    out << "video engine can decode: " << (ZBMediaProbe::canDecode(path) ? "yes" : "no") << "\n";
    return 0;
}

int ZBCtlCommands::snapshot(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message) {
        err << "norvikctl: " << message << Qt::endl;
        return 1;
    };
    QStringList spelledOut = arguments;
    for (QString &argument : spelledOut)
    {
        if (argument == u"-o")
            argument = QStringLiteral("--output");
    }
    const Options options(
        spelledOut,
        {QStringLiteral("time"), QStringLiteral("frame"), QStringLiteral("output"), QStringLiteral("format")}, {});
    if (!options.error().isEmpty())
        return fail(options.error());
    if (options.positional().size() != 1 || !options.has(QStringLiteral("output")))
        return fail(QStringLiteral("snapshot needs FILE and -o OUT"));
    const QString path = options.positional().first();
    const QString output = options.value(QStringLiteral("output"));
    int format = ZBSnapshotWriter::formatForSuffix(QFileInfo(output).suffix());
    if (options.has(QStringLiteral("format")))
    {
        bool whole = false;
        format = options.value(QStringLiteral("format")).toInt(&whole);
        if (!whole || format < 0 || format >= ZBSnapshotWriter::FormatCount)
            return fail(QStringLiteral("--format takes 0 (TIFF), 1 (BMP), 2 (GIF), 3 (JPEG), 4 (PNG) or 5 (JPEG "
                                       "2000), not \"%1\"")
                            .arg(options.value(QStringLiteral("format"))));
    }
    else if (format < 0)
    {
        return fail(QStringLiteral("cannot write images of type \"%1\"; use .tiff, .bmp, .gif, .jpg, .png or .jp2, "
                                   "or say --format N")
                        .arg(QFileInfo(output).suffix()));
    }
    if (!QFileInfo(path).isFile())
        return fail(QStringLiteral("\"%1\" does not exist").arg(path));

    if (isFlashFile(path))
    {
        if (options.has(QStringLiteral("time")))
            return fail(QStringLiteral("a Flash movie is shown by frames: use --frame N (from 0), not --time"));
        bool whole = false;
        const int frame = options.value(QStringLiteral("frame"), QStringLiteral("0")).toInt(&whole);
        if (!whole || frame < 0)
            return fail(QStringLiteral("--frame takes a frame number from 0 on, not \"%1\"")
                            .arg(options.value(QStringLiteral("frame"))));
        return snapshotFlash(path, frame, output, format, out, err);
    }
    if (options.has(QStringLiteral("frame")))
        return fail(QStringLiteral("--frame is for Flash movies; \"%1\" is a video, use --time SECONDS").arg(path));

    bool numeric = false;
    const double time = options.value(QStringLiteral("time"), QStringLiteral("0")).toDouble(&numeric);
    if (!numeric || !std::isfinite(time) || time < 0)
        return fail(QStringLiteral("--time takes a number of seconds from 0 on, not \"%1\"")
                        .arg(options.value(QStringLiteral("time"))));
    QString reason;
    if (!ZBMpvEngine::checkFile(path, &reason))
        return fail(reason);

    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    if (!engine.startError().isEmpty())
        return fail(engine.startError());

    // The engine answers through the event loop; a stalled file must not
    // hang a script.
    const auto waitFor = [&engine](auto signal, int milliseconds) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        QObject::connect(&engine, signal, &loop, &QEventLoop::quit);
        QObject::connect(&engine, &ZBPlaybackEngine::loadFailed, &loop, &QEventLoop::quit);
        loop.exec();
    };
    QString failure;
    QObject::connect(&engine, &ZBPlaybackEngine::loadFailed, &engine,
                     [&failure](const QString &why) { failure = why; });
    engine.load(path);
    waitFor(&ZBPlaybackEngine::loaded, 30000);
    if (!failure.isEmpty())
        return fail(failure);
    if (!engine.isLoaded())
        return fail(QStringLiteral("\"%1\" did not open within 30 seconds").arg(path));

    const double length = engine.totalTime();
    if (length > 0 && time > length)
        return fail(QStringLiteral("--time %1 is past the end of \"%2\", which lasts %3 seconds")
                        .arg(time)
                        .arg(path)
                        .arg(length, 0, 'f', 3));
    if (time > 0)
    {
        engine.seek(time);
        if (engine.isSeeking())
            waitFor(&ZBMpvEngine::seekFinished, 30000);
        if (engine.isSeeking())
            return fail(QStringLiteral("seeking to %1 s in \"%2\" did not finish").arg(time).arg(path));
    }
    const QImage image = engine.snapshot();
    if (image.isNull())
        return fail(QStringLiteral("\"%1\" shows no picture at %2 s (no video stream?)").arg(path).arg(time));
    return writeSnapshot(image, output, format, out, err);
}

int ZBCtlCommands::writeSnapshot(const QImage &image, const QString &output, int format, QTextStream &out,
                                 QTextStream &err)
{
    const ZBSnapshotWriter::Result result = ZBSnapshotWriter::saveSnapshot(image, output, format);
    if (!result.ok())
    {
        err << "norvikctl: cannot write " << output << ": " << result.description() << Qt::endl;
        return 1;
    }
    if (result.format != format)
        err << "norvikctl: this system cannot write " << ZBSnapshotWriter::formatName(format) << "; " << output
            << " holds " << ZBSnapshotWriter::formatName(result.format) << Qt::endl;
    out << output << '\t' << image.width() << 'x' << image.height() << '\n';
    return 0;
}
