#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "ui/playback/zblogoview.h"

// The start screen as the window controller drives it: texts and the tutorial
// state pushed in, the user's click reported back.
class TestZBLogoView : public QObject
{
    Q_OBJECT

private:
    // A view filled the way the controller fills it, at a comfortable size.
    static void fill(ZBLogoView &view, const QString &mode)
    {
        view.resize(640, 360);
        view.setPrimaryText(QStringLiteral("Norvik Player"));
        view.setUpHitnText(QStringLiteral("Drop movies here"));
        view.setBottomHitnText(QStringLiteral("Enter a web address above"));
        view.setButtonsText(QStringLiteral("Hide Tutorial"), QStringLiteral("Show Tutorial"));
        view.setPlayerMode(mode);
        view.updateView();
        // A hidden widget hears of a resize only when shown.
        view.show();
    }

    static QLabel *label(ZBLogoView &view, const char *name) { return view.findChild<QLabel *>(QLatin1String(name)); }

    static QPushButton *button(ZBLogoView &view) { return view.findChild<QPushButton *>("tutorialButton"); }

private Q_SLOTS:
    void modeShowsOrHidesTheHints_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<bool>("shown");
        QTest::newRow("show") << "show" << true;
        QTest::newRow("hide") << "hide" << false;
        // Whatever else a stored setting says, the tutorial stays reachable.
        QTest::newRow("garbled") << "garbled" << true;
    }

    void modeShowsOrHidesTheHints()
    {
        QFETCH(QString, mode);
        QFETCH(bool, shown);
        ZBLogoView view;
        fill(view, mode);
        QCOMPARE(view.playerMode(), shown ? QStringLiteral("show") : QStringLiteral("hide"));
        QCOMPARE(view.hintsShown(), shown);
        QCOMPARE(label(view, "bottomHint")->isHidden(), !shown);
        QCOMPARE(button(view)->text(), shown ? QStringLiteral("Hide Tutorial") : QStringLiteral("Show Tutorial"));

        // A click asks for the other mode and waits for the controller's
        // answer rather than flip by itself.
        QSignalSpy spy(&view, &ZBLogoView::tutorialToggled);
        QTest::mouseClick(button(view), Qt::LeftButton);
        QCOMPARE(spy, QList<QVariantList>{{shown ? QStringLiteral("hide") : QStringLiteral("show")}});
        QCOMPARE(view.hintsShown(), shown);
        // The answer, and a later text, replace what was shown.
        view.setPlayerMode(spy.at(0).at(0).toString());
        view.setUpHitnText(QStringLiteral("Ziehen Sie Filme hierher"));
        view.updateView();
        QCOMPARE(view.hintsShown(), !shown);
        view.setPlayerMode(QStringLiteral("show"));
        view.updateView();
        QCOMPARE(label(view, "upHint")->text(), QStringLiteral("Ziehen Sie Filme hierher"));
    }

    void smallSizesDropOrElideTheHints()
    {
        ZBLogoView view;
        fill(view, QStringLiteral("show"));
        const QString longHint = QStringLiteral("Drop movies here or open them from the File menu, or paste an "
                                                "address of a web page whose videos should be captured");
        view.setUpHitnText(longHint);

        view.resize(400, 300);
        QVERIFY(view.hintsShown());
        QLabel *up = label(view, "upHint");
        QVERIFY(up->text().endsWith(QChar(0x2026)));
        QCOMPARE(up->toolTip(), longHint);

        // The smallest usual size still fits everything without overlap.
        view.resize(320, 200);
        QList<QWidget *> parts = {label(view, "upHint"), label(view, "primaryText"), label(view, "bottomHint"),
                                  button(view)};
        for (int i = 0; i < parts.size(); ++i)
        {
            QVERIFY2(view.rect().contains(parts[i]->geometry()), qPrintable(parts[i]->objectName()));
            for (int j = i + 1; j < parts.size(); ++j)
                QVERIFY2(!parts[i]->geometry().intersects(parts[j]->geometry()),
                         qPrintable(parts[i]->objectName() + QLatin1Char('/') + parts[j]->objectName()));
        }

        // Too little room: the name and the button stay, the hints go.
        view.resize(280, 130);
        QVERIFY(!view.hintsShown());
        QVERIFY(!label(view, "primaryText")->isHidden() && !button(view)->isHidden());

        // Growing again brings them back, since the user had not hidden them.
        view.resize(640, 360);
        QVERIFY(view.hintsShown());
    }

    void paintsAPicture()
    {
        ZBLogoView view;
        fill(view, QStringLiteral("show"));
        const QImage image = view.grab().toImage();
        QCOMPARE(image.size() / image.devicePixelRatio(), QSize(640, 360));

        // The gradient makes the top lighter than the bottom; the name adds
        // light pixels in the middle.
        const int top = image.pixelColor(2, 2).lightness();
        QVERIFY2(top > image.pixelColor(2, image.height() - 3).lightness() && top < 80, "a dark gradient");
        const QRect title = label(view, "primaryText")->geometry();
        int brightest = 0;
        for (int y = title.top(); y <= title.bottom(); ++y)
            for (int x = title.left(); x <= title.right(); ++x)
                brightest = std::max(brightest, image.pixelColor(x, y).lightness());
    }
};

QTEST_MAIN(TestZBLogoView)
#include "tst_zblogoview.moc"
