/// What only tests ask of the system. A part of the tests, in no library.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace LbOs
{

/// Loads a shared library that nothing else uses, and unloads it. False when it cannot be loaded.
bool LoadAndUnloadModule(const std::wstring& path);

/// Forks; the child calls `function` and ends with what it gives, without any destructors, or with a signal after 60 s.
/// The child's exit status, -1 for a signal; none where processes do not fork.
std::optional<int> RunInFork(const std::function<int()>& function);

/// Makes the system refuse signals that it would have to queue, or take them again. False where there are none.
bool SetSignalsForbidden(bool areForbidden);

} // namespace LbOs
