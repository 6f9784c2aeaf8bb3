#pragma once

#include "ui/library/zblibraryui.h"

class QWidget;

// The library's questions as the window asks them: alerts with a "never ask
// again" box, the smart-list editor, the information window, and the file
// manager over D-Bus.
class ZBLibraryDialogs : public ZBLibraryUi
{
public:
    explicit ZBLibraryDialogs(QWidget *window);

    Confirmation confirm(const QString &messageKey, const QString &informativeKey) override;
    FilesAnswer askAboutFiles() override;
    std::optional<SmartList> editSmartList(const QString &name, const QString &request) override;
    void showInfo(ZBItem *item, const QString &formatSummary) override;
    void revealInFileManager(const QString &path) override;

private:
    QWidget *m_window;
};
