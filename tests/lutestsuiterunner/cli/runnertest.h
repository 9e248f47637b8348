/// What tests of LuTestSuiteRunner share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "tests/lutestsuiterunner/cli/runnerprocess.h"
#include "tests/support/scopedfolder.h"

/// Runs LuTestSuiteRunner over the folder "data", with the modules of the models loaded, and into the folder "out".
class RunnerTest : public testing::Test
{
protected:
    RunnerTest() { m_folder.MakeFolder(L"data"); }

    /// `own` begins with the command. "run" gets the option --out unless `own` contains it.
    SHostRun Run(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library = {},
                 const SHostOptions& options = {}) const;

    SHostRun Resume(const std::vector<std::wstring>& options = {}) const;

    /// The folder of the run, with separator at its end.
    std::wstring GetOut() const { return m_folder.GetPathOf(L"out/"); }

    /// All records of the journal of this number.
    std::vector<nlohmann::json> ReadRecords(std::uint32_t journal) const;

    /// The first record of this type in the first journal; null if there is none.
    nlohmann::json FindRecord(const std::string& type) const;

    /// The number of records of this type in the journal of this number.
    std::size_t CountRecords(const std::string& type, std::uint32_t journal) const;

    /// Fails unless the bytes contain the text, with the line ends of any platform.
    static void ExpectLine(const std::string& bytes, const std::string& text);

    ScopedFolder m_folder;
};
