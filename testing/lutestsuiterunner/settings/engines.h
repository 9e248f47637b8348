/// The engines for distributed runs that the command line knows. Their sources register them, so that a further engine
/// needs no change elsewhere.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Runner
{

/// How the command line and its help show an engine.
struct SEngineText
{
    const wchar_t* name; ///< the value of --engine
    const wchar_t* help; ///< German, a few words
};

/// The engine that is used without --engine.
inline constexpr const wchar_t* c_DefaultEngine = L"local";

/// Registers an engine. Call this only while static objects are constructed.
void AddEngineText(const SEngineText& text);

/// Sorted by name.
const std::vector<SEngineText>& GetEngineTexts();

bool IsEngine(std::wstring_view name);

/// The names, or names with help, in one German line: "local oder slurm".
std::wstring ListEngines(bool withHelp);

} // namespace Runner
