#include "localization/zblocalizer.h"

#include <cmath>
#include <memory>
#include <optional>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTranslator>
#include <QXmlStreamReader>
#include <QtDebug>

#include "localization/zbcriticalerror.h"
#include "localization/zbmenuadapter.h"

namespace
{
const QString kDefaultRoot = QStringLiteral(":/strings");

struct LocalizerState
{
    QString root = kDefaultRoot;
    QString languageOverride;
    std::optional<QString> language;
    std::optional<QLocale> locale;
    QHash<QString, QHash<QString, QString>> englishTables;
    // Compiled tables of the current language by table name; a null entry
    // remembers that the language has no such table.
    QHash<QString, std::shared_ptr<QTranslator>> translations;
};

LocalizerState &state()
{
    static LocalizerState s;
    return s;
}

QString tableOrDefault(const QString &table)
{
    return table.isEmpty() ? ZBLocalizer::defaultTable() : table;
}

// Reads the messages of the table's context from a Qt Linguist source.
// Unfinished and retired messages are left out, as the build leaves them out
// of compiled tables (lrelease -nounfinished), so English follows the same
// rules as every other language.
std::optional<QHash<QString, QString>> readLinguistSource(const QString &path, const QString &table)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;

    QHash<QString, QString> dictionary;
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("TS"))
    {
        qWarning().noquote()
            << QStringLiteral("String table %1 is malformed: it is not a Qt Linguist table.").arg(path);
        return std::nullopt;
    }

    while (xml.readNextStartElement())
    {
        if (xml.name() != QLatin1String("context"))
        {
            xml.skipCurrentElement();
            continue;
        }
        QString context;
        while (xml.readNextStartElement())
        {
            if (xml.name() == QLatin1String("name"))
            {
                context = xml.readElementText();
                continue;
            }
            if (xml.name() != QLatin1String("message"))
            {
                xml.skipCurrentElement();
                continue;
            }
            QString source;
            QString translation;
            bool finished = false;
            while (xml.readNextStartElement())
            {
                if (xml.name() == QLatin1String("source"))
                {
                    source = xml.readElementText();
                }
                else if (xml.name() == QLatin1String("translation"))
                {
                    finished = xml.attributes().value(QLatin1String("type")).isEmpty();
                    translation = xml.readElementText();
                }
                else
                {
                    xml.skipCurrentElement();
                }
            }
            if (finished && context == table && !source.isEmpty() && !translation.isEmpty())
                dictionary.insert(source, translation);
        }
    }
    if (xml.hasError())
    {
        qWarning().noquote() << QStringLiteral("String table %1 is malformed at line %2: %3")
                                    .arg(path)
                                    .arg(xml.lineNumber())
                                    .arg(xml.errorString());
        return std::nullopt;
    }
    return dictionary;
}

QLocale::Language languageForFolderName(const QString &name)
{
    for (int value = QLocale::AnyLanguage + 1; value <= QLocale::LastLanguage; ++value)
    {
        const auto language = QLocale::Language(value);
        if (QLocale::languageToString(language).compare(name, Qt::CaseInsensitive) == 0)
            return language;
    }
    return QLocale::AnyLanguage;
}

// The table folder for a folder name or a locale name, or an empty string
// when no folder fits.
QString folderForLanguage(const QString &requested, const QStringList &available)
{
    const QString wanted = requested.trimmed();
    if (wanted.isEmpty())
        return QString();
    for (const QString &folder : available)
    {
        if (folder.compare(wanted, Qt::CaseInsensitive) == 0)
            return folder;
    }
    // QLocale reads "de", "de_AT" and "de-AT" alike; an unknown name gives the
    // C locale, whose language has no folder.
    const QLocale locale(wanted);
    if (locale.language() == QLocale::C || locale.language() == QLocale::AnyLanguage)
        return QString();
    const QString name = QLocale::languageToString(locale.language());
    for (const QString &folder : available)
    {
        if (folder.compare(name, Qt::CaseInsensitive) == 0)
            return folder;
    }
    return QString();
}

QString resolveLanguage()
{
    const QStringList available = ZBLocalizer::availableLanguages();
    LocalizerState &s = state();

    if (!s.languageOverride.isEmpty())
    {
        const QString folder = folderForLanguage(s.languageOverride, available);
        if (!folder.isEmpty())
            return folder;
        qWarning().noquote()
            << QStringLiteral("No string tables for the language \"%1\"; using English.").arg(s.languageOverride);
        return ZBLocalizer::englishLanguage();
    }

    const QString fromEnvironment = qEnvironmentVariable("NVK_LANGUAGE");
    if (!fromEnvironment.isEmpty())
    {
        const QString folder = folderForLanguage(fromEnvironment, available);
        if (!folder.isEmpty())
            return folder;
        qWarning().noquote() << QStringLiteral("NVK_LANGUAGE names \"%1\", which has no string tables; "
                                               "using the system's language.")
                                    .arg(fromEnvironment);
    }

    const QStringList uiLanguages = QLocale::system().uiLanguages();
    for (const QString &uiLanguage : uiLanguages)
    {
        const QString folder = folderForLanguage(uiLanguage, available);
        if (!folder.isEmpty())
            return folder;
    }
    return ZBLocalizer::englishLanguage();
}

