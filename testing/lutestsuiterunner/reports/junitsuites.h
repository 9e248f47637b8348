/// The suites of junit.xml.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "testing/lutestsuiterunner/reports/suitenames.h"

namespace Runner
{

/// One suite: its cases in the order of the file.
struct SJunitSuite
{
    std::wstring name;
    std::vector<std::uint32_t> cases;
    std::vector<const SDisabledCase*> disabled;
};

/// Makes a suite for each pair of a class and a folder that has cases in the run, or disabled cases.
class CJunitSuites
{
public:
    /// The plan must outlive the object.
    explicit CJunitSuites(const SPlan& plan);

    const std::vector<SJunitSuite>& Get() const { return m_suites; }

private:
    SJunitSuite& get(const std::wstring& className, const std::wstring& dataDirectory);

    CSuiteNames m_names;
    std::map<std::pair<std::wstring, std::wstring>, std::size_t> m_indices;
    std::vector<SJunitSuite> m_suites;
};

} // namespace Runner
