"""C++ sources of the projects in which the commands of the documents run."""

DEFECTS = """
#include <chrono>
#include <cstdlib>
#include <thread>
#include "base/luunittest.h"
class CMyTest : public LuUnitTest
{
    LB_RTTI(CMyTest)
    void InitSubtests() override
    {
        AddSubtest(L"leaks", [] { static void* volatile s_lost; s_lost = std::malloc(40); s_lost = nullptr; });
        if (std::getenv("DOCUMENTS_HANG") != nullptr)
        {
            AddSubtest(L"hangs", [] { std::this_thread::sleep_for(std::chrono::hours(1)); });
        }
    }
};
LB_RTTI_CLASS(CMyTest, LuUnitTest)
class CImport : public LuUnitTest
{
    LB_RTTI(CImport)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.xml", [this](const std::wstring& path) { Check(!path.empty(), L"no path"); });
    }
};
LB_RTTI_CLASS(CImport, LuUnitTest)
"""
INVOICES = """
#include "base/lbfilesystem.h"
static std::string convert(const std::wstring& path) { return LbFileSystem::ReadFile8Bit(path); }
class CInvoice : public LuUnitTest
{
    LB_RTTI(CInvoice)
    void InitSubtests() override
    {
        SNIPPET
    }
};
LB_RTTI_CLASS(CInvoice, LuUnitTest)
"""
UNDEFINED = """
#include <limits>
#include "base/luunittest.h"
class CMyTest : public LuUnitTest
{
    LB_RTTI(CMyTest)
    void InitSubtests() override
    {
        AddSubtest(L"overflow", [this] {
            volatile int number = std::numeric_limits<int>::max();
            number = number + 1;
            Info(L"%d", number);
        });
        AddSubtest(L"next", [] { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CMyTest, LuUnitTest)
"""
PARSER_TEST = """
#include <gtest/gtest.h>
TEST(Parser, Reads) { EXPECT_EQ(1 + 1, 2); }
TEST(Parser, Skips) { GTEST_SKIP() << "later"; }
"""
