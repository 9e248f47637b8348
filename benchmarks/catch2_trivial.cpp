/// Empty tests, run by Catch2.

#include <catch2/catch_session.hpp>

#include "benchmarks/trivialcatch2tests.h"

int main(int argumentCount, char** arguments)
{
    Benchmarks::RegisterCatch2Tests();
    return Catch::Session().run(argumentCount, arguments);
}
