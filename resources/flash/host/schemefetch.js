// The program serves the engine, its pages and the movies from its own URL
// scheme, which Chromium's fetch() refuses in this Qt version. The engine
// loads its WebAssembly and every movie through fetch(), so answer our scheme
// with XMLHttpRequest, which does accept it. Loaded before the engine.
"use strict";

(function () {
    const schemeProtocol = location.protocol;

    const nativeFetch = window.fetch.bind(window);
    window.fetch = function (input, init) {
        const href = typeof input === "string" ? input : input instanceof URL ? input.href : input.url;
        let url;
        try {
            url = new URL(href, document.baseURI);
        } catch (e) {
            return nativeFetch(input, init);
        }
        if (url.protocol !== schemeProtocol)
            return nativeFetch(input, init);
        return new Promise(function (resolve, reject) {
            const xhr = new XMLHttpRequest();
            xhr.open((init && init.method) || "GET", url.href);
            xhr.responseType = "arraybuffer";
            xhr.onload = function () {
                // Our handler answers with a status of 0 or 200; a Response
                // refuses 0.
                const status = xhr.status >= 200 && xhr.status <= 599 ? xhr.status : 200;
                const type = xhr.getResponseHeader("Content-Type") || "application/octet-stream";
                resolve(new Response(xhr.response, { status: status, headers: { "Content-Type": type } }));
            };
            xhr.onerror = function () {
                reject(new TypeError("Cannot load " + url.href));
            };
            xhr.send();
        });
    };
})();
