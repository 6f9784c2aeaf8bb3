#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTest>

namespace nvktest
{
// Never the desktop's own bus: what a test registers would show up in the
// user's panel or answer the user's programs. The first call runs the test
// executable again inside a session bus of its own (dbus-run-session) that
// ends with it, and does not return; inside it, or when that cannot be done,
// it returns why the tests must be skipped (empty inside the private bus).
QString runOnPrivateSessionBus(int argc, char *argv[]);
} // namespace nvktest

// The main() of a test whose every case needs the private bus; without one
// the whole run is skipped.

#define NVK_PRIVATE_BUS_TEST_MAIN(TestObject)                                                                          \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        const QString noBus = nvktest::runOnPrivateSessionBus(argc, argv);                                             \
        QCoreApplication app(argc, argv);                                                                              \
        if (!noBus.isEmpty())                                                                                          \
        {                                                                                                              \
            qInfo("SKIP: %s", qPrintable(noBus));                                                                      \
            return 0;                                                                                                  \
        }                                                                                                              \
        TestObject test;                                                                                               \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
