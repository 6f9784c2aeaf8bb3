#pragma once

#include "ui/playback/zbplaybackui.h"

class QWidget;

// Playback's questions as the desktop asks them: modal message boxes over
// the main window and a file dialog to find a moved file.
class ZBPlaybackDialogs : public ZBPlaybackUi
{
public:
    explicit ZBPlaybackDialogs(QWidget *parent);

    MissingTrackChoice askAboutMissingTrack(ZBItem *item) override;
    QString locateTrack(ZBItem *item) override;
    void showCannotPlay(ZBItem *item, const QString &reason) override;
    bool showRealMediaUnsupported(ZBItem *item, const QString &missing) override;

private:
    QWidget *m_parent;
};
