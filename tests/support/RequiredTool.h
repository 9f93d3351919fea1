#pragma once
// Programs that some tests need beside ours (socat, dbus-daemon). On a developer's machine without one
// those tests are skipped; where TOLVANE_REQUIRE_TOOLS is set (scripts/test.sh sets it, having
// installed them, and so does CI through it) a missing one fails the test, so that nothing passes by
// not running.

#include <QStandardPaths>
#include <QString>

#include <gtest/gtest.h>

namespace tv::test {

inline bool toolsRequired() {
    const QByteArray v = qgetenv("TOLVANE_REQUIRE_TOOLS");
    return !v.isEmpty() && v != "0";
}

inline bool toolInstalled(const char* name) {
    return !QStandardPaths::findExecutable(QString::fromLatin1(name)).isEmpty();
}

}  // namespace tv::test

// In a test or a fixture's SetUp (or a void helper it calls): skips, or fails when tools are required.
#define TV_REQUIRE_TOOL(name)                                                         \
    do {                                                                              \
        if (!::tv::test::toolInstalled(name)) {                                       \
            if (::tv::test::toolsRequired()) FAIL() << (name) << " is not installed"; \
            GTEST_SKIP() << (name) << " is not installed";                            \
        }                                                                             \
    } while (0)
