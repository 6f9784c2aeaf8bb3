#include "ctl/ctlcommands.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <functional>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "playback/zbprojector.h"
#include "playback/zbswfheader.h"

int ZBCtlCommands::swfInfo(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    if (arguments.size() != 1)
    {
        err << "norvikctl: swf-info needs exactly one FILE" << Qt::endl;
        return 1;
    }
    const QString path = arguments.first();
    if (!QFileInfo(path).isFile() || !QFileInfo(path).isReadable())
    {
        err << "norvikctl: cannot read " << path << Qt::endl;
        return 1;
    }
    const std::optional<FlashMovie> flash = flashMovieIn(path);
    if (!flash)
    {
        err << "norvikctl: " << path
            << " is no Flash movie (no FWS, CWS or ZWS header that reads) and no projector carrying one"
            << Qt::endl;
        return 1;
    }
    const ZBSwfHeader::Info &header = flash->header;
    out << "source: " << flash->origin << "\n";
    out << "signature: " << header.signature << " (compression: " << ZBSwfHeader::compressionName(header.compression)
        << ")\n";
    out << "version: " << header.version << "\n";
    out << "file length: " << header.fileLength << "\n";
    out << "frame size: " << QString::number(header.width()) << " x " << QString::number(header.height())
        << " pixels\n";
    out << "frame rate: " << QString::number(header.frameRate) << "\n";
    out << "frame count: " << header.frameCount << "\n";
    out << "actionscript 3: " << (header.isAS3 ? "yes" : "no") << "\n";
    return 0;
}

bool ZBCtlCommands::isFlashFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (ZBSwfHeader::readHeader(file.peek(ZBSwfHeader::HeaderProbeSize)))
        return true;
    const QString suffix = QFileInfo(path).suffix().toLower();
    return (suffix == u"exe" || ZBProjector::isApplicationFile(path))
           && !ZBProjector::dataWithContentsOfSWF(path).isEmpty();
}

int ZBCtlCommands::snapshotFlash(const QString &path, int frame, const QString &output, int format,
                                 QTextStream &out, QTextStream &err)
{
    const auto fail = [&err](const QString &message) {
        err << "norvikctl: " << message << Qt::endl;
        return 1;
    };
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return fail(QStringLiteral("Flash snapshots need the graphical application object"));
    QString reason;
    const QByteArray movie = ZBFlashEngine::movieData(path, &reason);
    if (movie.isEmpty())
        return fail(reason);
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return fail(QStringLiteral("\"%1\" holds no readable Flash movie").arg(path));

    // The view is exactly the stage at 100 %, so the picture is the frame as
    // the movie's author drew it.
    const QSize stage(std::max(1, int(std::lround(header->width()))), std::max(1, int(std::lround(header->height()))));
    ZBFlashView view;
    view.resize(stage);
    view.show();
    view.setOriginalSize();
    bool failed = false;
    QObject::connect(&view, &ZBFlashView::movieLoadFailed, &view, [&](const QString &why) {
        failed = true;
        reason = why;
    });
    const auto waitUntil = [&failed](const std::function<bool()> &done, int milliseconds) {
        QElapsedTimer clock;
        clock.start();
        while (!failed && !done() && clock.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return !failed && done();
    };
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (!view.loadMovie(movie, url, url, &reason))
        return fail(reason);
    if (!waitUntil([&view]() { return view.isMovieLoaded(); }, 60000))
        return fail(failed ? reason : QStringLiteral("the Flash engine did not start \"%1\" within 60 seconds").arg(path));
    view.stop();
    if (frame >= view.totalFrames())
        return fail(QStringLiteral("--frame %1 is past the end of \"%2\", which has %3 frames (0 to %4)")
                        .arg(frame)
                        .arg(path)
                        .arg(view.totalFrames())
                        .arg(view.totalFrames() - 1));
    bool drawn = false;
    QObject::connect(&view, &ZBFlashView::frameShown, &view, [&drawn](int, bool ok) { drawn = ok; });
    view.gotoFrame(frame);
    // Only the engine's word that it has drawn the frame counts; the frame
    // it reports is where the movie really stands.
    if (!waitUntil([&view]() { return !view.isGotoPending(); }, 20000))
        return fail(failed ? reason : QStringLiteral("the Flash engine did not show frame %1 within 20 seconds").arg(frame));
    if (!drawn)
        return fail(QStringLiteral("the Flash engine drew nothing after going to frame %1").arg(frame));
    if (view.currentFrame() != frame)
        return fail(QStringLiteral("\"%1\" does not stay on frame %2: its own actions moved it to frame %3")
                        .arg(path)
                        .arg(frame)
                        .arg(view.currentFrame()));
    // The page has the picture on screen; the view's copy of it arrives with
    // the next composited frame.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 100)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    const QImage image = view.snapshot();
    if (image.isNull())
        return fail(QStringLiteral("the Flash view gave no picture"));
    return writeSnapshot(image, output, format, out, err);
}
