#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// ActionScript 1/2 movies before version 8 have no ExternalInterface, and
// raising their version would change how they run (case sensitivity, among
// others). Instead the host plays a one-frame version 8 movie of the same
// stage size, frame rate and background colour that loads the original,
// served by the host at `contentUrl`, into a child clip with _lockroot set,
// and carries the callbacks of ZBFrameControlScript aimed at that clip.
//
// Refused, with the reason in `error`: anything that is not a readable
// ActionScript 1/2 movie before version 8 (ZBFrameControlInjector serves
// version 8 and later), a URL with a zero byte, an invalid prefix.
class ZBFrameControlWrapper
{
public:
    static constexpr int MinimumVersion = 1;
    static constexpr int MaximumVersion = 7;
    static constexpr int WrapperVersion = 8;

    static std::optional<QByteArray> wrap(QByteArrayView movie, QByteArrayView contentUrl, QByteArrayView prefix,
                                          QString *error = nullptr);
};
