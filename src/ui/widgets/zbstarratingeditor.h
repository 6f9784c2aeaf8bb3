#pragma once

#include <QWidget>

// A row of stars for a track rating from 0 (unrated) to MaximumRating.
//
// Mouse: a click or a drag on star k gives k; the strip left of the first
// star gives 0, and so does a click on the first star of a one-star rating,
// so that "unrated" is reachable without a keyboard.
// Keyboard: Right, Up and + raise by one, Left, Down and - lower by one
// (mirrored for right-to-left layouts), Home or 0 gives 0, End the maximum,
// the digits 1 to MaximumRating that rating. Every other key, Return and
// Escape included, is left to the parent, so a dialog's default and cancel
// buttons keep working while the stars have focus.
class ZBStarRatingEditor : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(int rating READ rating WRITE setRating NOTIFY ratingChanged USER true)

public:
    static constexpr int MaximumRating = 5;

    explicit ZBStarRatingEditor(QWidget *parent = nullptr);

    int rating() const { return m_rating; }
    // Clamped to 0 ... MaximumRating.
    void setRating(int rating);

    // The rating a click at pos gives (before the first-star rule above).
    int ratingAt(const QPoint &pos) const;
    // Where star 1 ... MaximumRating is drawn.
    QRect starRect(int star) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // Every change, whether from the user or from setRating().
    void ratingChanged(int rating);
    // Only changes the user made with the mouse or the keyboard.
    void ratingEdited(int rating);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    int starSize() const;
    int zeroStripWidth() const;
    void editRating(int rating);

    int m_rating = 0;
};