QTranslator *translationFor(const QString &table)
{
    LocalizerState &s = state();
    auto it = s.translations.constFind(table);
    if (it == s.translations.cend())
    {
        std::shared_ptr<QTranslator> translator;
        const QString language = ZBLocalizer::language();
        if (language != ZBLocalizer::englishLanguage())
        {
            const QString path = QDir(s.root).filePath(language + QLatin1Char('/') + table + QStringLiteral(".qm"));
            auto candidate = std::make_shared<QTranslator>();
            if (candidate->load(path))
                translator = candidate;
            else if (QFileInfo::exists(path))
                qWarning().noquote()
                    << QStringLiteral("The string table %1 cannot be read; showing English.").arg(path);
        }
        it = s.translations.insert(table, translator);
    }
    return it.value().get();
}

QString lookUp(const QString &key, const QString &table, const QString &fallback)
{
    const QString tableName = tableOrDefault(table);
    // The English table is loaded even when a translation answers: a missing
    // English table is an installation fault and must surface at once, not
    // only for users of one language.
    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable(tableName);

    if (const QTranslator *translator = translationFor(tableName))
    {
        const QString text = translator->translate(tableName.toUtf8().constData(), key.toUtf8().constData());
        if (!text.isEmpty())
            return text;
    }
    const auto it = english.constFind(key);
    return it != english.cend() ? it.value() : fallback;
}
} // namespace

QString ZBLocalizer::defaultTable()
{
    return QStringLiteral("Localizable");
}

QString ZBLocalizer::mainMenuTable()
{
    return QStringLiteral("MainMenu");
}

QString ZBLocalizer::englishLanguage()
{
    return QStringLiteral("English");
}

QHash<QString, QString> ZBLocalizer::englishDictionaryForTable(const QString &table)
{
    const QString tableName = tableOrDefault(table);
    LocalizerState &s = state();
    const auto cached = s.englishTables.constFind(tableName);
    if (cached != s.englishTables.cend())
        return cached.value();

    const QString path =
        QDir(s.root).filePath(englishLanguage() + QLatin1Char('/') + tableName + QStringLiteral(".ts"));
    const std::optional<QHash<QString, QString>> dictionary = readLinguistSource(path, tableName);
    if (!dictionary)
        throw ZBCriticalError::missingStringTable(tableName);
    s.englishTables.insert(tableName, *dictionary);
    return *dictionary;
}

QString ZBLocalizer::localizedStringForKey(const QString &key, const QString &table)
{
    return lookUp(key, table, key);
}

QString ZBLocalizer::localizedStringForKeyWithDefault(const QString &key, const QString &defaultValue,
                                                      const QString &table)
{
    return lookUp(key, table, defaultValue);
}

QString ZBLocalizer::nonLocalizedStringForKey(const QString &key)
{
    return englishDictionaryForTable(defaultTable()).value(key, key);
}

QString ZBLocalizer::okButtonTitle()
{
    return localizedStringForKey(QStringLiteral("Button_OK_Title"));
}

QString ZBLocalizer::cancelButtonTitle()
{
    return localizedStringForKey(QStringLiteral("Button_Cancel_Title"));
}

QString ZBLocalizer::yesButtonTitle()
{
    return localizedStringForKey(QStringLiteral("Button_Yes_Title"));
}

QString ZBLocalizer::noButtonTitle()
{
    return localizedStringForKey(QStringLiteral("Button_No_Title"));
}

void ZBLocalizer::localizeMenu(ZBMenuAdapter &menu, const QString &name, const QString &table)
{
    for (int index = 0; index < menu.itemCount(); ++index)
        localizeMenuItem(menu, index, name, table);
}

void ZBLocalizer::localizeMenuItem(ZBMenuAdapter &menu, int index, const QString &name, const QString &table)
{
    const std::unique_ptr<ZBMenuAdapter> submenu = menu.submenu(index);
    QString title = submenu ? submenu->title() : menu.itemTitle(index);
    if (title.isEmpty())
        return;
    if (title == QLatin1String("Apple"))
        title = QStringLiteral("NorvikPlayer");

    const QString key = name + QLatin1Char('_') + title;
    const QString text = localizedStringForKey(key, table);
    menu.setItemTitle(index, text);
    if (submenu)
    {
        submenu->setTitle(text);
        localizeMenu(*submenu, key, table);
    }
}

QSize ZBLocalizer::sizeToFit(const QSize &fitted, qreal maxWidth, qreal maxHeight)
{
    QSize result = fitted;
    // Rounded down so that a fractional limit is never exceeded.
    if (maxWidth > 0)
        result.setWidth(qMin(fitted.width(), int(std::floor(maxWidth))));
    if (maxHeight > 0)
        result.setHeight(qMin(fitted.height(), int(std::floor(maxHeight))));
    return result;
}

QString ZBLocalizer::language()
{
    LocalizerState &s = state();
    if (!s.language)
        s.language = resolveLanguage();
    return *s.language;
}

void ZBLocalizer::setLanguage(const QString &language)
{
    LocalizerState &s = state();
    s.languageOverride = language;
    s.language.reset();
    s.locale.reset();
    s.translations.clear();
}

QStringList ZBLocalizer::availableLanguages()
{
    return QDir(state().root).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

QLocale ZBLocalizer::locale()
{
    LocalizerState &s = state();
    if (!s.locale)
    {
        const QLocale::Language wanted = languageForFolderName(language());
        const QLocale system = QLocale::system();
        s.locale = wanted == QLocale::AnyLanguage || system.language() == wanted ? system : QLocale(wanted);
    }
    return *s.locale;
}

QString ZBLocalizer::resourceRoot()
{
    return state().root;
}

void ZBLocalizer::setResourceRoot(const QString &root)
{
    LocalizerState &s = state();
    s.root = root.isEmpty() ? kDefaultRoot : root;
    s.language.reset();
    s.locale.reset();
    s.englishTables.clear();
    s.translations.clear();
}
