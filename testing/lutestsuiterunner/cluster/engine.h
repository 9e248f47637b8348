/// The interface between a distributed run and the engine that runs its shards. Each scheduler has its own engine.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/settings/engines.h"

namespace Runner
{

/// Tasks that were submitted together. A run has one submission, and one more each time that tasks were lost.
struct SSubmission
{
    std::uint32_t number = 1;          ///< among those of the run, from 1
    std::vector<std::uint32_t> shards; ///< their numbers, ascending; each shard is one task
    /// For each of these shards, the number of verdicts in its journals before the submission.
    std::vector<std::uint64_t> verdicts;
    /// Why each of these shards was lost before, German; empty for a shard that was not submitted before.
    std::vector<std::wstring> reasons = {};
};

enum class ETaskState
{
    Waiting,
    Running,
    Over ///< ended in any way; only the journals tell how far it got
};

struct STask
{
    ETaskState state = ETaskState::Over;
    std::wstring note;     ///< one line: where it runs, what it waits for, or how it ended
    bool hasPlace = false; ///< it has been given to a machine
    bool isStuck = false;  ///< it waits for something that only a person can do
};

/// The task of each shard, by the shard's number: the one that is not over, if there is one, else the newest.
using Tasks = std::map<std::uint32_t, STask>;

/// One thread at a time.
class IEngine
{
public:
    virtual ~IEngine() = default;

    /// Submits the tasks; each is "run --planned --shard K/N --out" with the shard's folder. Throws LbException with a
    /// German message if the scheduler refuses them. If it does not answer in time, only Poll tells whether they exist.
    virtual void Submit(const SSubmission& submission) = 0;

    /// The states of the tasks of these submissions, some of which another process may have made. A shard whose tasks
    /// are unknown has no entry, or is over with a note. Empty if the scheduler does not answer now.
    virtual std::optional<Tasks> Poll(const std::vector<SSubmission>& submissions) = 0;

    /// Asks the scheduler to end all tasks of these submissions. Ignores failure.
    virtual void Cancel(const std::vector<SSubmission>& submissions) = 0;

    /// The least time between two calls of Poll.
    virtual std::chrono::milliseconds GetPollInterval() const = 0;

    /// How long the last records of a journal usually take to become visible here after its task is reported as over.
    /// If they take longer, cases run again for nothing.
    virtual std::chrono::milliseconds GetGrace() const = 0;

    /// How long they take at most. Only after that is a shard given up.
    virtual std::chrono::milliseconds GetLongestGrace() const = 0;
};

/// What engines need to know of a run.
struct SEngineSettings
{
    std::wstring folder; ///< of the run, with separator at its end
    std::string runId;
    std::uint32_t shardCount = 1;
    std::vector<std::wstring> options; ///< of the scheduler's own command, from the user
    std::uint32_t patience = 60'000;   ///< milliseconds that a command of the scheduler may take
};

/// What is known of an engine before a run uses it. The source of each engine defines one and registers it.
struct SEngineKind
{
    SEngineText text;     ///< by which the options choose it
    const wchar_t* name;  ///< for messages
    bool isOfThisMachine; ///< its tasks are processes of this machine, which end with the process that submitted them
    /// Throws LbException with a German message if this machine lacks what the engine needs, or if a run cannot have
    /// these options of the scheduler's own command.
    void (*require)(const std::vector<std::wstring>& options);
    std::unique_ptr<IEngine> (*make)(const SEngineSettings& settings);
};

/// Makes an engine known, also to the command line. For static objects in the sources of engines.
class CEngineRegistration
{
public:
    /// The kind must outlive the object.
    explicit CEngineRegistration(const SEngineKind& kind);
};

/// `name` is that of a registered engine.
const SEngineKind& GetEngineKind(const std::wstring& name);

} // namespace Runner
