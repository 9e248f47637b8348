#include "testing/lutestsuiterunner/cluster/engine.h"

#include <algorithm>
#include <string_view>

namespace Runner
{

namespace
{

/// Local to a function, because the engines register themselves while static objects are constructed.
std::vector<const SEngineKind*>& getKinds()
{
    static std::vector<const SEngineKind*> s_kinds;
    return s_kinds;
}

} // namespace

CEngineRegistration::CEngineRegistration(const SEngineKind& kind)
{
    getKinds().push_back(&kind);
    AddEngineText(kind.text);
}

const SEngineKind& GetEngineKind(const std::wstring& name)
{
    // Complete: the command line accepts no other name.
    return **std::ranges::find(getKinds(), std::wstring_view(name),
                               [](const SEngineKind* kind) { return std::wstring_view(kind->text.name); });
}

} // namespace Runner
