// One QApplication for the whole test program, made before the first test and gone after
// the last (the tests run offscreen: CTest sets QT_QPA_PLATFORM).
#include <gtest/gtest.h>

#include <QApplication>

namespace {

int argc = 1;
char programName[] = "desktop_tests";
char* argv[] = {programName, nullptr};

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override { application_ = new QApplication(argc, argv); }
    void TearDown() override {
        delete application_;
        application_ = nullptr;
    }

private:
    QApplication* application_ = nullptr;
};

[[maybe_unused]] ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
