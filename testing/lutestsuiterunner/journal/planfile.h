/// The file of a run's plan. It is written before the run starts and never changes afterwards.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// Passes the lines of a plan's file to `write` one after another, with their line feeds. Returns the digest.
std::string EncodePlan(const SPlan& plan, const std::function<void(std::string_view line)>& write);

/// Writes a temporary file, flushes it to the disk and renames it. Returns the digest. Throws LbException with a German
/// message.
std::string WritePlan(const std::wstring& path, const SPlan& plan);

/// Reads the file. Throws LbException with a German message that names the file, and the place if it is damaged.
SPlan ReadPlan(const std::wstring& path);

/// Digest of what all shards of a run have in common: unit tests by their folders below the data directory, cases with
/// their parameters, repetitions. It does not depend on the place of the data directory, the machine, or the order in
/// which its file system lists folders.
std::string DigestSelection(const SPlan& plan);

} // namespace Runner
