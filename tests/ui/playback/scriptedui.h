#pragma once

#include <QStringList>

#include "library/zbitem.h"
#include "ui/playback/zbplaybackui.h"

// Answers playback's questions from a script and records what was asked.
class ScriptedUi : public ZBPlaybackUi
{
public:
    MissingTrackChoice askAboutMissingTrack(ZBItem *item) override
    {
        asked << item->Name();
        return missingChoice;
    }
    QString locateTrack(ZBItem *) override { return locatedPath; }
    void showCannotPlay(ZBItem *item, const QString &reason) override
    {
        cannotPlay << (item ? item->Name() : QString());
        reasons << reason;
    }
    bool showRealMediaUnsupported(ZBItem *item, const QString &) override
    {
        realRefused << item->Name();
        return neverAskAgain;
    }

    MissingTrackChoice missingChoice = MissingTrackChoice::DoNothing;
    QString locatedPath;
    bool neverAskAgain = false;
    QStringList asked;
    QStringList cannotPlay;
    QStringList reasons;
    QStringList realRefused;
};
