// main() of the test programs without a QApplication.

#include "OXWTestEnvironment.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (!oxwtest::enterPrivateEnvironment()) {
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
