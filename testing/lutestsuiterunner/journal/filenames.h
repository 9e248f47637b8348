/// Names of the files in a run's folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Runner
{

inline constexpr const wchar_t* c_PlanName = L"plan.ndjson";
/// The file for problems of a distributed run as a whole, found by its submitter: lines of UTF-8.
inline constexpr const wchar_t* c_ProblemsName = L"problems.txt";
/// The list of a distributed run's shards, and the folder with the files of their tasks.
inline constexpr const wchar_t* c_ShardsName = L"shards.json";
inline constexpr const wchar_t* c_TasksFolderName = L"tasks";
inline constexpr const wchar_t* c_ProofName = L"proof.json";
inline constexpr const wchar_t* c_OutputFolderName = L"output";
inline constexpr const wchar_t* c_XmlReportName = L"report.xml";
inline constexpr const wchar_t* c_HtmlReportName = L"report.html";
inline constexpr const wchar_t* c_JunitName = L"junit.xml";
inline constexpr const wchar_t* c_SummaryName = L"summary.json";

/// "journal.ndjson", "journal-2.ndjson", ...
std::wstring GetJournalName(std::uint32_t number);

/// The number in the name of a journal; empty for other names.
std::optional<std::uint32_t> GetJournalNumber(std::wstring_view name);

/// The folder of a shard in that of a distributed run, relative to it and with separator at its end: "shard-3/".
std::wstring GetShardFolderName(std::uint32_t number);

/// The file of a journal's large texts, relative to the folder, with "/": "output/1.txt".
std::string GetOutputName(std::uint32_t journal);

} // namespace Runner
