/// The machine that executed a run.

#include "base/lbformat.h"
#include "base/os/machine.h"
#include "testing/lutestsuite/lutestsuitereport.h"

std::wstring LuTestSuiteReport::getCPUInfo()
{
    constexpr double c_MegahertzPerGigahertz = 1000.0;
    constexpr double c_GigabytesPerByte = 9.313225746154785e-10;
    const LbOs::SProcessor processor = LbOs::QueryProcessor();
    return LbFormat(L"Model: %s, Cores: %d, Speed %.3f GHz, Memory %.1f GB", processor.model,
                    processor.logicalProcessors, processor.megahertz / c_MegahertzPerGigahertz,
                    static_cast<double>(LbOs::GetPhysicalMemory()) * c_GigabytesPerByte);
}

std::wstring LuTestSuiteReport::getGPUInfo()
{
    return LbOs::GetGraphicsAdapter();
}
