/// How processes recognise a keeper. Internal to the Linux side.
#pragma once

namespace LbOs::Linux
{

/// The keeper's process name. Other processes may have the same name.
inline constexpr const char c_KeeperName[] = "LuKeeper";

} // namespace LbOs::Linux
