/// Empty tests, run by GoogleTest.

#include "benchmarks/trivialgoogletests.h"

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    Benchmarks::RegisterGoogleTests();
    return RUN_ALL_TESTS();
}
