// The one QApplication of the front end's tests, on the offscreen platform
// unless the caller chose another, made before any test runs.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
