#include "ui/library/zblibrarydialogs.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "library/zbitem.h"
#include "localization/zblocalizer.h"
#include "strings/zbstringdateadditions.h"
#include "strings/zbstringformsize.h"
#include "ui/app/zbfilemanager.h"
#include "ui/library/zbsmartlistwindow.h"

namespace
{
QString tr(const QString &key)
{
    return ZBLocalizer::localizedStringForKey(key);
}
} // namespace

ZBLibraryDialogs::ZBLibraryDialogs(QWidget *window)
    : m_window(window)
{
}

ZBLibraryUi::Confirmation ZBLibraryDialogs::confirm(const QString &messageKey, const QString &informativeKey)
{
    QMessageBox box(QMessageBox::Warning, tr(QStringLiteral("mainWindowTitle")), tr(messageKey), QMessageBox::NoButton,
                    m_window);
    box.setInformativeText(tr(informativeKey));
    QPushButton *yes = box.addButton(tr(QStringLiteral("Button_Yes_Title")), QMessageBox::YesRole);
    QPushButton *no = box.addButton(tr(QStringLiteral("Button_No_Title")), QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    auto *never = new QCheckBox(tr(QStringLiteral("NeverAskAgainTitle")));
    box.setCheckBox(never);
    box.exec();
    return {box.clickedButton() == yes, never->isChecked()};
}

ZBLibraryUi::FilesAnswer ZBLibraryDialogs::askAboutFiles()
{
    QMessageBox box(QMessageBox::Question, tr(QStringLiteral("mainWindowTitle")),
                    tr(QStringLiteral("alertMessageDeleteFiles")), QMessageBox::NoButton, m_window);
    box.setInformativeText(tr(QStringLiteral("allertInformativeTextDeleteFiles")));
    QPushButton *keep = box.addButton(tr(QStringLiteral("alertKeepFiles")), QMessageBox::AcceptRole);
    QPushButton *trash = box.addButton(tr(QStringLiteral("alertMoveToTrash")), QMessageBox::DestructiveRole);
    box.setDefaultButton(keep);
    box.setEscapeButton(trash);
    auto *remember = new QCheckBox(tr(QStringLiteral("RememberMyChoice")));
    box.setCheckBox(remember);
    box.exec();
    return {box.clickedButton() == trash, remember->isChecked()};
}

std::optional<ZBLibraryUi::SmartList> ZBLibraryDialogs::editSmartList(const QString &name, const QString &request)
{
    ZBSmartListWindow editor(m_window);
    editor.setAddOrEdit(request.isEmpty());
    editor.setPlayListName(name);
    // Rules the editor cannot show (written by hand elsewhere) start it
    // afresh rather than show something else than the list does.
    if (request.isEmpty() || !editor.fillRules(request))
        editor.setDefaultPredicate();
    editor.exec();
    if (editor.predicate().isEmpty())
        return std::nullopt;
    return SmartList{editor.playListName(), editor.predicate()};
}

void ZBLibraryDialogs::showInfo(ZBItem *item, const QString &formatSummary)
{
    QDialog dialog(m_window);
    dialog.setWindowTitle(item->Name());
    auto *form = new QFormLayout(&dialog);
    const auto row = [form](const QString &key, const QString &value) {
        auto *label = new QLabel(value.isEmpty() ? QStringLiteral("—") : value);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setWordWrap(true);
        form->addRow(tr(key) + u':', label);
    };
    const QFileInfo file(item->Path());
    row(QStringLiteral("columnTitleName"), item->Name());
    row(QStringLiteral("columnTitleType"), item->Type().toLower());
    row(QStringLiteral("columnTitlePath"), item->Path());
    row(QStringLiteral("infoFileSize"), file.exists() ? ZBStringFormSize::stringFromSizeBin(file.size(), true) : QString());
    row(QStringLiteral("infoFormat"), formatSummary);
    row(QStringLiteral("columnTitlePlayCount"), QString::number(item->PlayCount().value_or(0)));
    row(QStringLiteral("columnTitleAdded"),
        item->Added().isValid() ? ZBStringDateAdditions::naturalStringFromDate(item->Added()) : QString());
    row(QStringLiteral("columnTitleLastPlayed"),
        item->LastPlayed().isValid() ? ZBStringDateAdditions::naturalStringFromDate(item->LastPlayed()) : QString());
    row(QStringLiteral("columnTitleURL"), item->URL());
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    form->addRow(buttons);
    dialog.resize(480, dialog.sizeHint().height());
    dialog.exec();
}

void ZBLibraryDialogs::revealInFileManager(const QString &path)
{
    ZBFileManager::revealFile(path);
}
