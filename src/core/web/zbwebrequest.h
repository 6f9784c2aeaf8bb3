#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

// One request a page in the browser made, or one movie address found in a
// page's markup. Plain data, copied out of the web engine's thread, so capture
// rules can work on it without the web engine.
struct ZBWebRequest
{
    // The web engine's own resource types, same values, so nothing is lost in
    // translation; FoundInPage marks an address read from the page's markup
    // (an <embed>, <object> or <video> that may never be fetched).
    enum ResourceType
    {
        MainFrame = 0,
        SubFrame,
        Stylesheet,
        Script,
        Image,
        FontResource,
        SubResource,
        Object,
        Media,
        Worker,
        SharedWorker,
        Prefetch,
        Favicon,
        Xhr,
        Ping,
        ServiceWorker,
        CspReport,
        PluginResource,
        NavigationPreloadMainFrame = 19,
        NavigationPreloadSubFrame,
        WebSocket = 254,
        Unknown = 255,
        FoundInPage = 1000,
    };

    enum NavigationType
    {
        LinkNavigation,
        TypedNavigation,
        FormSubmittedNavigation,
        BackForwardNavigation,
        ReloadNavigation,
        OtherNavigation,
        RedirectNavigation,
    };

    QUrl url;
    ResourceType resourceType = Unknown;
    NavigationType navigationType = OtherNavigation;
    // The top page the request is made for (a frame's own page for requests
    // found in a frame's markup).
    QUrl firstPartyUrl;
    // The origin that caused the request; empty for typed addresses.
    QUrl initiator;
    QString method;
    // The request loads the top page itself, or the address was found in the
    // top page's markup. The engine does not say which frame a subresource
    // belongs to: false for all of them.
    bool mainFrame = false;
    // For FoundInPage: the element the address came from ("embed", "object",
    // "param", "video", "audio", "source").
    QString element;
    // Made by the preview of a Flash movie rather than by a browsed page.
    bool preview = false;
};

Q_DECLARE_METATYPE(ZBWebRequest)
