// The one QApplication of the front end's tests, on the offscreen platform
// unless the caller chose another.
#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace {

int g_argc = 1;
char g_name[] = "test_app";
char* g_argv[] = {g_name, nullptr};

struct QtEnvironment : ::testing::Environment {
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QApplication>(g_argc, g_argv);
    }
    void TearDown() override { app.reset(); }
    std::unique_ptr<QApplication> app;
};

[[maybe_unused]] ::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
