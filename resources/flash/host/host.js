// The page that holds the Flash engine. One page lives for the whole session
// (compiling the engine takes a second; a second movie in a warm page starts
// in a fraction of that), and the program drives it through window.nvk and
// hears back through the "bridge" object of a QWebChannel.
//
// Everything the page reports is pushed, never asked for: the program's
// playback tick reads its own copy and never waits on the page.
"use strict";

(function () {
    window.RufflePlayer = window.RufflePlayer || {};
    window.RufflePlayer.config = {
        publicPath: new URL("ruffle/", location.href).href,
        polyfills: false,
        autoplay: "on",
        unmuteOverlay: "hidden",
        splashScreen: false,
        contextMenu: "off",
        menu: false,
        allowScriptAccess: true,
        openUrlMode: "deny",
        warnOnUnsupportedContent: false,
        showSwfDownload: false,
        letterbox: "on",
        backgroundExecutionMode: "mainThread",
        logLevel: "error",
    };

    let bridge = null;
    let pending = [];
    let player = null;
    let movie = null;
    let generation = 0;
    let loadTimer = 0;
    const view = { zoom: 100, fit: true, panX: 0, panY: 0, drag: false };

    function send(name) {
        const args = Array.prototype.slice.call(arguments, 1);
        if (bridge)
            bridge[name].apply(bridge, args);
        else
            pending.push([name, args]);
    }

    function stageElement() {
        return document.getElementById("stage");
    }

    function afterFrames(count, callback) {
        if (count <= 0)
            callback();
        else
            requestAnimationFrame(function () {
                afterFrames(count - 1, callback);
            });
    }

    function layout() {
        if (!player)
            return;
        const stage = stageElement();
        const W = Math.max(1, stage.clientWidth);
        const H = Math.max(1, stage.clientHeight);
        const nw = movie && movie.width > 0 ? movie.width : W;
        const nh = movie && movie.height > 0 ? movie.height : H;
        if (view.fit)
            view.zoom = Math.max(1, Math.min(W / nw, H / nh) * 100);
        const w = (nw * view.zoom) / 100;
        const h = (nh * view.zoom) / 100;
        // A movie larger than the view can be dragged, but never so far that
        // the view shows past its edge.
        const maxX = Math.max(0, (w - W) / 2);
        const maxY = Math.max(0, (h - H) / 2);
        view.panX = Math.min(maxX, Math.max(-maxX, view.panX));
        view.panY = Math.min(maxY, Math.max(-maxY, view.panY));
        player.style.width = w + "px";
        player.style.height = h + "px";
        player.style.left = (W - w) / 2 + view.panX + "px";
        player.style.top = (H - h) / 2 + view.panY + "px";
        send("zoomChanged", view.zoom);
    }

    // The engine covers a paused movie with a big play button; our own
    // buttons play and pause, and a paused movie must show its frame as it is
    // (screenshots, frame-by-frame stepping).
    function hideEngineOverlays(element) {
        if (!element.shadowRoot)
            return;
        const style = document.createElement("style");
        style.textContent = "#play-button, #unmute-overlay { display: none !important; }";
        element.shadowRoot.appendChild(style);
    }

    function clearMovie() {
        clearTimeout(loadTimer);
        if (movie && movie.prefix) {
            delete window[movie.prefix + "ready"];
            delete window[movie.prefix + "failed"];
        }
        if (player && player.parentNode)
            player.parentNode.removeChild(player);
        player = null;
        movie = null;
    }

    function fail(gen, message) {
        if (gen !== generation || !movie || movie.failed)
            return;
        movie.failed = true;
        clearMovie();
        send("loadFailed", gen, String(message));
    }

    // Loaded once the engine knows the movie (its metadata) and our code in
    // it has answered.
    function maybeLoaded(gen) {
        if (gen !== generation || !movie || movie.loaded || !movie.metadata)
            return;
        if (!movie.ready)
            return;
        movie.loaded = true;
        clearTimeout(loadTimer);
        layout();
        const m = player.metadata || {};
        send("loaded", gen, movie.width, movie.height, Number(m.frameRate) || 0, movie.total,
             !!m.isActionScript3);
        // Two animation frames: the one the engine draws the movie's first
        // frame in, and the one that puts it on screen.
        afterFrames(2, function () {
            if (gen === generation)
                send("firstFrameShown", gen);
        });
    }

    // A goto lands at once, but the engine draws only when a frame tick runs,
    // and a paused engine runs none: it would go on showing the old picture.
    // So the engine runs (the timeline stays where the goto put it) until one
    // tick has passed since the goto, two animation frames more put that
    // picture on screen, and only then is the goto reported as shown.
    function awaitGotoShown(sequence) {
        const rate = Number((player.metadata || {}).frameRate) || 12;
        movie.goto = {
            sequence: sequence,
            ticks: Number(call("ticks")),
            drawn: false,
            deadline: performance.now() + 3000 / Math.max(rate, 0.25) + 1000,
        };
        player.play();
    }

    function checkGoto() {
        const pending = movie.goto;
        if (pending.drawn)
            return;
        const ticked = Number(call("ticks")) > pending.ticks;
        if (!ticked && performance.now() < pending.deadline)
            return;
        pending.drawn = true;
        const gen = movie.gen;
        afterFrames(ticked ? 2 : 0, function () {
            if (!movie || movie.gen !== gen || movie.goto !== pending)
                return;
            movie.goto = null;
            if (movie.paused)
                player.pause();
            const shown = Number(call("currentFrame"));
            send("frameShown", gen, pending.sequence, shown, ticked);
        });
    }

    function poll() {
        requestAnimationFrame(poll);
        if (!movie || !movie.loaded || !player)
            return;
        const p = movie.prefix;
        try {
            if (movie.goto)
                checkGoto();
            if (movie.mode === "frames") {
                const frame = Number(player[p + "currentFrame"]());
                const total = Number(player[p + "totalFrames"]());
                const playing = !movie.paused;
                if (frame !== movie.frame || total !== movie.total || playing !== movie.playing) {
                    movie.frame = frame;
                    movie.total = total;
                    movie.playing = playing;
                    send("frameState", movie.gen, frame, total, playing);
                }
            } else if (movie.mode === "video") {
                const time = Number(player[p + "currentTime"]()) || 0;
                const duration = Number(player[p + "totalTime"]()) || 0;
                const w = Number(player[p + "videoWidth"]()) || 0;
                const h = Number(player[p + "videoHeight"]()) || 0;
                const playing = !movie.paused;
                if (w > 0 && h > 0 && (w !== movie.width || h !== movie.height)) {
                    movie.width = w;
                    movie.height = h;
                    layout();
                }
                if (Math.abs(time - movie.time) >= 0.04 || duration !== movie.duration || playing !== movie.playing) {
                    movie.time = time;
                    movie.duration = duration;
                    movie.playing = playing;
                    send("timeState", movie.gen, time, duration, w, h, playing);
                }
            }
        } catch (e) {
            // The movie's callbacks can vanish while it unloads; the next
            // load starts a fresh state anyway.
        }
    }

    function call(name) {
        if (!movie || !movie.loaded || !player)
            return undefined;
        const fn = player[movie.prefix + name];
        if (typeof fn !== "function")
            return undefined;
        return fn.apply(player, Array.prototype.slice.call(arguments, 1));
    }

    const nvk = {
        // o: { generation, url, base, mode: "frames" | "video",
        //      prefix, flashvars, width, height, quality, background,
        //      security, volume, timeoutMs }
        load: function (o) {
            clearMovie();
            generation = o.generation;
            const gen = generation;
            movie = {
                gen: gen,
                mode: o.mode,
                prefix: o.prefix || "",
                width: o.width || 0,
                height: o.height || 0,
                frame: -1,
                total: 0,
                time: -1,
                duration: 0,
                playing: false,
                paused: false,
                heldByGoto: false,
                goto: null,
                ready: false,
                metadata: false,
                loaded: false,
                failed: false,
            };
            view.panX = 0;
            view.panY = 0;
            document.body.style.background = o.background;

            player = window.RufflePlayer.newest().createPlayer();
            hideEngineOverlays(player);
            if (movie.prefix) {
                window[movie.prefix + "ready"] = function (total) {
                    if (gen !== generation || !movie)
                        return;
                    movie.ready = true;
                    movie.total = Number(total) || 0;
                    maybeLoaded(gen);
                };
                window[movie.prefix + "failed"] = function (message) {
                    fail(gen, message);
                };
            }
            player.onFSCommand = function (command, args) {
                if (gen === generation)
                    send("fsCommand", gen, String(command), args === undefined || args === null ? "" : String(args));
                return true;
            };
            player.addEventListener("loadedmetadata", function () {
                if (gen !== generation || !movie)
                    return;
                const m = player.metadata || {};
                movie.metadata = true;
                if (movie.mode !== "video") {
                    movie.width = Number(m.width) || movie.width;
                    movie.height = Number(m.height) || movie.height;
                }
                maybeLoaded(gen);
            });
            stageElement().appendChild(player);
            layout();
            player.volume = o.volume;
            const options = {
                url: o.url,
                base: o.base,
                parameters: o.flashvars || {},
                allowNetworking: o.security ? "internal" : "all",
            };
            if (o.quality)
                options.quality = o.quality;
            player.ruffle().load(options).catch(function (e) {
                fail(gen, e && e.message ? e.message : e);
            });
            loadTimer = setTimeout(function () {
                fail(gen, "the Flash engine did not start the movie in time");
            }, o.timeoutMs || 15000);
        },
        unload: function () {
            generation++;
            clearMovie();
        },
        play: function () {
            if (!player || !movie)
                return;
            movie.paused = false;
            if (movie.mode === "video") {
                // The FLV player opens its stream on the first play.
                call("play");
                player.play();
                return;
            }
            // A goto made while paused stopped the timeline; playing on means
            // the timeline too.
            if (movie.heldByGoto) {
                movie.heldByGoto = false;
                call("play");
            }
            player.play();
        },
        pause: function () {
            if (!player || !movie)
                return;
            movie.paused = true;
            if (movie.mode === "video") {
                // The stream pauses; the engine keeps drawing its frame.
                call("pause");
                return;
            }
            // A goto being drawn pauses the engine itself once it is shown.
            if (!movie.goto)
                player.pause();
        },
        // `sequence` comes back with frameShown, so the program can tell the
        // answer to its latest goto from one it has since replaced.
        gotoFrame: function (frame, play, sequence) {
            if (!player || !movie || !movie.loaded)
                return;
            call("gotoFrame", frame, !!play);
            if (play) {
                movie.heldByGoto = false;
                movie.paused = false;
            } else {
                movie.heldByGoto = true;
            }
            awaitGotoShown(sequence);
        },
        seek: function (time) {
            call("seek", time);
        },
        setVolume: function (volume) {
            if (player)
                player.volume = volume;
            call("setVolume", volume);
        },
        setBackground: function (colour) {
            document.body.style.background = colour;
        },
        setZoom: function (percent) {
            view.fit = false;
            view.zoom = Math.max(1, percent);
            layout();
        },
        fit: function () {
            view.fit = true;
            view.panX = 0;
            view.panY = 0;
            layout();
        },
        setDragEnabled: function (on) {
            view.drag = !!on;
            document.getElementById("drag").classList.toggle("on", view.drag);
        },
        // Compiles the engine ahead of the first movie: loading a blank movie
        // makes it fetch and instantiate its WebAssembly.
        warm: function () {
            const blank = new Uint8Array([0x46, 0x57, 0x53, 0x08, 17, 0, 0, 0, 0x00, 0x00, 0x18, 0x01, 0x00,
                                          0x40, 0x00, 0x00, 0x00]);
            const warmer = window.RufflePlayer.newest().createPlayer();
            warmer.style.cssText = "position:absolute;width:1px;height:1px;left:-10px;top:-10px";
            let done = false;
            function finish(ok) {
                if (done)
                    return;
                done = true;
                if (warmer.parentNode)
                    warmer.parentNode.removeChild(warmer);
                send("warmed", ok);
            }
            warmer.addEventListener("loadedmetadata", function () {
                finish(true);
            });
            document.body.appendChild(warmer);
            warmer.ruffle().load({ data: blank, swfFileName: "blank.swf" }).catch(function () {
                finish(false);
            });
        },
    };
    window.nvk = nvk;

    window.addEventListener("resize", layout);

    window.addEventListener("DOMContentLoaded", function () {
        const drag = document.getElementById("drag");
        let held = false;
        drag.addEventListener("pointerdown", function (e) {
            held = true;
            drag.classList.add("held");
            drag.setPointerCapture(e.pointerId);
        });
        drag.addEventListener("pointermove", function (e) {
            if (!held)
                return;
            view.panX += e.movementX;
            view.panY += e.movementY;
            layout();
        });
        const release = function () {
            held = false;
            drag.classList.remove("held");
        };
        drag.addEventListener("pointerup", release);
        drag.addEventListener("pointercancel", release);

        new QWebChannel(qt.webChannelTransport, function (channel) {
            bridge = channel.objects.bridge;
            const queued = pending;
            pending = [];
            for (const [name, args] of queued)
                bridge[name].apply(bridge, args);
            bridge.hostReady(typeof window.RufflePlayer.newest === "function");
        });
        requestAnimationFrame(poll);
    });
})();
