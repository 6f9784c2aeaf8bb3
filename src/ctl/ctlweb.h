#pragma once

#include <QStringList>
#include <QTextStream>

// The web commands of norvikctl: "download URL [--to DIR] [--title T]". They
// open the library only when main() was given --data-dir, and then add what
// they fetch the way the player does.
class ZBCtlWeb
{
public:
    static bool handles(const QString &command);
    static int run(const QString &command, const QStringList &arguments, const QString &dataDir, QTextStream &out,
                   QTextStream &err);

private:
    static int download(const QStringList &arguments, const QString &dataDir, QTextStream &out, QTextStream &err);
};
