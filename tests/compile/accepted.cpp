/// A unit test with formats of all kinds, which every compiler must accept.
#include <cstdint>
#include <string>
#include <string_view>

#include "base/lbexception.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteout.h"

namespace
{

constexpr const wchar_t* c_Format = L"%s\n";

void writeBold(LbFormatString<std::wstring> format, const std::wstring& text)
{
    LuTestSuiteOut::Write(format, text).Bold();
}

class CAccepted : public LuUnitTest
{
    LB_RTTI(CAccepted)

    void InitSubtests() override
    {
        AddSubtest(L"checks", [this] { Check(1 + 1 == 2, L"%d", 1 + 1); });
        AddSubtest(L"integers",
                   [this] { Info(L"%d %i %o %u %x %hhX %I64d %zu", 1, 2L, 3, 4U, 'c', 5, 6LL, sizeof(int)); });
        AddSubtest(L"floating",
                   [this] { Info(L"%f %F %e %E %g %G %a %LA %*.*f", 1.F, 1., 1., 1., 1., 1., 1., 1.L, 9, 3, 1.); });
        AddSubtest(L"texts", [this] {
            Info(L"%s %S %hs %ls %ws", L"a", "b", std::string("c"), std::wstring_view(L"d"), m_text);
        });
        AddSubtest(L"characters",
                   [this] { Info(L"%c %C %hc %lc %p %%", L'a', 'b', 'c', 100, static_cast<void*>(this)); });
        AddSubtest(L"run time", [this] { Error(LbRuntimeFormat(m_text), 1); });
        AddSubtest(L"lines", [this] { writeBold(c_Format, m_text); });
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { Info(L"reads %s", path); });
        AddFileSubtests(L"*.txt", {L"*.out.txt"}, [](const std::wstring&) {});
        AddFileSubtests(std::vector<std::wstring>{m_text}, m_text, [](const std::wstring&) {});
        AddSubtest(L"throws", [this] { throw LbException(m_text); });
    }

    std::wstring m_text;
};

} // namespace

LB_RTTI_CLASS(CAccepted, LuUnitTest)
