#include "ui/playback/zbplaybackdialogs.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include "library/zbitem.h"
#include "localization/zblocalizer.h"

namespace
{
QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}
} // namespace

ZBPlaybackDialogs::ZBPlaybackDialogs(QWidget *parent)
    : m_parent(parent)
{
}

ZBPlaybackUi::MissingTrackChoice ZBPlaybackDialogs::askAboutMissingTrack(ZBItem *item)
{
    QMessageBox box(QMessageBox::Warning, text("alertNotExistTitle"), text("alertNotExistsMessage"),
                    QMessageBox::NoButton, m_parent);
    box.setInformativeText(item->Path());
    QPushButton *find = box.addButton(text("alertFind"), QMessageBox::AcceptRole);
    QPushButton *remove = box.addButton(text("alertDelete"), QMessageBox::DestructiveRole);
    QPushButton *nothing = box.addButton(text("alertDoNothing"), QMessageBox::RejectRole);
    box.setDefaultButton(find);
    box.setEscapeButton(nothing);
    box.exec();
    if (box.clickedButton() == find)
        return MissingTrackChoice::Find;
    if (box.clickedButton() == remove)
        return MissingTrackChoice::Delete;
    return MissingTrackChoice::DoNothing;
}

QString ZBPlaybackDialogs::locateTrack(ZBItem *item)
{
    const QFileInfo info(item->Path());
    const QString suffix = info.suffix();
    const QString filter = suffix.isEmpty() ? QString() : QStringLiteral("*.%1 (*.%1)").arg(suffix);
    return QFileDialog::getOpenFileName(m_parent, text("alertFind"), info.absolutePath() + QLatin1Char('/') + item->Name(),
                                        filter);
}

void ZBPlaybackDialogs::showCannotPlay(ZBItem *item, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, text("alertCannotPlayTrackTitle"), text("alertCannotPlayTrackMessage"),
                    QMessageBox::Ok, m_parent);
    QStringList details;
    if (item)
        details << item->Path();
    if (!reason.isEmpty())
        details << reason;
    box.setInformativeText(details.join(QLatin1Char('\n')));
    box.button(QMessageBox::Ok)->setText(ZBLocalizer::okButtonTitle());
    box.exec();
}

bool ZBPlaybackDialogs::showRealMediaUnsupported(ZBItem *item, const QString &missing)
{
    QMessageBox box(QMessageBox::Warning, text("alertCannotPlayTrackTitle"), text("alertRealNotFoundMessage"),
                    QMessageBox::Ok, m_parent);
    QString info = text("alertRealNotFoundInfo");
    if (!missing.isEmpty())
        info += QStringLiteral("\n\n") + missing;
    box.setInformativeText(info + QStringLiteral("\n") + item->Path());
    box.button(QMessageBox::Ok)->setText(ZBLocalizer::okButtonTitle());
    auto *never = new QCheckBox(text("NeverAskAgainTitle"));
    box.setCheckBox(never);
    box.exec();
    return never->isChecked();
}
