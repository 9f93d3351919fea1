// Test programs run with a Qt application object (offscreen), so that Qt's loop, files and locale work.
#include <gtest/gtest.h>

#include "platform/SimEventLoop.h"

#include <QApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? QByteArray("offscreen")
                                                                    : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    // A runaway of the simulated loop fails the test that caused it, loudly.
    tv::SimEventLoop::setLimitHandler([](const QString& why) { ADD_FAILURE() << why.toStdString(); });
    return RUN_ALL_TESTS();
}
