import flash.display.StageAlign;
import flash.display.StageScaleMode;
import flash.events.AsyncErrorEvent;
import flash.events.Event;
import flash.events.IOErrorEvent;
import flash.events.NetStatusEvent;
import flash.external.ExternalInterface;
import flash.media.SoundTransform;
import flash.media.Video;
import flash.net.NetConnection;
import flash.net.NetStream;

/**
	Plays one FLV file for the engine, which treats it as a time-based video.

	flashvars: nvkPrefix (prepended to every name we register or call),
	nvkContent (URL of the FLV), nvkBackground ("#RRGGBB" behind the
	picture, black by default), nvkRepeat ("1" to loop at the end),
	nvkTimeout (seconds a stream may stay unanswered before it is reported
	missing, 30 by default, 0 for never).
**/
class FlvPlayer {
	static var prefix = "";
	static var url = "";
	static var repeat = false;
	static var background = 0x000000;

	static var video:Video;
	static var stream:NetStream;

	static var duration = 0.0;
	static var metaWidth = 0;
	static var metaHeight = 0;
	// The picture size the current layout was made for.
	static var fittedWidth = -1;
	static var fittedHeight = -1;

	// The file is opened by the first "play" rather than at startup, so
	// the clock starts when the engine says so.
	static var started = false;
	static var ended = false;
	static var restartPending = false;
	// A seek asked for before any of the file has arrived; -1 when none.
	static var pendingSeek = -1.0;
	static var startedAt = 0;
	static var reportedFailure = false;

	// How long a stream may stay without an answer before it counts as
	// missing; 0 waits forever. The page may hand the whole file over only
	// once it has read all of it, so this has to allow for a large file on
	// a slow disk.
	static var noAnswerTimeoutMs = 30000;

	static function main() {
		var root = flash.Lib.current;
		var params = root.loaderInfo.parameters;
		prefix = params.nvkPrefix != null ? params.nvkPrefix : "";
		url = params.nvkContent != null ? params.nvkContent : "";
		repeat = params.nvkRepeat == "1";
		background = parseColour(params.nvkBackground, 0x000000);
		if (params.nvkTimeout != null) {
			var seconds = Std.parseFloat(params.nvkTimeout);
			if (seconds >= 0)
				noAnswerTimeoutMs = Math.round(seconds * 1000);
		}

		var stage = root.stage;
		stage.scaleMode = StageScaleMode.NO_SCALE;
		stage.align = StageAlign.TOP_LEFT;

		video = new Video();
		video.smoothing = true;
		root.addChild(video);

		var connection = new NetConnection();
		connection.connect(null);
		stream = new NetStream(connection);
		// Every data message in the file is delivered to a client method of
		// the same name; a missing one raises an async error, so answer the
		// usual ones even though only the metadata matters here.
		stream.client = {
			onMetaData: onMetaData,
			onCuePoint: ignore,
			onXMPData: ignore,
			onTextData: ignore,
			onImageData: ignore,
			onPlayStatus: ignore
		};
		stream.addEventListener(NetStatusEvent.NET_STATUS, onNetStatus);
		stream.addEventListener(AsyncErrorEvent.ASYNC_ERROR, function(_) {});
		stream.addEventListener(IOErrorEvent.IO_ERROR, function(e:IOErrorEvent) fail(e.text));
		video.attachNetStream(stream);

		stage.addEventListener(Event.RESIZE, function(_) layout());
		root.addEventListener(Event.ENTER_FRAME, onEnterFrame);
		layout();

		if (!ExternalInterface.available)
			return;
		ExternalInterface.addCallback(prefix + "play", play);
		ExternalInterface.addCallback(prefix + "pause", pause);
		ExternalInterface.addCallback(prefix + "currentTime", currentTime);
		ExternalInterface.addCallback(prefix + "totalTime", totalTime);
		ExternalInterface.addCallback(prefix + "seek", seek);
		ExternalInterface.addCallback(prefix + "setVolume", setVolume);
		ExternalInterface.addCallback(prefix + "videoWidth", videoWidth);
		ExternalInterface.addCallback(prefix + "videoHeight", videoHeight);
		ExternalInterface.call(prefix + "ready", 0);
	}

	static function parseColour(text:String, fallback:Int):Int {
		if (text == null)
			return fallback;
		if (text.charAt(0) == "#")
			text = text.substr(1);
		if (text.length != 6)
			return fallback;
		var value = Std.parseInt("0x" + text);
		return value != null ? value : fallback;
	}

	static function ignore(_:Dynamic) {}

