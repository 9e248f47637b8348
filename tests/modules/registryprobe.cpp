// Tests look up the classes of this module by name, to check registration and exceptions across modules.

#include <stdexcept>

#include "base/idebugging.h"
#include "base/iunittestrecreate.h"
#include "base/lbexception.h"
#include "base/luunittest.h"

namespace
{

class CRegistryProbe : public LuUnitTest, public IDebugging, public IUnitTestRecreate
{
    LB_RTTI(CRegistryProbe)

    void InitSubtests() override
    {
        AddSubtest(L"passes", [] {});
        AddSubtest(L"throws standard exception", [] { throw std::runtime_error("from the module"); });
        AddSubtest(L"throws LbException", [] { throw LbException(L"aus dem Modul"); });
        AddSubtest(L"throws wide text", [] { throw std::wstring(L"Größe fehlt"); });
    }

    bool IsOptionSupported(EOption option) const override { return option == eO_VerboseOutput; }
    void SetOption(EOption option, bool value) override { Info(L"option %u is %d", option, value); }

    bool IsRecreatable(std::uint32_t subtest) const override { return subtest == 0; }
    void Recreate(std::uint32_t subtest) override { throw LbException(LbFormat(L"Untertest %u", subtest)); }
};

class CRegistryProbeService : public IObject
{
    LB_RTTI(CRegistryProbeService)
};

class CRegistryProbeThrowing : public IObject
{
    LB_RTTI(CRegistryProbeThrowing)

public:
    CRegistryProbeThrowing() { throw LbException(L"im Konstruktor"); }
};

} // namespace

LB_RTTI_CLASS(CRegistryProbe, LuUnitTest)
LB_RTTI_CLASS(CRegistryProbeService, IObject)
LB_RTTI_CLASS(CRegistryProbeThrowing, IObject)
