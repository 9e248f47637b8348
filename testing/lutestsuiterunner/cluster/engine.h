/// The line between a distributed run and what carries its shards out. Another scheduler is another engine.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/settings/options.h"

namespace Runner
{

/// Tasks that were handed over together. A run has one submission, and one more each time that tasks were lost.
struct SSubmission
{
    std::uint32_t number = 1;          ///< among those of the run, from 1
    std::vector<std::uint32_t> shards; ///< numbers of the shards, one a task; ascending
};

enum class ETaskState
{
    Waiting,
    Running,
    Over ///< whatever its end was: journals tell what it has left
};

struct STask
{
    ETaskState state = ETaskState::Over;
    std::wstring note; ///< one line: where it runs, what it waits for, or how it ended
};

/// The newest tasks of shards by the shards' numbers. A shard that has a task which is not over has that one.
using Tasks = std::map<std::uint32_t, STask>;

/// One thread at a time.
class IEngine
{
public:
    virtual ~IEngine() = default;

    /// Hands the tasks over; each is "run --planned --shard K/N --out" with the shard's folder. Throws LbException with
    /// a German message.
    virtual void Submit(const SSubmission& submission) = 0;

    /// What has become of the tasks of these submissions, of which another process may have made some. A shard whose
    /// tasks are not known has no entry. Nothing if there is no answer now.
    virtual std::optional<Tasks> Poll(const std::vector<SSubmission>& submissions) = 0;

    /// Asks for the end of all tasks of these submissions. A failure has no effect.
    virtual void Cancel(const std::vector<SSubmission>& submissions) = 0;

    /// The least time between two calls of Poll.
    virtual std::chrono::milliseconds GetPollInterval() const = 0;

    /// After the word that a task is over, its journal may take so long to arrive here.
    virtual std::chrono::milliseconds GetGrace() const = 0;
};

/// What engines need to know of a run.
struct SEngineSettings
{
    std::wstring folder; ///< of the run, with separator at its end
    std::string runId;
    std::uint32_t shardCount = 1;
    std::vector<std::wstring> options; ///< of the scheduler's own command, from the user
};

/// Processes of this machine, all at once. They end with the engine.
std::unique_ptr<IEngine> MakeLocalEngine(const SEngineSettings& settings);

/// Slurm, by its commands: a submission is a job array. They must be on the path.
std::unique_ptr<IEngine> MakeSlurmEngine(const SEngineSettings& settings);

std::unique_ptr<IEngine> MakeEngine(EEngine kind, const SEngineSettings& settings);

/// Throws LbException with a German message if this machine does not have Slurm.
void RequireSlurm();

/// Throws LbException with a German message if this machine does not have what the engine needs.
void RequireEngine(EEngine kind);

} // namespace Runner
