// Runs in an isolated world of every frame of the browser's pages. Reports
// every movie and media address the markup names (<embed src>, <object data>,
// <param name="movie">, <video>/<audio>/<source src>), made absolute, so that
// a movie that never starts is captured all the same. Also keeps the page's
// links and pictures from being dragged out of the browser.
"use strict";

(function () {
    if (window.nvkPageScan)
        return;
    window.nvkPageScan = true;

    const seen = new Set();
    const waiting = [];
    let bridge = null;
    const topFrame = window === window.top;

    // The web channel reaches the top frame only: frames hand their finds to
    // the top frame's copy of this script.
    function deliver(entry) {
        if (!topFrame)
            window.top.postMessage({ nvkPageScan: entry }, "*");
        else if (bridge)
            bridge.found(entry[0], entry[1], entry[2], entry[3]);
        else
            waiting.push(entry);
    }

    function report(raw, element) {
        if (!raw)
            return;
        let url;
        try {
            url = new URL(raw.trim(), document.baseURI).href;
        } catch (e) {
            return;
        }
        if (!/^https?:/i.test(url) || seen.has(url))
            return;
        seen.add(url);
        deliver([url, element, location.href, topFrame]);
    }

    function check(node) {
        switch (node.localName) {
        case "embed":
            report(node.getAttribute("src"), "embed");
            break;
        case "object":
            report(node.getAttribute("data"), "object");
            for (const param of node.querySelectorAll(":scope > param"))
                check(param);
            break;
        case "param": {
            const name = (node.getAttribute("name") || "").toLowerCase();
            if ((name === "movie" || name === "src") && node.parentElement && node.parentElement.localName === "object")
                report(node.getAttribute("value"), "param");
            break;
        }
        case "video":
        case "audio":
            report(node.getAttribute("src"), node.localName);
            break;
        case "source":
            if (node.parentElement && /^(video|audio)$/.test(node.parentElement.localName))
                report(node.getAttribute("src"), "source");
            break;
        }
    }

    function scan(root) {
        if (root.nodeType !== Node.ELEMENT_NODE && root.nodeType !== Node.DOCUMENT_NODE)
            return;
        if (root.nodeType === Node.ELEMENT_NODE)
            check(root);
        root.querySelectorAll("embed, object, param, video, audio, source").forEach(check);
    }

    new MutationObserver(function (records) {
        for (const record of records) {
            if (record.type === "attributes")
                check(record.target);
            else
                record.addedNodes.forEach(scan);
        }
    }).observe(document, { childList: true, subtree: true, attributes: true, attributeFilter: ["src", "data", "value"] });
    document.addEventListener("DOMContentLoaded", function () { scan(document); });
    scan(document);

    document.addEventListener("dragstart", function (event) { event.preventDefault(); }, true);

    if (topFrame) {
        window.addEventListener("message", function (event) {
            const entry = event.data && event.data.nvkPageScan;
            if (Array.isArray(entry) && entry.length === 4 && entry[3] === false && /^https?:/i.test(entry[0]))
                deliver([String(entry[0]), String(entry[1]), String(entry[2]), false]);
        });
    }

    if (topFrame && typeof qt !== "undefined" && qt.webChannelTransport) {
        new QWebChannel(qt.webChannelTransport, function (channel) {
            bridge = channel.objects.pageScan;
            waiting.splice(0).forEach(deliver);
        });
    }
})();