	static function onMetaData(info:Dynamic) {
		if (info == null)
			return;
		var d:Float = info.duration;
		// Seeking back to the start replays the metadata tag; tell the
		// engine only about a length it has not heard yet.
		if (d > 0 && d != duration) {
			duration = d;
			flash.Lib.fscommand("setTotalTime", Std.string(d));
		}
		var w:Float = info.width;
		var h:Float = info.height;
		if (w > 0 && h > 0) {
			metaWidth = Math.round(w);
			metaHeight = Math.round(h);
			layout();
		}
	}

	static function onNetStatus(e:NetStatusEvent) {
		var code:String = e.info != null ? e.info.code : null;
		switch (code) {
			case "NetStream.Play.Stop":
				if (repeat) {
					// Not here: the player may still pause the stream after
					// this event is delivered, undoing a restart made now.
					restartPending = true;
				} else if (!ended) {
					ended = true;
					flash.Lib.fscommand("completePlay", "");
				}
			case "NetStream.Play.StreamNotFound", "NetStream.Play.Failed", "NetStream.Play.FileStructureInvalid",
				"NetStream.Play.NoSupportedTrackFound":
				fail(code);
			default:
		}
	}

	static function onEnterFrame(_:Event) {
		if (restartPending) {
			restartPending = false;
			stream.seek(0);
			stream.resume();
		}
		if (started && pendingSeek >= 0 && stream.bytesLoaded > 0) {
			stream.seek(pendingSeek);
			pendingSeek = -1;
		}
		// A missing file does not always produce a status event, and without
		// one the engine would wait for a movie that never plays. The total
		// is known as soon as the file answers, however slowly it then loads.
		if (started && !reportedFailure && noAnswerTimeoutMs > 0 && stream.bytesTotal == 0
			&& flash.Lib.getTimer() - startedAt > noAnswerTimeoutMs)
			fail("NetStream.Play.StreamNotFound");
		// Files without size metadata only reveal it with the first picture.
		if (videoWidth() != fittedWidth || videoHeight() != fittedHeight)
			layout();
	}

	// Fits the picture into the stage keeping its shape, centred, over the
	// background colour.
	static function layout() {
		var root = flash.Lib.current;
		var sw:Float = root.stage.stageWidth;
		var sh:Float = root.stage.stageHeight;

		var g = root.graphics;
		g.clear();
		g.beginFill(background);
		g.drawRect(0, 0, sw, sh);
		g.endFill();

		fittedWidth = videoWidth();
		fittedHeight = videoHeight();
		var vw:Float = fittedWidth > 0 ? fittedWidth : sw;
		var vh:Float = fittedHeight > 0 ? fittedHeight : sh;
		var scale = Math.min(sw / vw, sh / vh);
		if (!(scale > 0))
			scale = 1;
		video.width = vw * scale;
		video.height = vh * scale;
		video.x = (sw - video.width) / 2;
		video.y = (sh - video.height) / 2;
	}

	static function play() {
		if (!started) {
			started = true;
			startedAt = flash.Lib.getTimer();
			stream.play(url);
			return;
		}
		restartPending = false;
		if (ended) {
			ended = false;
			stream.seek(0);
		}
		stream.resume();
	}

	static function pause() {
		restartPending = false;
		if (started)
			stream.pause();
	}

	static function currentTime():Float {
		if (pendingSeek >= 0)
			return pendingSeek;
		var t = stream.time;
		// The clock can run a little past the last tag at the end.
		return duration > 0 && t > duration ? duration : t;
	}

	static function totalTime():Float {
		return duration;
	}

	static function seek(t:Float) {
		if (!(t >= 0))
			t = 0;
		ended = false;
		restartPending = false;
		// A seek into a stream with no data yet has nothing to land on and
		// is dropped, so hold it until the first bytes are in.
		if (!started || stream.bytesLoaded == 0) {
			pendingSeek = t;
			return;
		}
		stream.seek(t);
	}

	static function setVolume(v:Float) {
		if (!(v >= 0))
			v = 0;
		if (v > 1)
			v = 1;
		stream.soundTransform = new SoundTransform(v);
	}

	static function videoWidth():Int {
		return metaWidth > 0 ? metaWidth : video.videoWidth;
	}

	static function videoHeight():Int {
		return metaHeight > 0 ? metaHeight : video.videoHeight;
	}

	static function fail(message:String) {
		if (reportedFailure)
			return;
		reportedFailure = true;
		if (ExternalInterface.available)
			ExternalInterface.call(prefix + "failed", message != null ? message : "");
	}
}
