#pragma once

#include <QColor>
#include <QWidget>

// One line of the status panel's liquid-crystal text: the panel's font and
// ink, cut at the tail with an ellipsis when the panel is narrow (the whole
// text is then the tool tip).
class ZBLedText : public QWidget
{
public:
    static QColor ink(); // rgb(63, 63, 97)
    // "Verdana" where installed, else the desktop's sans serif.
    static QFont ledFont(int pointSize);

    explicit ZBLedText(int pointSize, QWidget *parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString &text);
    void setAlignment(Qt::Alignment alignment);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateToolTip();

    QString m_text;
    Qt::Alignment m_alignment;
};
