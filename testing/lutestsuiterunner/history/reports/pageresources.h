/// Style sheet and script of the page, from the folder "resources"; the build generates the source that defines them.
#pragma once

namespace Runner::History
{

extern const char* const c_PageStyle;
extern const char* const c_PageScript;

} // namespace Runner::History
