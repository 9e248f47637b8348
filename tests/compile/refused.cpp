/// A unit test with one call, which the compiler is given beside this file and does not accept.
#include <string>

#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteout.h"

namespace
{

class CRefused : public LuUnitTest
{
    void InitSubtests() override { CALL; }
};

} // namespace
