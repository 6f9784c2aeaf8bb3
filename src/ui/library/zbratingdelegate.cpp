#include "ui/library/zbratingdelegate.h"

#include <QFontMetrics>
#include <QMouseEvent>

#include "ui/library/zbtracklistmodel.h"

int ZBRatingDelegate::ratingForClick(int x, int width, int maximum, int current)
{
    if (width <= 0 || maximum <= 0)
        return current;
    const int star = std::clamp(x * maximum / width + 1, 1, maximum);
    // Clicking the one lit star of a one-star track is the way back to none.
    return star == current && star == 1 ? 0 : star;
}

bool ZBRatingDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                   const QModelIndex &index)
{
    if (event->type() != QEvent::MouseButtonRelease || !(index.flags() & Qt::ItemIsEditable))
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton)
        return false;
    // The stars take the width of the text that draws them.
    const QString text = index.data(Qt::DisplayRole).toString();
    const int starsWidth = QFontMetrics(option.font).horizontalAdvance(text) + 8;
    const int x = mouse->position().toPoint().x() - option.rect.left() - 4;
    if (x < 0 || x > starsWidth)
        return false;
    const int rating = ratingForClick(x, starsWidth - 8, ZBTrackListModel::MaxRating, index.data(Qt::EditRole).toInt());
    return model->setData(index, rating, Qt::EditRole);
}
