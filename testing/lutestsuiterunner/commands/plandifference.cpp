#include "testing/lutestsuiterunner/commands/plandifference.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <variant>

#include "testing/lutestsuiterunner/journal/planfields.h"

namespace Runner
{

namespace
{

template<typename R, std::size_t N>
bool areEqual(const R& one, const R& other, const SValueField<R> (&fields)[N])
{
    return std::ranges::all_of(fields, [&](const SValueField<R>& field) {
        return std::visit([&](auto member) { return one.*member == other.*member; }, field.member);
    });
}

/// The sources and the configuration of a build. Omits folders, because they depend on the machine.
auto describeBuild(const SOrigin& origin)
{
    const SSvnInfo svn = origin.svn.value_or(SSvnInfo());
    const SPscmInfo pscm = origin.pscm.value_or(SPscmInfo());
    return std::tuple(origin.buildConfiguration, svn.URL, svn.Revision, pscm.Repository, pscm.Branch, pscm.Changeset);
}

} // namespace

bool HaveSameBuild(const SOrigin& first, const SOrigin& other)
{
    return describeBuild(first) == describeBuild(other);
}

std::wstring FindDifference(const SPlan& first, const SPlan& other)
{
    SParams params = other.params;
    // Machines have different numbers of processors.
    params.workerThreads = first.params.workerThreads;
    if (!areEqual(first.params, params, c_ParamFields) || !areEqual(first.rules, other.rules, c_RuleFields))
    {
        return L"Optionen";
    }
    return HaveSameBuild(first.origin, other.origin) ? L"" : L"Builds";
}

} // namespace Runner
