#include "base/lbtemporaryname.h"

#include "base/lbuniqueid.h"

namespace
{

constexpr const wchar_t* c_Begin = L"LuTestSuite-";
constexpr const wchar_t* c_End = L".tmp";
constexpr const wchar_t* c_ReviewBegin = L"lutestsuite-review.pending";

} // namespace

std::wstring LbTemporaryName::Make()
{
    return c_Begin + LbUniqueId::Generate() + c_End;
}

bool LbTemporaryName::IsTemporary(std::wstring_view name) noexcept
{
    return (name.starts_with(c_Begin) && name.ends_with(c_End)) || name.starts_with(c_ReviewBegin);
}
