/// Shared by tests of the search for duplicates.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/os/testaids.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

/// The folder of one unit test with data sets.
class DuplicatesTest : public RunTest
{
protected:
    std::wstring Detect(EDuplicateMode mode)
    {
        LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
        setup.duplicateMode = mode;
        return Detect(setup);
    }

    std::wstring Detect(const LuTestSuiteSetup& setup)
    {
        LuTestSuiteUtils::RunDuplicateDetection(setup, m_environment);
        return m_output.GetText();
    }

    /// Writes a data set that was last changed this number of seconds ago.
    std::wstring Write(const std::wstring& name, const std::string& content, int age = 100) const
    {
        const std::wstring path = m_folder.WriteFile(L"CDataSetModel/" + name, content);
        SetAge(path, age);
        return path;
    }

    static void SetAge(const std::wstring& path, int age)
    {
        static const std::filesystem::file_time_type s_Now = std::filesystem::file_time_type::clock::now();
        std::filesystem::last_write_time(std::filesystem::path(path), s_Now - std::chrono::seconds(age));
    }

    bool Link(const std::wstring& name, const std::wstring& target) const
    {
        return LbOs::MakeLink(m_folder.GetPathOf(L"CDataSetModel/" + name), target);
    }

    std::wstring GetCheck() const { return L"Check: " + GetDirectory() + L"\n\n"; }

    std::wstring GetDirectory() const { return m_folder.GetPathOf(L"CDataSetModel") + LbPath::c_Separator; }

    std::wstring GetSummary(int classes, int redundant) const
    {
        return LbFormat(L"Durchsuchtes Datenverzeichnis: %s\n"
                        L"Gefundene Unittest-Klassen: %d\n"
                        L"Redundante Datensätze darin: %d\n",
                        m_folder.GetPath(), classes, redundant);
    }

    ScopedFolder m_folder;
};
