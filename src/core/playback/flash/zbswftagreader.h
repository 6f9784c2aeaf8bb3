#pragma once

#include <optional>

#include <QByteArrayView>
#include <QList>
#include <QString>

// Walks the top-level tags of an uncompressed Flash movie ("FWS" header
// included), as ZBSwfHeader::uncompressedMovie() gives it. A DefineSprite
// carries a timeline of its own, ShowFrame tags included; it is one tag here,
// its contents never walked, so only the main timeline's frames are seen.
//
// The walk ends at the End tag. A tag that runs past the bytes, or bytes that
// run out before End, make the whole movie unreadable: the frame control
// rewrites movies, and half a movie would be worse than none.
class ZBSwfTagReader
{
public:
    static constexpr int EndTag = 0;
    static constexpr int ShowFrameTag = 1;
    static constexpr int SetBackgroundColorTag = 9;
    static constexpr int DoActionTag = 12;
    static constexpr int DefineSpriteTag = 39;
    static constexpr int FileAttributesTag = 69;

    struct Tag
    {
        int code = 0;
        // Where the record header starts, and the whole record's size.
        qsizetype offset = 0;
        qsizetype size = 0;
        // Where the body starts, and its length.
        qsizetype bodyOffset = 0;
        qsizetype bodyLength = 0;
    };

    struct Movie
    {
        // Where the first tag starts: after the header, stage RECT, rate and
        // frame count.
        qsizetype tagsOffset = 0;
        // In order, the End tag last.
        QList<Tag> tags;
        // Just past the End tag; anything after it is not part of the movie.
        qsizetype end = 0;
    };

    // Nothing, and the reason in `error`, when the tags cannot be walked.
    static std::optional<Movie> read(QByteArrayView uncompressed, QString *error = nullptr);
};
