#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QList>
#include <QTimer>

class ZBCaptureTree;
class ZBDownloadItem;

// The download tree view's rows: captured pages at the top, their resources
// below (as the current filter picks them), and below a previewed Flash movie
// what it loaded.
//
// A busy page requests thousands of resources. The capture tree only appends,
// so the model keeps the number of rows it has announced per parent and, once
// per turn of the event loop, inserts whatever has been appended since: views
// never see more rows than they were told about, and never a reset for a new
// resource. Only a filter change resets.
class ZBDownloadTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        TitleColumn = 0,
        TypeColumn,
        ActionColumn,
        ProgressColumn,
        SizeColumn,
        ColumnCount,
    };
    enum Roles
    {
        // The row's action (ZBDownloadItem::Action).
        ActionRole = Qt::UserRole + 1,
        // Whether a click on the action does something; greyed out otherwise.
        ActionEnabledRole,
        // 0-100, or -1 when there is nothing to show, for a progress delegate.
        ProgressRole,
        IsPageRole,
    };

    explicit ZBDownloadTreeModel(ZBCaptureTree &tree, QObject *parent = nullptr);

    ZBDownloadItem *itemAt(const QModelIndex &index) const;
    // The row of an item the view has been told about; invalid otherwise.
    QModelIndex indexForItem(const ZBDownloadItem *item, int column = TitleColumn) const;
    QList<ZBDownloadItem *> itemsAt(const QModelIndexList &indexes) const;

    static bool isActionEnabled(const ZBDownloadItem *item, int filter);
    static QString progressText(const ZBDownloadItem *item);
    // The estimated-size column: binary size, else the resource count, else "NA".
    static QString sizeText(const ZBDownloadItem *item);

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

public Q_SLOTS:
    // Announces every row appended since the last time, now.
    void flushPendingRows();

Q_SIGNALS:
    // A page or a previewed movie got its first visible child: expand it.
    void expandRequested(const QModelIndex &index);

private:
    void childrenAppended(ZBDownloadItem *owner);
    void itemChanged(ZBDownloadItem *item);
    void expandItem(ZBDownloadItem *owner);
    void filterChanged(int filter);
    void pageAboutToBeRemoved(int index);
    void pageRemoved(int index);
    void pagesAboutToBeCleared();
    void pagesCleared();
    int actualCount(const ZBDownloadItem *owner) const;
    int rowOf(const ZBDownloadItem *item) const;
    void forgetAnnounced(const ZBDownloadItem *item);

    ZBCaptureTree &m_tree;
    int m_filter;
    // Rows announced per parent (none for the page list); a parent missing
    // here has never been asked for and gets its real count when it is.
    mutable QHash<const ZBDownloadItem *, int> m_announced;
    QList<ZBDownloadItem *> m_pendingOwners;
    const ZBDownloadItem *m_removingPage = nullptr;
    QTimer m_flushTimer;
};
