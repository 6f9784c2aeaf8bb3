#pragma once

#include "engines/zbplaybackengine.h"

// Stands in for a kind of content no engine on this system can play
// (Silverlight packages): the tracks are recognised and listed, and every
// attempt to play one is refused with the reason.
class ZBUnsupportedEngine final : public ZBPlaybackEngine
{
    Q_OBJECT

public:
    ZBUnsupportedEngine(int engineCode, const QString &reason, QObject *parent = nullptr);

    QString reason() const { return m_reason; }

    int engineCode() const override { return m_code; }
    bool canInitWithFile(const QString &path) override;
    void load(const QString &path) override;
    void stop() override {}
    void play() override {}
    void pause() override {}
    bool isLoaded() const override { return false; }
    bool isPlaying() const override { return false; }
    double currentTime() const override { return -1; }
    double totalTime() const override { return 0; }
    void seek(double) override {}
    void setVolume(int volume) override { m_volume = std::clamp(volume, 0, 100); }
    int volume() const override { return m_volume; }
    QSize naturalSize() const override { return {}; }
    QWidget *view() override { return nullptr; }
    QImage snapshot() override { return {}; }

private:
    int m_code;
    QString m_reason;
    int m_volume = 100;
};
