/// A unit test that reports where it runs.

#include <cstdlib>

#include "base/lbassert.h"
#include "base/ludebugserialization.h"
#include "base/luunittest.h"
#include "base/os/files.h"

namespace
{

/// If a test requests it, changes the working directory while the module is initialised.
bool changeDirectory()
{
    const char* const moves = std::getenv("LUTESTSUITE_TEST_MOVES");
    return moves != nullptr && *moves != '\0' && LbOs::SetWorkingDirectory(LbOs::GetTemporaryDirectory());
}

[[maybe_unused]] const bool s_hasMoved = changeDirectory();

} // namespace

class CPlaceModel : public LuUnitTest
{
    LB_RTTI(CPlaceModel)

    void InitSubtests() override
    {
        AddSubtest(L"Arbeitsverzeichnis", [this] { Info(L"%s", LbOs::GetWorkingDirectory()); });
        AddSubtest(L"Umzug",
                   [this] { Check(LbOs::SetWorkingDirectory(LbOs::GetTemporaryDirectory()), L"gescheitert"); });
        AddSubtest(L"Datenverzeichnis", [this] { Info(L"%s", GetDataDirectory()); });
        AddSubtest(L"Dialog", [this] { Info(L"%d", LbAssert::IsDialogEnabled() ? 1 : 0); });
        for (const wchar_t* name : {L"Serialisierung", L"a/b\\c:d*e?f\"g<h>i|j\tk"})
        {
            AddSubtest(name, [this] { Info(L"%s", LuDebugSerializationGeneric::GetDefaultOutputDirectory()); });
        }
    }
};
LB_RTTI_CLASS(CPlaceModel, LuUnitTest)
