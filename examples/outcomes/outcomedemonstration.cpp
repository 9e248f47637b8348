#include <stdexcept>

#include "base/lbexception.h"
#include "base/luunittest.h"

/// Shows every outcome that a case can have by itself, one sub-test each. It tests nothing and fails on purpose: leave
/// it out of runs with "-e COutcomeDemonstration".
class COutcomeDemonstration : public LuUnitTest
{
    LB_RTTI(COutcomeDemonstration)

public:
    /// Called only before a case runs, not when sub-tests are listed.
    void SetMessageStream(LuStreamWriteText* stream) override
    {
        LuUnitTest::SetMessageStream(stream);
        m_isListed = false;
    }

    void InitSubtests() override
    {
        AddSubtest(L"passes", [this] { Info(L"An information does no harm."); });
        AddSubtest(L"reports an error", [this] { Check(1 + 1 == 3, L"1 + 1 is %d", 1 + 1); });
        AddSubtest(L"fails without a word", [] { return eR_Failed; });
        AddSubtest(L"catches an exception of its own", [this] { return catchException(); });
        AddSubtest(L"lets an exception escape", [] { throw std::runtime_error("nobody caught this"); });
        AddSubtest(L"lets an exception with its place escape", [] { throw LbException(L"raised here"); });
        AddSubtest(L"lets something escape that is no exception", [] { throw 42; });
        AddSubtest(L"misses its input", [] { return eR_NoInput; });
        AddSubtest(L"differs from the reference run", [] { return eR_Different; });
        AddSubtest(L"returns a value that is no result", [] { return static_cast<EResult>(99); });
        if (m_isListed)
        {
            AddSubtest(L"is gone when it is to be run", [] {});
        }
    }

private:
    EResult catchException()
    {
        try
        {
            throw std::runtime_error("caught by the test");
        }
        catch (const std::runtime_error& exception)
        {
            Error(L"%S", exception.what());
            return eR_Exception;
        }
    }

    bool m_isListed = true;
};

LB_RTTI_CLASS(COutcomeDemonstration, LuUnitTest)
