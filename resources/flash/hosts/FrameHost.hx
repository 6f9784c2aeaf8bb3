import flash.display.DisplayObject;
import flash.display.Loader;
import flash.display.MovieClip;
import flash.events.Event;
import flash.events.IOErrorEvent;
import flash.events.SecurityErrorEvent;
import flash.external.ExternalInterface;
import flash.net.URLRequest;
import flash.system.ApplicationDomain;
import flash.system.LoaderContext;

/**
	Loads one ActionScript 3 movie and lets the page drive its main timeline.

	An AS3 movie's timeline cannot be reached from outside the player the way
	an AVM1 one can, so the engine runs this small movie instead and it does
	the frame control from the inside.

	flashvars: nvkPrefix (prepended to every name we register or call),
	nvkContent (URL of the movie to load).
**/
class FrameHost {
	static var prefix = "";
	static var loader:Loader;
	// Null while nothing is loaded, and for content that has no timeline.
	static var clip:MovieClip;
	static var lastFrame = 0;
	static var playing = false;
	// Frame ticks run so far: the engine draws only on a tick, so the page
	// knows a goto made while paused is on screen once this has moved on.
	static var tickCount = 0;

	static function main() {
		var root = flash.Lib.current;
		var params = root.loaderInfo.parameters;
		prefix = params.nvkPrefix != null ? params.nvkPrefix : "";

		// The haxe runtime pins the stage to the top left before main runs;
		// put back the centred default so letterboxed content sits in the
		// middle like it would as the main movie.
		try {
			root.stage.align = cast "";
		} catch (e:Dynamic) {}

		if (ExternalInterface.available) {
			// Registered before the content exists so an early question gets
			// an answer ("frame 0 of 1") instead of a missing function.
			ExternalInterface.addCallback(prefix + "currentFrame", currentFrame);
			ExternalInterface.addCallback(prefix + "totalFrames", totalFrames);
			ExternalInterface.addCallback(prefix + "gotoFrame", gotoFrame);
			ExternalInterface.addCallback(prefix + "play", play);
			ExternalInterface.addCallback(prefix + "stop", stop);
			ExternalInterface.addCallback(prefix + "isPlaying", isPlaying);
			ExternalInterface.addCallback(prefix + "ticks", ticks);
		}

		root.addEventListener(Event.ENTER_FRAME, onEnterFrame);

		var url:String = params.nvkContent;
		if (url == null || url == "") {
			fail("no content URL");
			return;
		}

		loader = new Loader();
		var info = loader.contentLoaderInfo;
		info.addEventListener(Event.INIT, onInit);
		info.addEventListener(IOErrorEvent.IO_ERROR, function(e:IOErrorEvent) fail(e.text));
		info.addEventListener(SecurityErrorEvent.SECURITY_ERROR, function(e:SecurityErrorEvent) fail(e.text));
		root.addChild(loader);

		// A domain of its own, not a child of ours: the content may define
		// classes with the same names as this host's (haxe's runtime classes
		// included), and in a shared domain the first definition wins.
		var context = new LoaderContext(false, new ApplicationDomain(null));
		try {
			loader.load(new URLRequest(url), context);
		} catch (e:Dynamic) {
			fail(Std.string(e));
		}
	}

	static function onInit(_:Event) {
		var content:DisplayObject;
		try {
			content = loader.content;
			flash.Lib.current.stage.frameRate = loader.contentLoaderInfo.frameRate;
		} catch (e:Dynamic) {
			fail(Std.string(e));
			return;
		}
		// A document class that is a plain Sprite (or anything else without
		// a timeline) is shown as it is and reported as a one-frame movie.
		clip = Std.isOfType(content, MovieClip) ? cast content : null;
		lastFrame = clip != null ? clip.currentFrame : 1;
		playing = false;
		if (ExternalInterface.available)
			ExternalInterface.call(prefix + "ready", totalFrames());
	}

	// The timeline has no "is playing" property, so watch whether the
	// playhead moved since the previous frame.
	static function onEnterFrame(_:Event) {
		tickCount++;
		if (clip == null)
			return;
		var frame = clip.currentFrame;
		playing = frame != lastFrame;
		lastFrame = frame;
	}

	static function currentFrame():Int {
		return clip != null ? clip.currentFrame - 1 : 0;
	}

	static function totalFrames():Int {
		return clip != null ? clip.totalFrames : 1;
	}

	static function gotoFrame(n:Int, ?andPlay:Bool) {
		if (clip == null)
			return;
		var frame = n + 1;
		if (frame < 1)
			frame = 1;
		if (frame > clip.totalFrames)
			frame = clip.totalFrames;
		if (andPlay == true)
			clip.gotoAndPlay(frame);
		else
			clip.gotoAndStop(frame);
		// The jump itself is not playback; without resetting here the next
		// tick would see the playhead move and report a stopped movie as
		// playing for a frame.
		lastFrame = clip.currentFrame;
		playing = andPlay == true && clip.totalFrames > 1;
	}

	static function play() {
		if (clip == null)
			return;
		clip.play();
		// Answer at once rather than a frame late; the next tick corrects it
		// if a frame script stops the movie straight away.
		lastFrame = clip.currentFrame;
		playing = clip.totalFrames > 1;
	}

	static function stop() {
		if (clip == null)
			return;
		clip.stop();
		lastFrame = clip.currentFrame;
		playing = false;
	}

	static function isPlaying():Bool {
		return playing;
	}

	static function ticks():Int {
		return tickCount;
	}

	static function fail(message:String) {
		if (ExternalInterface.available)
			ExternalInterface.call(prefix + "failed", message != null ? message : "");
	}
}
