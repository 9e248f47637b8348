/// A module that changes what its process does when memory runs out: the library then throws an unknown exception.

#include <new>

namespace
{

[[maybe_unused]] const std::new_handler s_former = std::set_new_handler([] { throw 42; });

} // namespace
