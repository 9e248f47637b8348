/// A unit test with one call that the compiler must refuse. The build defines the call as CALL.
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
