/// A unit test with one call, defined by the build as CALL, which the compiler must refuse.
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
