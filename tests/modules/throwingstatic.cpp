/// A module that cannot be loaded: one of its static objects cannot be made.

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
