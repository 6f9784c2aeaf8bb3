// Runs in the main world of every frame of the browser's pages, before the
// page's own scripts. Flash has no plug-in any more: a page that holds an
// <embed> or <object> gets the Flash engine (Ruffle), which replaces them with
// players, so the movies play and what they load passes through the browser
// like any other request. Pages without one load nothing.
"use strict";

(function (base) {
    if (window.nvkRuffleLoader)
        return;
    window.nvkRuffleLoader = true;
    const own = {
        publicPath: base,
        polyfills: true,
        autoplay: "on",
        unmuteOverlay: "hidden",
        splashScreen: false,
        warnOnUnsupportedContent: false,
        logLevel: "error",
    };
    window.RufflePlayer = window.RufflePlayer || {};
    window.RufflePlayer.config = Object.assign(own, window.RufflePlayer.config || {});

    let requested = false;
    function loadEngine() {
        if (requested || !document.querySelector("embed, object"))
            return;
        requested = true;
        observer.disconnect();
        const script = document.createElement("script");
        script.src = base + "ruffle.js";
        (document.head || document.documentElement).appendChild(script);
    }
    const observer = new MutationObserver(loadEngine);
    observer.observe(document, { childList: true, subtree: true });
    loadEngine();
})(NVK_RUFFLE_BASE);
