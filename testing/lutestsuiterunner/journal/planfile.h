/// The file of a run's plan: written before anything starts, never changed afterwards.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// Gives the lines of a plan's file one after another, with their line feeds, and returns the digest.
std::string EncodePlan(const SPlan& plan, const std::function<void(std::string_view line)>& write);

/// Writes the file beside its place, brings it to the disk and puts it there as a whole. Returns the digest. Throws
/// LbException with a German message.
std::string WritePlan(const std::wstring& path, const SPlan& plan);

/// Reads the file. Throws LbException with a German message that names the file, and the place if it is damaged.
SPlan ReadPlan(const std::wstring& path);

/// Digest of what all shards of a run have in common: unit tests by their folders below the data directory, cases with
/// their parameters, repetitions. Neither the place of the data directory nor the machine matters, nor the order in
/// which its file system lists folders.
std::string DigestSelection(const SPlan& plan);

} // namespace Runner
