#include "testing/lutestsuiterunner/cluster/engine.h"

#include <algorithm>
#include <string_view>

namespace Runner
{

namespace
{

/// A function-local static, because engines register themselves from constructors of static objects, whose order is not
/// defined.
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
    // Always finds a kind, because the command line accepts only names of registered engines.
    return **std::ranges::find(getKinds(), std::wstring_view(name),
                               [](const SEngineKind* kind) { return std::wstring_view(kind->text.name); });
}

} // namespace Runner
