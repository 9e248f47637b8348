/// What the pages of a run, of a comparison and of an archive share: frame, rows, failure.
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

/// What a page that cannot be written costs.
inline constexpr const wchar_t* c_PageFailed = L"HTML-Report %s konnte nicht erzeugt werden.";

/// Does `work`; when that fails, prints `format` with `path` as one line and goes on. Out of memory counts as failing.
/// True when it is done.
bool WorkOrReport(LbFormatString<std::wstring> format, const std::wstring& path, const std::function<void()>& work);

/// Writes a page with the style sheet inside: `writeBody` fills the body. Failures are thrown, and leave
/// the page that was there before.
void WritePage(const std::wstring& path, const std::wstring& title,
               const std::function<void(MarkupWriter& writer)>& writeBody);

/// A row of one cell a text; `element` is "td" or "th", `start` its start tag.
void WriteRow(MarkupWriter& writer, std::wstring_view start, std::wstring_view element,
              std::initializer_list<std::wstring_view> cells);

/// A text of a report as part of a page or of an attribute: characters of markup as entities, but references, which
/// the texts of a report may hold, stay.
std::wstring ToMarkup(std::wstring_view text);

/// `successful` of `total` in hundredths; 0 when there is nothing.
float GetPercentage(std::uint32_t successful, std::uint32_t total);

/// A link to write to whom a class belongs; empty when nobody is known.
std::wstring GetContactLink(const LuTestSuiteReport::SReportClass& testClass);

} // namespace LuTestSuite
