/// The condition for tests that need very deep stacks.
#pragma once

/// AddressSanitizer reports false errors after an exception has unwound more than 64 MiB of stack.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool c_AllowsDeepStacks = false;
#else
inline constexpr bool c_AllowsDeepStacks = true;
#endif
