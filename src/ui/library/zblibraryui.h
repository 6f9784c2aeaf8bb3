#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class ZBItem;

// The questions the library's commands put to the user. The window answers
// them with dialogs; tests answer them from a script.
class ZBLibraryUi
{
public:
    struct Confirmation
    {
        bool yes = false;
        // The "never ask again" box, ticked.
        bool dontAskAgain = false;
    };
    struct FilesAnswer
    {
        bool moveToTrash = false;
        bool remember = false;
    };
    struct SmartList
    {
        QString name;
        QString request;
    };

    virtual ~ZBLibraryUi() = default;

    // Yes / No with a "never ask again" box; texts by string-table key.
    virtual Confirmation confirm(const QString &messageKey, const QString &informativeKey) = 0;
    // Keep the removed tracks' files, or move them to the Trash.
    virtual FilesAnswer askAboutFiles() = 0;
    // The smart-list editor, modal: nothing when cancelled.
    virtual std::optional<SmartList> editSmartList(const QString &name, const QString &request) = 0;
    virtual void showInfo(ZBItem *item, const QString &formatSummary) = 0;
    virtual void revealInFileManager(const QString &path) = 0;
};
