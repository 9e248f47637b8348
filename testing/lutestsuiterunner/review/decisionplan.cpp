#include "testing/lutestsuiterunner/review/decisionplan.h"

#include <memory>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbtemporaryname.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

constexpr const wchar_t* c_Damaged = L"Die unvollendete Entscheidung ist beschädigt";

nlohmann::json toJson(const PartNames& parts)
{
    nlohmann::json names = nlohmann::json::array();
    for (const std::wstring& part : parts)
    {
        names.push_back(ToEscapedUtf8(part));
    }
    return names;
}

PartNames readParts(const nlohmann::json& names)
{
    PartNames parts;
    for (const nlohmann::json& name : names)
    {
        parts.insert(FromEscapedUtf8(name.get<std::string>()));
    }
    return parts;
}

nlohmann::json toJson(const SAccepted& accepted)
{
    // FromNative and the escape keep bytes that are not UTF-8.
    return {{"reference", ToEscapedUtf8(LbEncoding::FromNative(accepted.reference))},
            {"parts", toJson(accepted.parts)}};
}

std::shared_ptr<const SAccepted> readAccepted(const nlohmann::json& accepted)
{
    return std::make_shared<const SAccepted>(
        SAccepted{LbEncoding::ToNative(FromEscapedUtf8(accepted.at("reference").get<std::string>())),
                  readParts(accepted.at("parts"))});
}

} // namespace

std::string MakeDecisionPlan(const std::wstring& directory, const SPlanned& planned)
{
    nlohmann::json plan = {{"accept", planned.decision == EDecision::Accept},
                           {"parts", toJson(planned.parts)},
                           {"temporary", ToEscapedUtf8(planned.temporary)},
                           {"files", nlohmann::json::array()}};
    for (const SReceivedFile& file : planned.files)
    {
        plan["files"].push_back({{"reference", ToEscapedUtf8(file.reference.substr(directory.size()))},
                                 {"checksum", ToEscapedUtf8(file.checksum)},
                                 {"expected", ToEscapedUtf8(file.expected)}});
        if (file.earlier)
        {
            plan["files"].back()["earlier"] = toJson(*file.earlier);
        }
    }
    return plan.dump();
}

SPlanned ReadDecisionPlan(const std::wstring& directory)
try
{
    const auto getText = [](const nlohmann::json& value) { return FromEscapedUtf8(value.get<std::string>()); };
    const nlohmann::json plan = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(directory + c_DecisionFile));
    SPlanned planned = {plan.at("accept").get<bool>() ? EDecision::Accept : EDecision::Reject,
                        readParts(plan.at("parts")),
                        {},
                        getText(plan.at("temporary"))};
    // RemoveTemporaries deletes files of this name, so a damaged plan must not name any other file.
    if (!LbTemporaryName::IsTemporary(planned.temporary) ||
        LbPath::GetLastComponent(planned.temporary) != planned.temporary)
    {
        throw std::wstring(c_Damaged);
    }
    for (const nlohmann::json& file : plan.at("files"))
    {
        planned.files.push_back({directory + getText(file.at("reference")), getText(file.at("checksum")),
                                 getText(file.at("expected")), true,
                                 file.contains("earlier") ? readAccepted(file.at("earlier")) : nullptr});
    }
    return planned;
}
catch (const nlohmann::json::exception&)
{
    throw std::wstring(c_Damaged);
}

} // namespace Runner
