#include "settings/zbsettings.h"

#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>
#include <variant>

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QVariant>
#include <QtDebug>

namespace
{
using BoolField = bool ZBSettings::*;
using IntField = int ZBSettings::*;
using RealField = double ZBSettings::*;
using TextField = QString ZBSettings::*;

enum class Check
{
    None,
    Colour,
};

struct Entry
{
    const char *key;
    std::variant<BoolField, IntField, RealField, TextField> field;
    Check check = Check::None;
};

// The stored keys in their documented order, which is also the order they are
// read in. "RecentFolders", the window frames and the helper versions are
// handled apart: they are not plain values with a default.
const Entry kEntries[] = {
    {"DriverOnOff", &ZBSettings::option_driverOnOff},
    {"AutoplayAddedFiles", &ZBSettings::option_autoplayAddedFiles},
    {"GotoIfLastFrameIsMet", &ZBSettings::option_gotoIfLastFrameIsMet},
    {"GotoIfFrameNumberWasDecreased", &ZBSettings::option_gotoIfFrameNumberWasDecreased},
    {"GotoIfStayOnTheSameFrameMore", &ZBSettings::option_gotoIfStayOnTheSameFrameMore},
    {"GotoStayingTimeValue", &ZBSettings::option_gotoStayingTimeValue},
    {"PlayFLVwithMPK", &ZBSettings::option_playFLVwithMPK},
    {"FormatOfScreenshot", &ZBSettings::option_formatOfScreenshot},
    {"PathForDownloads", &ZBSettings::option_pathForDownloads},
    {"PathForScreenshot", &ZBSettings::option_pathForScreenshot},
    {"AllowToSendDataOverNetwork", &ZBSettings::option_allowSendDataOverNetwork},
    {"FlashDefaultQuality", &ZBSettings::option_flashDefaultQuality},
    {"FlashLocalSecurity", &ZBSettings::option_enableFlashLocalSecurity},
    {"ProgramVolume", &ZBSettings::programVolume},
    {"ShuffleOption", &ZBSettings::shuffle},
    {"RepeatOption", &ZBSettings::repeat},
    {"MustShowUrlPaneInPlaylistMode", &ZBSettings::option_mustShowUrlPaneInPlaylistMode},
    {"DontAllowScreensaverInFullscreen", &ZBSettings::option_dontAllowScreensaver},
    {"ScreenShotInterval", &ZBSettings::option_screenShotInterval},
    {"AlwaysStartCapturingFromFirstFrame", &ZBSettings::option_alwaysStartCapturingFromFirstFrame},
    {"KeepCapturingToNextTrackInPlaylist", &ZBSettings::option_keepCapturingToNextTrackInPlaylist},
    {"DontAskMeAgainRemovePlaylist", &ZBSettings::option_DontAskMeAgainRemovePlaylist},
    {"DontAskMeAgainClearDownloadsList", &ZBSettings::option_DontAskMeAgainClearDownloadsList},
    {"DontAskMeAgainRemoveItemFromLibrary", &ZBSettings::option_DontAskMeAgainRemoveItemFromLibrary},
    {"DontAskMeAgainRemoveItemFromPlaylist", &ZBSettings::option_DontAskMeAgainRemoveItemFromPlaylist},
    {"DontAskMeAgainCancelDownload", &ZBSettings::option_DontAskMeAgainCancelDownload},
    {"DontAskMeAgainRealNotFound", &ZBSettings::option_DontAskMeAgainRealNotFound},
    {"DontAskMeAgainWarningBeforeExit", &ZBSettings::option_DontAskMeAgainWarningBeforeExit},
    {"DontAskMeAgainMoveToTrashOrKeepFile", &ZBSettings::option_DontAskMeAgainMoveToTrashOrKeepFile},
    {"AlwaysMoveFileToTrash", &ZBSettings::option_alwaysMoveFileToTrash},
    {"MustShowFilterHint", &ZBSettings::mustShowFilterHint},
    {"WindowOnTopMode", &ZBSettings::onTopMode},
    {"FlvBackgroundColor", &ZBSettings::flvBgColor, Check::Colour},
    {"showTutorial", &ZBSettings::showTutorial},
};

const QString kLastApplicationPath = QStringLiteral("LastApplicationPath");
const QString kRecentFolders = QStringLiteral("RecentFolders");
const QString kDriverVersion = QStringLiteral("DriverVersion");
const QString kDaemonVersion = QStringLiteral("DaemonVersion");

bool isNumber(const QVariant &value)
{
    switch (value.typeId())
    {
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Long:
        case QMetaType::ULong:
            return true;
        default:
            return false;
    }
}

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

// Text-based stores (INI files) give every scalar back as text, so text is
// parsed; anything else that is not the expected kind is refused.
std::optional<double> toReal(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1.0 : 0.0;
    if (isNumber(value))
        return value.toDouble();
    if (isText(value))
    {
        const QString text = value.toString().trimmed();
        bool ok = false;
        const double number = text.toDouble(&ok);
        if (ok)
            return number;
        // A boolean written to a text-based store comes back as a word.
        if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
            return 1.0;
        if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return 0.0;
    }
    return std::nullopt;
}

std::optional<bool> toBoolean(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (isText(value))
    {
        const QString text = value.toString().trimmed().toLower();
        if (text == QLatin1String("true") || text == QLatin1String("yes"))
            return true;
        if (text == QLatin1String("false") || text == QLatin1String("no"))
            return false;
    }
    // Booleans have always been stored as numbers too.
    if (const std::optional<double> number = toReal(value))
        return *number != 0.0;
    return std::nullopt;
}

std::optional<int> toInteger(const QVariant &value)
{
    if (isText(value))
    {
        bool ok = false;
        const int number = value.toString().trimmed().toInt(&ok);
        if (ok)
            return number;
    }
    const std::optional<double> number = toReal(value);
    if (!number || std::isnan(*number))
        return std::nullopt;
    // Whole part, as a number object would give it; kept inside int so that a
    // huge stored number cannot overflow.
    const double whole = std::trunc(*number);
    if (whole >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (whole <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return int(whole);
}

std::optional<QString> toText(const QVariant &value)
{
    if (isText(value))
        return value.toString();
    if (isNumber(value) || value.typeId() == QMetaType::Bool)
        return value.toString();
    return std::nullopt;
}

std::optional<QString> toColourName(const QVariant &value)
{
    static const QRegularExpression pattern(QStringLiteral("^#[0-9a-fA-F]{6}$"));
    const std::optional<QString> text = toText(value);
    if (!text || !pattern.match(text->trimmed()).hasMatch())
        return std::nullopt;
    return text->trimmed().toLower();
}

void warnUnusable(const QString &key, const QVariant &value, const char *expected, const QString &fallback)
{
    const QString shown = isText(value) || isNumber(value)
                              ? QStringLiteral("\"%1\"").arg(value.toString())
                              : QStringLiteral("of type %1").arg(QLatin1String(value.typeName()));
    qWarning().noquote() << QStringLiteral("Settings: the stored value %1 of \"%2\" is not %3; using %4 instead.")
                                .arg(shown, key, QLatin1String(expected), fallback);
}

template <typename T, typename Converter>
void readValue(const QSettings &store, const QString &key, T &field, const T &fallback, Converter convert,
               const char *expected)
{
    if (!store.contains(key))
    {
        field = fallback;
        return;
    }
    const QVariant stored = store.value(key);
    if (const std::optional<T> converted = convert(stored))
    {
        field = *converted;
        return;
    }
    warnUnusable(key, stored, expected, QVariant::fromValue(fallback).toString());
    field = fallback;
}

QStringList readFolderList(const QSettings &store, const QString &key)
{
    if (!store.contains(key))
        return {};
    const QVariant stored = store.value(key);
    // An empty list is written to INI files as "@Invalid()".
    if (!stored.isValid())
        return {};
    if (stored.typeId() == QMetaType::QStringList || stored.typeId() == QMetaType::QVariantList)
        return stored.toStringList();
    // A list of one entry comes back from INI files as plain text, an empty
    // list as empty text.
    if (isText(stored))
    {
        const QString text = stored.toString();
        return text.isEmpty() ? QStringList() : QStringList{text};
    }
    warnUnusable(key, stored, "a list of folders", QStringLiteral("no recent folders"));
    return {};
}
} // namespace

QString ZBSettings::organizationName()
{
    return QStringLiteral("Quillon Software");
}

QString ZBSettings::applicationName()
{
    return QStringLiteral("Norvik Player");
}

QString ZBSettings::mainWindowFrameName()
{
    return QStringLiteral("MainWindowFrame");
}

QString ZBSettings::detachedWindowFrameName()
{
    return QStringLiteral("DetachedWindowFrame");
}

std::unique_ptr<QSettings> ZBSettings::openStore()
{
    return std::make_unique<QSettings>(organizationName(), applicationName());
}

QString ZBSettings::defaultDownloadsFolder()
{
    return QStringLiteral("%1/Downloads").arg(QDir::homePath());
}

void ZBSettings::loadUserDefaults(QSettings &store)
{
    // The integration helper finds the program through this key. Written
    // only when it changed: an unchanged store is not rewritten (and locked)
    // while the window waits to show.
    if (store.value(kLastApplicationPath).toString() != QCoreApplication::applicationFilePath())
        store.setValue(kLastApplicationPath, QCoreApplication::applicationFilePath());

    const ZBSettings defaults;
    for (const Entry &entry : kEntries)
    {
        const QString key = QLatin1String(entry.key);
        std::visit(
            [&](auto field)
            {
                using Value = std::remove_cvref_t<decltype(this->*field)>;
                if constexpr (std::is_same_v<Value, bool>)
                    readValue(store, key, this->*field, defaults.*field, toBoolean, "a yes/no value");
                else if constexpr (std::is_same_v<Value, int>)
                    readValue(store, key, this->*field, defaults.*field, toInteger, "a whole number");
                else if constexpr (std::is_same_v<Value, double>)
                    readValue(store, key, this->*field, defaults.*field, toReal, "a number");
                else if (entry.check == Check::Colour)
                    readValue(store, key, this->*field, defaults.*field, toColourName, "a colour like #rrggbb");
                else
                    readValue(store, key, this->*field, defaults.*field, toText, "text");
            },
            entry.field);
    }

    recentFolders = readFolderList(store, kRecentFolders);
    readValue(store, kDriverVersion, driverVersion, defaults.driverVersion, toReal, "a number");
    readValue(store, kDaemonVersion, daemonVersion, defaults.daemonVersion, toReal, "a number");

    const QVariant mainFrame = store.value(mainWindowFrameName());
    m_mainWindowFrame = mainFrame.typeId() == QMetaType::QByteArray ? mainFrame.toByteArray() : QByteArray();
    const QVariant detachedFrame = store.value(detachedWindowFrameName());
    m_detachedWindowFrame =
        detachedFrame.typeId() == QMetaType::QByteArray ? detachedFrame.toByteArray() : QByteArray();
}

bool ZBSettings::saveUserDefaults(QSettings &store) const
{
    for (const Entry &entry : kEntries)
    {
        const QString key = QLatin1String(entry.key);
        std::visit([&](auto field) { store.setValue(key, QVariant::fromValue(this->*field)); }, entry.field);
    }
    store.setValue(kRecentFolders, recentFolders);
    store.setValue(kLastApplicationPath, QCoreApplication::applicationFilePath());

    // An absent frame stays absent, so that the next launch still knows the
    // window has never been placed.
    if (!m_mainWindowFrame.isEmpty())
        store.setValue(mainWindowFrameName(), m_mainWindowFrame);
    if (!m_detachedWindowFrame.isEmpty())
        store.setValue(detachedWindowFrameName(), m_detachedWindowFrame);

    store.sync();
    if (store.status() != QSettings::NoError)
    {
        qWarning().noquote() << QStringLiteral("Settings could not be written to %1.").arg(store.fileName());
        return false;
    }
    return true;
}

void ZBSettings::resetDialogWarnings()
{
    option_DontAskMeAgainRemovePlaylist = false;
    option_DontAskMeAgainClearDownloadsList = false;
    option_DontAskMeAgainRemoveItemFromLibrary = false;
    option_DontAskMeAgainRemoveItemFromPlaylist = false;
    option_DontAskMeAgainCancelDownload = false;
    option_DontAskMeAgainRealNotFound = false;
    option_DontAskMeAgainWarningBeforeExit = false;
    option_DontAskMeAgainMoveToTrashOrKeepFile = false;
}

QByteArray ZBSettings::windowFrame(const QString &autosaveName) const
{
    if (autosaveName == mainWindowFrameName())
        return m_mainWindowFrame;
    if (autosaveName == detachedWindowFrameName())
        return m_detachedWindowFrame;
    qWarning().noquote() << QStringLiteral("Settings: no window frame is kept under \"%1\".").arg(autosaveName);
    return {};
}

void ZBSettings::setWindowFrame(const QString &autosaveName, const QByteArray &geometry)
{
    if (autosaveName == mainWindowFrameName())
        m_mainWindowFrame = geometry;
    else if (autosaveName == detachedWindowFrameName())
        m_detachedWindowFrame = geometry;
    else
        qWarning().noquote() << QStringLiteral("Settings: window frame \"%1\" is not kept; only \"%2\" and \"%3\" are.")
                                    .arg(autosaveName, mainWindowFrameName(), detachedWindowFrameName());
}
