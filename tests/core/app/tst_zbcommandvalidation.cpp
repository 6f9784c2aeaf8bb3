#include <functional>

#include <QTest>

#include "app/zbcommandvalidation.h"

using Change = std::function<void(ZBCommandState &)>;
Q_DECLARE_METATYPE(Change)

class TestZBCommandValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void validateMenuItem_data();
    void validateMenuItem();
};

void TestZBCommandValidation::validateMenuItem_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("tag");
    QTest::addColumn<bool>("enabled");
    // A key, or the title itself for the stars; "checked"/"unchecked" for marks.
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, Change change, int tag, bool enabled, const QString &shown = {})
    { QTest::newRow(name) << change << tag << enabled << shown; };
    // The selected source with a selected track.
    const auto source = [](const char *group, bool smart)
    {
        return [=](ZBCommandState &s)
        {
            s.sourceSelected = true;
            s.sourceName = QStringLiteral("Today");
            s.sourceGroup = QLatin1String(group);
            s.sourceIsSmart = smart;
            s.selectedTrackRow = 0;
        };
    };
    using S = ZBCommandState;
    // clang-format off
    row("a modal dialog disables everything", [](S &s) { s.modalWindowOpen = true; }, 803, false);
    row("a tag without a rule", [](S &) {}, 999, true);
    row("fullscreen offers to leave", [](S &s) { s.displayMode = 2; }, 305, false, "menuExitFullscreen");
    row("detached offers to attach", [](S &s) { s.displayMode = 1; }, 304, true, "menuAttachWindow");
    row("three stars", [](S &s) { s.selectedTrackRow = 2; }, 223, true, "★★★");
    row("stars need a selected track", [](S &) {}, 221, false, "★");
    row("silent and not muted", [](S &s) { s.volume = 0; }, 802, false);
    row("muted after 50", [](S &s) { s.volume = 0; s.muted = true; s.volumeBeforeMute = 50; }, 802, true);
    row("mute is marked", [](S &s) { s.muted = true; }, 803, true, "checked");
    row("Today takes no track commands", source("Predefined", true), 201, false);
    row("Today is no list to edit", source("Predefined", true), 2004, false);
    row("a user list named Today", source("user", false), 201, true);
    row("user group ignores case", source("user", false), 202, true);
    row("smart user list is not plain", source("User", true), 202, false);
    row("smart user list edits its rules", source("User", true), 204, true);
    row("play resumes a paused track", [](S &s) { s.hasPlayingItem = true; }, 401, true, "MainMenu_Movie_Play");
    row("no play over a web page", [](S &s) { s.hasPlayingItem = true; s.mode = 0; }, 401, false);
    row("pause while playing", [](S &s) { s.isPlaying = s.hasPlayingItem = true; s.playbackStopped = false; }, 401, true, "MainMenu_Movie_Pause");
    row("repeat all is marked", [](S &s) { s.repeat = 2; }, 412, true, "checked");
    row("repeat none is not", [](S &s) { s.repeat = 2; }, 411, true, "unchecked");
    row("video sizing not attached", [](S &s) { s.playbackStopped = false; s.currentUsedView = 1; }, 403, false);
    row("video sizing detached", [](S &s) { s.playbackStopped = false; s.currentUsedView = 1; s.displayMode = 1; }, 403, true);
    row("tutorial shown again", [](S &s) { s.showTutorial = QStringLiteral("hide"); }, 701, true, "menuHelpShowTutorial");
    row("no tutorial while playing", [](S &s) { s.playbackStopped = false; }, 701, false, "menuHelpHideTutorial");
    row("projector download", [](S &s) { s.mode = 0; s.selectedDownloadRow = 1; s.selectedDownloadType = QStringLiteral("EXE"); }, 502, true);
    row("history of two is not enough", [](S &s) { s.historyItemCount = 2; }, 601, false);
    // clang-format on
}

void TestZBCommandValidation::validateMenuItem()
{
    QFETCH(Change, change);
    QFETCH(int, tag);
    QFETCH(bool, enabled);
    QFETCH(QString, shown);
    ZBCommandState state;
    change(state);
    const ZBCommandValidity validity = ZBCommandValidation::validateMenuItem(tag, state);
    QCOMPARE(validity.enabled, enabled);
    if (shown == u"checked" || shown == u"unchecked")
        QCOMPARE(validity.checked, std::optional<bool>(shown == u"checked"));
    else if (!shown.isEmpty())
        QCOMPARE(validity.titleKey.isEmpty() ? validity.title : validity.titleKey, shown);
}

QTEST_APPLESS_MAIN(TestZBCommandValidation)
#include "tst_zbcommandvalidation.moc"
