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

/// Tasks that were submitted together. A run has a first submission, and a further one each time that lost shards are
/// submitted again.
struct SSubmission
{
    std::uint32_t number = 1;          ///< number of the submission within the run, from 1
    std::vector<std::uint32_t> shards; ///< numbers of the shards, ascending; each shard is one task
    /// For each of these shards, the number of verdicts in its journals before the submission.
    std::vector<std::uint64_t> verdicts;
    /// The German reason why each of these shards was lost; empty for a shard that is submitted for the first time.
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
    bool hasPlace = false; ///< the scheduler has assigned it to a machine
    bool isStuck = false;  ///< it waits until a user or an administrator acts
};

/// One task for each shard, by the shard's number. If a shard has several tasks, its entry is the one that is not over,
/// or the newest one if all are over.
using Tasks = std::map<std::uint32_t, STask>;

/// One thread at a time.
class IEngine
{
public:
    virtual ~IEngine() = default;

    /// Submits one task for each shard; the task runs "run --planned --shard K/N --out" with the shard's folder. Throws
    /// LbException with a German message if the scheduler refuses them. If the scheduler does not answer in time,
    /// returns normally, and only Poll tells whether the tasks exist.
    virtual void Submit(const SSubmission& submission) = 0;

    /// Returns the states of the tasks of these submissions; another process may have made some of the submissions. A
    /// shard whose tasks the scheduler does not know has no entry, or an entry that is over and has a note. Returns
    /// std::nullopt if the scheduler does not answer now.
    virtual std::optional<Tasks> Poll(const std::vector<SSubmission>& submissions) = 0;

    /// Asks the scheduler to end all tasks of these submissions. Ignores failure.
    virtual void Cancel(const std::vector<SSubmission>& submissions) = 0;

    /// The least time between two calls of Poll.
    virtual std::chrono::milliseconds GetPollInterval() const = 0;

    /// How long the last records of a journal usually take to become visible here after its task is reported as over.
    /// If they take longer, their cases run again unnecessarily.
    virtual std::chrono::milliseconds GetGrace() const = 0;

    /// The longest time that these records take to become visible. A shard is given up only after this time.
    virtual std::chrono::milliseconds GetLongestGrace() const = 0;
};

/// What engines need to know about a run.
struct SEngineSettings
{
    std::wstring folder; ///< of the run, with separator at its end
    std::string runId;
    std::uint32_t shardCount = 1;
    std::vector<std::wstring> options; ///< options for the scheduler's submit command, given by the user
    std::uint32_t patience = 60'000;   ///< milliseconds that a command of the scheduler may take
};

/// Describes an engine before a run uses it. The source file of each engine defines one such record and registers it.
struct SEngineKind
{
    SEngineText text;     ///< its name and help on the command line
    const wchar_t* name;  ///< for messages
    bool isOfThisMachine; ///< its tasks are processes of this machine, and end with the process that submitted them
    /// Throws LbException with a German message if this machine lacks what the engine needs, or if one of these options
    /// for the scheduler's submit command is not allowed.
    void (*require)(const std::vector<std::wstring>& options);
    std::unique_ptr<IEngine> (*make)(const SEngineSettings& settings);
};

/// Registers an engine for runs and for the command line. The source file of each engine defines one object of this
/// class as a static object.
class CEngineRegistration
{
public:
    /// The kind must exist until the process ends, because the list of engines refers to it.
    explicit CEngineRegistration(const SEngineKind& kind);
};

/// Precondition: `name` is the name of a registered engine.
const SEngineKind& GetEngineKind(const std::wstring& name);

} // namespace Runner
