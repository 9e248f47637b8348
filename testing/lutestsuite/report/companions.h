/// The files beside a page, which it links.
#pragma once

#include <string>

namespace LuTestSuite
{

inline constexpr const wchar_t* c_StylesheetName = L"LuTestSuite.css";
inline constexpr const wchar_t* c_ScriptName = L"LuTestSuite.js";

/// Writes the style sheet and the script beside a page, each if it is wanted. Failures are thrown.
void WriteCompanions(const std::wstring& pagePath, bool writeCss, bool writeJs);

} // namespace LuTestSuite
