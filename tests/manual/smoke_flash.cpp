#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QElapsedTimer>
#include <QDebug>
#include "engines/flash/zbflashview.h"
#include "support/swfwriter.h"
int main(int argc, char **argv)
{
    ZBFlashView::prepareApplication();
    QApplication app(argc, argv);
    QTemporaryDir dir;
    QElapsedTimer clock; clock.start();
    ZBFlashView view;
    view.resize(400, 300);
    view.show();
    view.warmUp();
    int version = argc > 1 ? atoi(argv[1]) : 10;
    nvktest::SwfWriter w; if (argc > 2) w.setFileAttributes(true, true); w.setVersion(version).setFrameRate(24).setStageSize(200,150).addFrames(48);
    QString path = dir.filePath("m.swf");
    QFile f(path); f.open(QIODevice::WriteOnly); f.write(w.build()); f.close();
    QObject::connect(&view, &ZBFlashView::warmed, [&]{ qDebug() << "warmed" << clock.elapsed(); 
        QString err; bool ok = view.loadMovie(w.build(), QUrl::fromLocalFile(path), QUrl::fromLocalFile(path), &err);
        qDebug() << "load" << ok << err; clock.restart(); });
    QObject::connect(&view, &ZBFlashView::movieLoaded, [&]{ qDebug() << "loaded" << clock.elapsed() << view.totalFrames() << view.movieSize(); });
    QObject::connect(&view, &ZBFlashView::firstFrameShown, [&]{ qDebug() << "first frame" << view.firstFrameMilliseconds(); });
    QObject::connect(&view, &ZBFlashView::movieLoadFailed, [&](QString r){ qDebug() << "failed" << r; });
    QTimer t; QObject::connect(&t, &QTimer::timeout, [&]{ qDebug() << clock.elapsed() << view.currentFrame() << view.isPlaying(); }); t.start(250);
    QTimer::singleShot(6000, &app, &QApplication::quit);
    return app.exec();
}
