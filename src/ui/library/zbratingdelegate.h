#pragma once

#include <QStyledItemDelegate>

// Stars in the Rating column: a click on the n-th star rates the track n, a
// click on the only lit star clears it.
class ZBRatingDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // The rating a click at `x` (in the cell, from its left edge) gives a
    // track rated `current` in a cell `width` wide showing `maximum` stars.
    static int ratingForClick(int x, int width, int maximum, int current);

    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
    QWidget *createEditor(QWidget *, const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return nullptr;
    }
};
