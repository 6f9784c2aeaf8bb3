#include <QPointer>
#include <QTest>

#include "engines/zbplaybackengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplayerpanel.h"

// The engines' views (GL views in the player) join the panel's window only
// when first shown: the first GL view in a window makes Qt compose all of it
// with OpenGL, which a software renderer does slowly on every repaint.
class TestZBPlayerPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void engineViewsJoinWhenFirstShownAndGoWithThePanel()
    {
        ZBLibraryController library;
        ZBSettings settings;
        ZBPlaybackController controller(&library, &settings, nullptr);
        QPointer<QWidget> shown = new QWidget;
        QPointer<QWidget> neverShown = new QWidget;
        {
            ZBPlayerPanel panel(&controller);
            panel.addEngineView(ZBPlaybackEngine::VideoMovie, shown);
            panel.addEngineView(ZBPlaybackEngine::RealMedia, neverShown);
            QVERIFY(!shown->parent());
            QVERIFY(!neverShown->parent());

            panel.showEngine(ZBPlaybackEngine::VideoMovie);
            QVERIFY(panel.isAncestorOf(shown));
            QVERIFY(!neverShown->parent());
            panel.showLogo();
            panel.showEngine(ZBPlaybackEngine::VideoMovie);
            QVERIFY(panel.isAncestorOf(shown));
        }
        QVERIFY(!shown);
        QVERIFY(!neverShown);
    }
};

QTEST_MAIN(TestZBPlayerPanel)
#include "tst_zbplayerpanel.moc"
