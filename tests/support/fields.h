/// Records as lists of their fields, so that a test can say which fields something changed and that it changed no
/// other.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// "name=value" of each field, in declaration order; "name[]=value" of each element of a list. UTF-8.
using Fields = std::vector<std::string>;

/// Callables are left out, and of unit tests only the class names are listed.
Fields GetFields(const LuTestSuiteSetup& setup);
Fields GetFields(const LuTestSuiteRun::SParams& params);

/// The stored selection stands in the order of its texts.
Fields GetFields(const LuTestSuiteUtils::SConfigFileData& data);

/// Those of `fields` that are not in `others`.
Fields GetOtherFields(const Fields& fields, const Fields& others);

/// The fields that differ from those of a new record.
template<typename T>
Fields GetChangedFields(const T& record)
{
    return GetOtherFields(GetFields(record), GetFields(T()));
}
