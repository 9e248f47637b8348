/// What a plan needs and this machine lacks.
#pragma once

#include <string>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// The first of the plan's folders that does not exist; empty if all exist.
std::wstring FindMissingFolder(const SPlan& plan);

/// The first of the plan's classes that no loaded module contains, with the module that the plan names for it; empty if
/// all classes are known.
std::wstring FindMissingClass(const SPlan& plan);

} // namespace Runner
