// The one QApplication of the front end's tests, on the offscreen platform
// unless the caller chose another.
#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        app_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { app_.reset(); }

private:
    int argc_ = 1;
    char name_[9] = "test_app";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
};

[[maybe_unused]] ::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
