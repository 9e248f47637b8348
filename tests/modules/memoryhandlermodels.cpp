/// A module that changes what happens in its process when memory runs out: what then leaves the library is no exception
/// that anybody knows.

#include <new>

namespace
{

[[maybe_unused]] const std::new_handler s_former = std::set_new_handler([] { throw 42; });

} // namespace
