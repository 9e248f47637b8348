/// Records as lists of fields, so that a test can state exactly which fields changed.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// "name=value" of each field, in declaration order; "name[]=value" of each element of a list. UTF-8.
using Fields = std::vector<std::string>;

/// Omits callables, and lists only the class names of unit tests.
Fields GetFields(const LuTestSuiteSetup& setup);
Fields GetFields(const LuTestSuiteRun::SParams& params);

/// Sorts the stored selection by text.
Fields GetFields(const LuTestSuiteUtils::SConfigFileData& data);

/// The elements of `fields` that are not in `others`.
Fields GetOtherFields(const Fields& fields, const Fields& others);

/// The fields that differ from those of a default record.
template<typename T>
Fields GetChangedFields(const T& record)
{
    return GetOtherFields(GetFields(record), GetFields(T()));
}
