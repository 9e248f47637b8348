/// A module whose new-handler throws an int, so that operator new throws an unknown exception when memory runs out.

#include <new>

namespace
{

[[maybe_unused]] const std::new_handler s_former = std::set_new_handler([] { throw 42; });

} // namespace
