/// Unit tests that throw from each operation that the runner calls.

#include <stdexcept>
#include <string>

#include "base/luunittest.h"

namespace
{

enum class EPlace
{
    Constructor,
    SetMessageStream,
    SetDataDirectory,
    InitSubtests,
    PrepareSubtest,
    GetSubtestCount,
    GetSubtestName,
    RunUnitTest
};

/// Its case would pass, but the operation `Place` throws.
template<EPlace Place>
class CThrowing : public LuUnitTest
{
public:
    CThrowing() { throwAt<EPlace::Constructor>(); }

    void SetMessageStream(LuStreamWriteText* stream) override
    {
        throwAt<EPlace::SetMessageStream>();
        LuUnitTest::SetMessageStream(stream);
    }

    void SetDataDirectory(const std::wstring& directory) override
    {
        throwAt<EPlace::SetDataDirectory>();
        LuUnitTest::SetDataDirectory(directory);
    }

    void InitSubtests() override
    {
        AddSubtest(L"Fall", [] { return eR_Passed; });
        throwAt<EPlace::InitSubtests>();
    }

    void PrepareSubtest() override { throwAt<EPlace::PrepareSubtest>(); }

    std::uint32_t GetSubtestCount() const override
    {
        throwAt<EPlace::GetSubtestCount>();
        return LuUnitTest::GetSubtestCount();
    }

    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        throwAt<EPlace::GetSubtestName>();
        return LuUnitTest::GetSubtestName(subtest);
    }

    EResult RunUnitTest(std::uint32_t subtest) override
    {
        throwAt<EPlace::RunUnitTest>();
        return LuUnitTest::RunUnitTest(subtest);
    }

private:
    template<EPlace Here>
    static void throwAt()
    {
        if constexpr (Here == Place)
        {
            throw std::runtime_error("kaputt");
        }
    }
};

} // namespace

class CConstructorThrows : public CThrowing<EPlace::Constructor>
{
    LB_RTTI(CConstructorThrows)
};
LB_RTTI_CLASS(CConstructorThrows, LuUnitTest)

class CSetMessageStreamThrows : public CThrowing<EPlace::SetMessageStream>
{
    LB_RTTI(CSetMessageStreamThrows)
};
LB_RTTI_CLASS(CSetMessageStreamThrows, LuUnitTest)

class CSetDataDirectoryThrows : public CThrowing<EPlace::SetDataDirectory>
{
    LB_RTTI(CSetDataDirectoryThrows)
};
LB_RTTI_CLASS(CSetDataDirectoryThrows, LuUnitTest)

class CInitSubtestsThrows : public CThrowing<EPlace::InitSubtests>
{
    LB_RTTI(CInitSubtestsThrows)
};
LB_RTTI_CLASS(CInitSubtestsThrows, LuUnitTest)

class CPrepareSubtestThrows : public CThrowing<EPlace::PrepareSubtest>
{
    LB_RTTI(CPrepareSubtestThrows)
};
LB_RTTI_CLASS(CPrepareSubtestThrows, LuUnitTest)

class CGetSubtestCountThrows : public CThrowing<EPlace::GetSubtestCount>
{
    LB_RTTI(CGetSubtestCountThrows)
};
LB_RTTI_CLASS(CGetSubtestCountThrows, LuUnitTest)

class CGetSubtestNameThrows : public CThrowing<EPlace::GetSubtestName>
{
    LB_RTTI(CGetSubtestNameThrows)
};
LB_RTTI_CLASS(CGetSubtestNameThrows, LuUnitTest)

class CRunUnitTestThrows : public CThrowing<EPlace::RunUnitTest>
{
    LB_RTTI(CRunUnitTestThrows)
};
LB_RTTI_CLASS(CRunUnitTestThrows, LuUnitTest)

/// Reports a message and then throws an object that is not a standard exception.
class CRunUnitTestThrowsNumber : public LuUnitTest
{
    LB_RTTI(CRunUnitTestThrowsNumber)

    void InitSubtests() override
    {
        AddSubtest(L"Fall", [] { return eR_Passed; });
    }

    EResult RunUnitTest(std::uint32_t /*subtest*/) override
    {
        Info(L"vor der Ausnahme");
        throw 42;
    }
};
LB_RTTI_CLASS(CRunUnitTestThrowsNumber, LuUnitTest)

class CSubtestExceptionModel : public LuUnitTest
{
    LB_RTTI(CSubtestExceptionModel)

    void InitSubtests() override
    {
        AddSubtest(L"Standard", [] { throw std::runtime_error("kaputt"); });
        AddSubtest(L"Text", [] { throw std::wstring(L"größer als erlaubt"); });
        AddSubtest(L"Literal", [] { throw L"fester Text"; });
        AddSubtest(L"Zahl", [] { throw 42; });
        AddSubtest(L"nach Meldungen", [this] {
            Info(L"erste");
            Error(L"zweite");
            throw std::runtime_error("kaputt");
        });
    }
};
LB_RTTI_CLASS(CSubtestExceptionModel, LuUnitTest)
