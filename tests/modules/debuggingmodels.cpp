/// Unit tests that have debugging options. They report the options in the order in which the runner has set them.

#include <vector>

#include "base/idebugging.h"
#include "base/luunittest.h"

namespace
{

class CReportingOptions : public LuUnitTest, public IDebugging
{
public:
    void InitSubtests() override
    {
        AddSubtest(L"Optionen", [this] {
            for (const SSetting& setting : m_settings)
            {
                Info(L"%u=%d", setting.option, setting.value);
            }
        });
    }

    void SetOption(EOption option, bool value) override { m_settings.push_back({option, value ? 1 : 0}); }

private:
    struct SSetting
    {
        EOption option;
        int value;
    };

    std::vector<SSetting> m_settings;
};

} // namespace

class CDebuggingModel : public CReportingOptions
{
    LB_RTTI(CDebuggingModel)

    bool IsOptionSupported(EOption /*option*/) const override { return true; }
};
LB_RTTI_CLASS(CDebuggingModel, LuUnitTest)

class CPartlyDebuggingModel : public CReportingOptions
{
    LB_RTTI(CPartlyDebuggingModel)

    bool IsOptionSupported(EOption option) const override { return option == eO_PredefinedBreakPoints; }
};
LB_RTTI_CLASS(CPartlyDebuggingModel, LuUnitTest)
