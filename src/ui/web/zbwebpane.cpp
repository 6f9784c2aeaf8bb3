#include "ui/web/zbwebpane.h"

#include <QUrlQuery>

#include "localization/zblocalizer.h"

namespace
{
const QString StartPagePath = QStringLiteral("/pages/default.html");
const QString ErrorPagePath = QStringLiteral("/pages/404.html");

QUrl ownPage(const QString &path, const QList<std::pair<QString, QString>> &items)
{
    QUrl url;
    url.setScheme(QStringLiteral("qrc"));
    url.setPath(path);
    QUrlQuery query;
    for (const auto &[key, value] : items)
        query.addQueryItem(key, QString::fromUtf8(QUrl::toPercentEncoding(value)));
    url.setQuery(query);
    return url;
}

bool isOwnPage(const QUrl &url, const QString &path)
{
    return url.scheme() == QLatin1String("qrc") && url.path() == path;
}
} // namespace

QUrl ZBWebPane::startPageUrl(const QString &typedText)
{
    return ownPage(StartPagePath,
                   {{QStringLiteral("heading"), ZBLocalizer::localizedStringForKey(QStringLiteral("browserStartPageHeading"))},
                    {QStringLiteral("text"), ZBLocalizer::localizedStringForKey(QStringLiteral("browserStartPageText"))},
                    {QStringLiteral("address"), typedText}});
}

QUrl ZBWebPane::errorPageUrl(const QString &address, FailureKind kind, int code, const QString &description)
{
    QString reason;
    switch (kind)
    {
    case FailureKind::Connection:
        reason = ZBLocalizer::localizedStringForKey(QStringLiteral("browserErrorConnection"));
        break;
    case FailureKind::HttpStatus:
        reason = ZBLocalizer::localizedStringForKey(QStringLiteral("browserErrorHttpStatus")).arg(code);
        break;
    case FailureKind::Other:
        reason = ZBLocalizer::localizedStringForKey(QStringLiteral("browserErrorOther"))
                     .arg(description.isEmpty() ? QString::number(code) : description);
        break;
    }
    return ownPage(ErrorPagePath,
                   {{QStringLiteral("heading"), ZBLocalizer::localizedStringForKey(QStringLiteral("browserErrorPageHeading"))},
                    {QStringLiteral("reason"), reason},
                    {QStringLiteral("address"), address}});
}

bool ZBWebPane::isStartPage(const QUrl &url)
{
    return isOwnPage(url, StartPagePath);
}

bool ZBWebPane::isErrorPage(const QUrl &url)
{
    return isOwnPage(url, ErrorPagePath);
}
