#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

// The start screen shown in the player area while nothing plays: the product
// name over a dark gradient, two tutorial hints and a button that shows or
// hides them. It is a plain widget rather than a movie so that the window is
// ready at once, without waiting for any playback engine.
//
// The view only displays: the controller owns the texts and the remembered
// tutorial state and pushes them through the functions below. A click on the
// button asks for the other state with tutorialToggled(); the view itself
// changes only when the controller answers with setPlayerMode().
class ZBLogoView : public QWidget
{
    Q_OBJECT

public:
    explicit ZBLogoView(QWidget *parent = nullptr);

    void setPrimaryText(const QString &text);
    // The top hint. The name is the one the program has always used.
    void setUpHitnText(const QString &text);
    void setBottomHitnText(const QString &text);
    // The button reads hideText while the hints are shown, showText otherwise.
    void setButtonsText(const QString &hideText, const QString &showText);
    // "hide" hides the hints; any other value shows them, so that a damaged
    // stored value still leaves the tutorial reachable.
    void setPlayerMode(const QString &mode);
    // Re-applies texts and state and lays the view out again.
    void updateView();

    QString playerMode() const { return m_mode; }
    bool hintsShown() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // The state the user asked for: "hide" or "show".
    void tutorialToggled(const QString &newMode);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void relayout();
    // Places a hint at the given top edge, elided to the width; false when
    // there is too little room for it to say anything useful.
    bool placeHint(QLabel *label, const QString &text, int top, int width);

    QString m_mode;
    QString m_primaryText;
    QString m_upHintText;
    QString m_bottomHintText;
    QString m_hideText;
    QString m_showText;
    QLabel *m_primary;
    QLabel *m_upHint;
    QLabel *m_bottomHint;
    QPushButton *m_button;
    // Texts changed while hidden; laid out when shown.
    bool m_layoutPending = true;
    // Where the accent under the name is painted; empty when there is no room.
    QRect m_accent;
};
