#include "base/lbdatetime.h"

#include "base/lbformat.h"

namespace
{

std::wstring formatField(const LbOs::SLocalTime& time, wchar_t field)
{
    switch (field)
    {
    case L'Y':
        return LbFormat(L"%04d", time.year);
    case L'm':
        return LbFormat(L"%02d", time.month);
    case L'd':
        return LbFormat(L"%02d", time.day);
    case L'H':
        return LbFormat(L"%02d", time.hour);
    case L'i':
        return LbFormat(L"%02d", time.minute);
    case L's':
        return LbFormat(L"%02d", time.second);
    default:
        return {field};
    }
}

} // namespace

std::wstring LbDateTime::Format(const LbOs::SLocalTime& time, std::wstring_view format)
{
    std::wstring result;
    for (const wchar_t field : format)
    {
        result += formatField(time, field);
    }
    return result;
}

std::wstring LbDateTime::FormatNow(std::wstring_view format)
{
    return Format(LbOs::GetLocalTimeNow(), format);
}
