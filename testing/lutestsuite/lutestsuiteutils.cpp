/// An exception takes its place from the file that raises it: this one is named like the class.

#include "base/lbexception.h"
#include "testing/lutestsuite/utils/utilsfailure.h"

void LuTestSuite::ThrowUtilsFailure(const wchar_t* function)
{
    throw LbException(function, {});
}
