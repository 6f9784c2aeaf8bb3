#pragma once

#include <QString>

namespace nvktest
{
// Never the desktop's own bus: what a test registers would show up in the
// user's panel or answer the user's programs. The first call runs the test
// executable again inside a session bus of its own (dbus-run-session) that
// ends with it, and does not return; inside it, or when that cannot be done,
// it returns the reason the bus tests must be skipped (empty inside the
// private bus). Call it first thing in main().
QString runOnPrivateSessionBus(int argc, char *argv[]);
} // namespace nvktest
