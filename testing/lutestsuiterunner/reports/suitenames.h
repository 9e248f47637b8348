/// The names of suites in junit.xml.
#pragma once

#include <map>
#include <set>
#include <string>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// The suite of a class that has one folder is named after the class. If a class has several, the names of its suites
/// contain the folder, too.
class CSuiteNames
{
public:
    /// The plan must outlive the object.
    explicit CSuiteNames(const SPlan& plan);

    std::wstring Get(const std::wstring& className, const std::wstring& dataDirectory) const;

private:
    const SPlan& m_plan;
    std::map<std::wstring, std::set<std::wstring>> m_folders; ///< by class
};

} // namespace Runner
