#include "support/privatesessionbus.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <vector>

#include <QFile>
#include <QStandardPaths>

namespace nvktest
{
QString runOnPrivateSessionBus(int argc, char *argv[])
{
    constexpr char PrivateBusVariable[] = "NVK_TEST_PRIVATE_SESSION_BUS";
    const QString runner = QStandardPaths::findExecutable(QStringLiteral("dbus-run-session"));
    if (runner.isEmpty())
        return QStringLiteral("dbus-run-session (package dbus) is not installed: no private session bus");
    if (qEnvironmentVariableIsSet(PrivateBusVariable))
        return QString();
    qputenv(PrivateBusVariable, "1");
    // Resolved here: inside dbus-run-session the link names that program.
    char self[4096] = {};
    if (::readlink("/proc/self/exe", self, sizeof self - 1) < 0)
        std::strncpy(self, argv[0], sizeof self - 1);
    std::vector<char *> arguments{const_cast<char *>("dbus-run-session"), const_cast<char *>("--"), self};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    arguments.push_back(nullptr);
    ::execv(QFile::encodeName(runner).constData(), arguments.data());
    return QStringLiteral("cannot start dbus-run-session: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
}
} // namespace nvktest
