#include <gmock/gmock.h>

#include <QApplication>

#include "Support/TemporaryFolder.hpp"

/// Widgets need an application, and no display.
int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const tarnly::test::TemporaryFolder runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().c_str());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("DISPLAY");
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
