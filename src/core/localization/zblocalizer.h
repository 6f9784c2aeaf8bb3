#pragma once

#include <QHash>
#include <QLocale>
#include <QSize>
#include <QString>
#include <QStringList>

class ZBMenuAdapter;

// The only source of user-visible text. Keys are looked up in the string table
// of the user's language and fall back to the English table shipped with the
// program, so a key a translation lacks still reads in English; a key missing
// everywhere shows as itself.
//
// String tables live below a resource root (":/strings" in the program), one
// folder per language named like QLocale::languageToString() ("English",
// "German", ...), one Qt Linguist table per file: "<Table>.qm" compiled by
// lrelease, and for English also the source "<Table>.ts". The context of every
// message is the table name and its source text is the key.
//
// Class operations only, one process-wide cache, main thread only.
class ZBLocalizer
{
public:
    ZBLocalizer() = delete;

    static QString defaultTable();    // "Localizable"
    static QString mainMenuTable();   // "MainMenu"
    static QString englishLanguage(); // "English"

    // The English table as key → text, loaded on first use and cached; an
    // empty name means the default table. Throws ZBCriticalError when the
    // English table is missing or cannot be read.
    static QHash<QString, QString> englishDictionaryForTable(const QString &table = QString());

    // The text of the key in the user's language, else the English text, else
    // the key itself. An empty table name means the default table.
    static QString localizedStringForKey(const QString &key, const QString &table = QString());
    // The same, with defaultValue in place of the key when no table has it.
    static QString localizedStringForKeyWithDefault(const QString &key, const QString &defaultValue,
                                                    const QString &table = QString());
    // The English text of a key of the default table, never translated; the key
    // itself when English lacks it.
    static QString nonLocalizedStringForKey(const QString &key);

    static QString okButtonTitle();
    static QString cancelButtonTitle();
    static QString yesButtonTitle();
    static QString noButtonTitle();

    // Retitles every item of the menu, depth first. Each titled item (a menu
    // item's title, or its submenu's title when it opens one) is looked up
    // under "<name>_<title>"; the application menu, titled "Apple", under
    // "<name>_NorvikPlayer". A submenu gets the same text as its item and is
    // retitled with the item's key as its prefix. Separators and untitled
    // items are left alone, and so are their submenus. Because keys are built
    // from the titles found, a menu must be retitled only once.
    static void localizeMenu(ZBMenuAdapter &menu, const QString &name, const QString &table);
    static void localizeMenuItem(ZBMenuAdapter &menu, int index, const QString &name, const QString &table);

    // The size a control that has fitted itself to its content ends up with:
    // a limit above 0 caps that dimension, a limit of 0 or less leaves it.
    static QSize sizeToFit(const QSize &fitted, qreal maxWidth, qreal maxHeight);

    // The language folder in use: the one set with setLanguage(), else the one
    // named by the environment variable NVK_LANGUAGE, else the first of the
    // system's UI languages that has tables, else English. A language may be
    // given by folder name ("German") or by locale name ("de", "de_AT").
    static QString language();
    // An empty language returns to the automatic choice.
    static void setLanguage(const QString &language);
    static QStringList availableLanguages();
    // The locale that goes with the language, for dates and numbers: the
    // system's own when it speaks that language, so regional formats are kept.
    static QLocale locale();

    static QString resourceRoot();
    // Points the localizer at another set of tables (a folder or a resource
    // path) and drops everything cached; an empty root restores ":/strings".
    static void setResourceRoot(const QString &root);
};
