#include "ui/app/zbdetachedwindow.h"

#include <QCloseEvent>
#include <QVBoxLayout>

#include "app/zbviewmodes.h"
#include "localization/zblocalizer.h"

ZBDetachedWindow::ZBDetachedWindow(QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("DetachedWindow"));
    setWindowTitle(ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
}

void ZBDetachedWindow::setPicture(QWidget *picture)
{
    layout()->addWidget(picture);
    picture->show();
}

void ZBDetachedWindow::setDetachedWindowMinimalSize(bool playbackStopped)
{
    const QSize minimum = ZBViewModes::detachedMinimumSize(playbackStopped);
    setMinimumSize(minimum);
    if (playbackStopped && (width() < minimum.width() || height() < minimum.height()))
        resize(minimum);
}

void ZBDetachedWindow::closeEvent(QCloseEvent *event)
{
    // Closing means going back to the main window; the window modes hide
    // this one once the picture has left it.
    event->ignore();
    Q_EMIT closeRequested();
}

void ZBDetachedWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    Q_EMIT fullscreenRequested();
}
