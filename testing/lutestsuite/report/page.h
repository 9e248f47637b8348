/// Parts shared by the pages of a run, of a comparison and of an archive: frame, rows, error message.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

using MarkupWriter = LuTestSuiteUtils::LuMarkupWriter;

/// Printed if a page cannot be written.
inline constexpr const wchar_t* c_PageFailed = L"HTML-Report %s konnte nicht erzeugt werden.";

/// Runs `work` and returns true; if it fails, including for lack of memory, prints `format` with `path` as one line and
/// returns false.
bool WorkOrReport(LbFormatString<std::wstring> format, const std::wstring& path, const std::function<void()>& work);

/// Writes a page that includes the style sheet; `writeBody` writes the body. Throws on failure and then keeps the
/// existing page.
void WritePage(const std::wstring& path, const std::wstring& title,
               const std::function<void(MarkupWriter& writer)>& writeBody);

/// Writes a row with one cell per text; `element` is "td" or "th", `start` the row's start tag.
void WriteRow(MarkupWriter& writer, std::wstring_view start, std::wstring_view element,
              std::initializer_list<std::wstring_view> cells);

/// Escapes a report's text for a page or an attribute. Keeps character references, which texts of reports may contain.
std::wstring ToMarkup(std::wstring_view text);

/// `successful` of `total` as a percentage; 0 if `total` is 0.
float GetPercentage(std::uint32_t successful, std::uint32_t total);

/// A mail link to the contact of a class; empty if there is no contact.
std::wstring GetContactLink(const LuTestSuiteReport::SReportClass& testClass);

} // namespace LuTestSuite
