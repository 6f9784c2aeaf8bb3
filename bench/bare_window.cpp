// The references for the start-up benchmark: an empty main window and, with
// --widgets, a window of the same kinds of Qt widgets and texts the player's
// first frame shows, with no program behind them. --sources keeps only the
// menu bar and the source list: the least a first frame of the player's
// could show. When
// NVK_REPORT_FIRST_PAINT is set, each writes the time of its first painted
// frame since the process started, the way the player writes it.
#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "ui/app/zbfirstpaint.h"

namespace
{
// The logo screen: a gradient and three texts of their own sizes and weights.
class Logo : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        QLinearGradient gradient(0, 0, 0, height());
        gradient.setColorAt(0, QColor(48, 52, 60));
        gradient.setColorAt(1, QColor(20, 22, 26));
        painter.fillRect(rect(), gradient);
        painter.setPen(QColor(150, 150, 150));
        QFont font = this->font();
        font.setPointSize(11);
        painter.setFont(font);
        painter.drawText(QRect(0, 0, width(), height() / 3), Qt::AlignCenter, QStringLiteral("Drop movies here"));
        font.setPointSize(13);
        painter.setFont(font);
        painter.drawText(QRect(0, height() / 2, width(), height() / 3), Qt::AlignCenter,
                         QStringLiteral("Enter a web address above"));
        font.setPointSize(36);
        font.setWeight(QFont::Light);
        painter.setFont(font);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("Norvik Player"));
    }
};

QTreeView *sourceList()
{
    auto *sources = new QTreeView;
    auto *sourceModel = new QStandardItemModel(sources);
    for (const char *name : {"LIBRARY", "All Tracks", "Flash Movies", "Videos", "RealMedia", "Silverlight", "PLAYLISTS",
                             "DOWNLOADS", "Now Browsing", "Today", "Last Week", "Last Month"})
        sourceModel->appendRow(new QStandardItem(QString::fromUtf8(name)));
    sources->setModel(sourceModel);
    sources->setHeaderHidden(true);
    return sources;
}

QWidget *playerWidgets()
{
    auto *central = new QWidget;
    auto *column = new QVBoxLayout(central);
    auto *top = new QHBoxLayout;
    column->addLayout(top);
    for (int i = 0; i < 3; ++i)
        top->addWidget(new QToolButton);
    top->addWidget(new QSlider(Qt::Horizontal), 1);
    top->addWidget(new QSlider(Qt::Horizontal));
    auto *title = new QLabel(QStringLiteral("No track"));
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSize(bold.pointSize() + 2);
    title->setFont(bold);
    top->addWidget(title);
    top->addWidget(new QLabel(QStringLiteral("00:00 / 00:00")));
    auto *search = new QLineEdit;
    search->setPlaceholderText(QStringLiteral("Search"));
    top->addWidget(search);

    auto *columns = new QSplitter;
    column->addWidget(columns, 1);
    columns->addWidget(sourceList());
    auto *right = new QSplitter(Qt::Vertical);
    columns->addWidget(right);
    auto *logo = new Logo;
    auto *logoColumn = new QVBoxLayout(logo);
    logoColumn->addStretch();
    logoColumn->addWidget(new QPushButton(QStringLiteral("Hide Tutorial")), 0, Qt::AlignCenter);
    right->addWidget(logo);
    auto *tracks = new QTableView;
    auto *trackModel = new QStandardItemModel(0, 8, tracks);
    trackModel->setHorizontalHeaderLabels({"Name", "Type", "Time", "Rating", "Plays", "Date Added", "Last Played", "Path"});
    tracks->setModel(trackModel);
    right->addWidget(tracks);
    // The player's proportions.
    columns->setSizes({190, 830});
    right->setSizes({400, 140});

    auto *bottom = new QHBoxLayout;
    column->addLayout(bottom);
    for (const char *text : {"URL", "HUD", "T"})
    {
        auto *button = new QToolButton;
        button->setText(QString::fromUtf8(text));
        bottom->addWidget(button);
    }
    bottom->addStretch();
    return central;
}
} // namespace

int main(int argc, char *argv[])
{
    ZBFirstPaint::mark("main");
    QApplication app(argc, argv);
    ZBFirstPaint::mark("application");
    QMainWindow window;
    window.resize(1024, 680);
    const bool widgets = app.arguments().contains(QStringLiteral("--widgets"));
    const bool sources = app.arguments().contains(QStringLiteral("--sources"));
    if (widgets || sources)
    {
        for (const char *title : {"Norvik Player", "File", "Edit", "Track", "Playback", "View", "History", "Window", "Help"})
            window.menuBar()->addMenu(QString::fromUtf8(title));
        window.setCentralWidget(widgets ? playerWidgets() : sourceList());
    }
    ZBFirstPaint firstPaint(&window);
    ZBFirstPaint::mark("window built");
    window.show();
    ZBFirstPaint::mark("shown");
    return app.exec();
}
