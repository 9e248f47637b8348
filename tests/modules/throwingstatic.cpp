/// A module that cannot be loaded because the constructor of a static object throws.

#include <stdexcept>

namespace
{

class CThrowingStatic
{
public:
    CThrowingStatic() { throw std::runtime_error("kaputt"); }
};

const CThrowingStatic s_ThrowingStatic;

} // namespace
