// The unit tests' main: every test starts from a clean settings key, and every
// message box is recorded and answered instead of shown.
#include <gtest/gtest.h>

#include "test_support.h"

namespace {

class CleanRegistry : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { ResetTestState(); }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    InstallTestSeams();
    testing::UnitTest::GetInstance()->listeners().Append(new CleanRegistry);
    return RUN_ALL_TESTS();
}
