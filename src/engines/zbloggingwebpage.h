#pragma once

#include <QLoggingCategory>
#include <QWebEnginePage>

// A web page whose console goes to our log under a category of its own: the
// page's messages (Ruffle logs its panics there) are often the only account
// of why it shows nothing.
class ZBLoggingWebPage : public QWebEnginePage
{
public:
    using Category = const QLoggingCategory &(*)();

    ZBLoggingWebPage(Category category, QWebEngineProfile *profile, QObject *parent)
        : QWebEnginePage(profile, parent)
        , m_category(category)
    {
    }

protected:
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int line,
                                  const QString &source) override
    {
        if (level == ErrorMessageLevel)
            qCWarning(m_category).noquote() << message << source << line;
        else
            qCDebug(m_category).noquote() << message;
    }

private:
    Category m_category;
};
