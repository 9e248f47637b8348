#include <algorithm>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/childoutput.h"
#include "base/os/childprocess.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/lasterror.h"
#include "testing/lutestsuiterunner/cluster/slurmtext.h"
#include "testing/lutestsuiterunner/cluster/submissions.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/model/textlines.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

/// Network file systems cache attributes and listings of files: NFS for 3 to 60 seconds, unless mount options say
/// otherwise. Opening a file asks the server again, so the records of a known journal are visible at once, but the name
/// of a new journal may take up to a minute. c_Grace is long enough for known journals, and avoids waiting a minute for
/// each lost task. If a new journal becomes visible later, its cases run again, and their second verdicts are
/// duplicates.
constexpr std::chrono::seconds c_Grace(2);
constexpr std::chrono::seconds c_LongestGrace(60);

struct SAnswer
{
    bool isGood = false;
    bool isLate = false;
    std::string output; ///< standard output and standard error
};

/// Runs a command of Slurm and waits for its end, at most `limit` milliseconds.
SAnswer ask(const std::vector<std::wstring>& words, std::uint32_t limit)
{
    // These variables set options that hide tasks from squeue, let scancel end only some tasks, or let sbatch wait.
    std::wstring command = L"unset SLURM_CLUSTERS SBATCH_CLUSTERS SBATCH_WAIT SQUEUE_ACCOUNT SQUEUE_LICENSES "
                           L"SQUEUE_PARTITION SQUEUE_QOS SQUEUE_USERS SCANCEL_ACCOUNT SCANCEL_BATCH "
                           L"SCANCEL_INTERACTIVE SCANCEL_PARTITION SCANCEL_QOS SCANCEL_STATE SCANCEL_USERID "
                           L"SCANCEL_WCKEY; exec";
    for (const std::wstring& word : words)
    {
        command += L" " + QuoteForShell(word);
    }
    const auto output = LbOs::CChildOutput::Create(L"LuTestSuiteRunner-" + LbEncoding::FromUtf8(MakeRunId()));
    if (!output)
    {
        throw LbException(L"Im temporären Ordner konnte keine Datei angelegt werden");
    }
    LbOs::SChildOptions options;
    options.program = L"/bin/sh";
    options.commandLine = L"sh -c " + LbCommandLine::Quote(command + L" 1>&2");
    options.isSilent = true;
    options.errors = output.get();
    const auto process = LbOs::CChildProcess::Start(options);
    if (!process)
    {
        throw LbException(L"Die Befehle von Slurm können nicht gestartet werden");
    }
    const bool hasEnded = process->Wait(limit);
    return {hasEnded && process->GetExitStatus() == 0, !hasEnded, output->ReadEnd(0, output->GetSize())};
}

std::wstring getAnswerLine(const SAnswer& answer)
{
    const std::vector<std::wstring> lines = SplitLines(LbEncoding::FromUtf8(answer.output));
    return lines.empty() ? L"keine Antwort" : lines.back();
}

class CSlurmEngine : public IEngine
{
public:
    explicit CSlurmEngine(const SEngineSettings& settings) : m_settings(settings) {}

    void Submit(const SSubmission& submission) override
    {
        std::vector<std::wstring> words = {L"sbatch", L"--requeue", L"--output=/dev/null", L"--chdir=/"};
        words.insert(words.end(), m_settings.options.begin(), m_settings.options.end());
        // Placed after the user's options, because the last value of an option counts.
        words.insert(words.end(), {L"--parsable", L"--job-name=" + GetJobName(m_settings.runId, submission.number),
                                   L"--array=" + FormatNumbers(submission.shards), writeScript(),
                                   std::to_wstring(submission.number)});
        const SAnswer answer = ask(words, m_settings.patience);
        // Slurm may have accepted the tasks although the command did not end in time.
        if (!answer.isGood && !answer.isLate)
        {
            throw LbException(LbFormat(L"Slurm nimmt die Teile nicht an (sbatch): %s", getAnswerLine(answer)));
        }
    }

    std::optional<Tasks> Poll(const std::vector<SSubmission>& submissions) override
    try
    {
        const SAnswer answer = ask({L"squeue", L"--array", L"--states=all", L"--noheader",
                                    L"--name=" + joinNames(submissions), L"--format=" + std::wstring(c_QueueFormat)},
                                   m_settings.patience);
        if (!answer.isGood)
        {
            return std::nullopt;
        }
        Tasks tasks = ReadQueue(answer.output);
        addErrors(tasks, submissions);
        return tasks;
    }
    catch (const LbException&)
    {
        // This machine may temporarily lack processes or disk space.
        return std::nullopt;
    }

    void Cancel(const std::vector<SSubmission>& submissions) override
    try
    {
        for (const SSubmission& submission : submissions)
        {
            ask({L"scancel", L"--name=" + GetJobName(m_settings.runId, submission.number)}, m_settings.patience);
        }
    }
    catch (const LbException&)
    {
    }

    std::chrono::milliseconds GetPollInterval() const override { return std::chrono::seconds(15); }

    std::chrono::milliseconds GetGrace() const override { return c_Grace; }

    std::chrono::milliseconds GetLongestGrace() const override { return c_LongestGrace; }

private:
    std::wstring joinNames(const std::vector<SSubmission>& submissions) const
    {
        std::wstring names;
        for (const SSubmission& submission : submissions)
        {
            names += (names.empty() ? L"" : L",") + GetJobName(m_settings.runId, submission.number);
        }
        return names;
    }

    std::wstring getTasksFolder() const { return LbPath::WithSeparator(m_settings.folder + c_TasksFolderName); }

    /// A node may lack everything except the script itself, so the script reports a missing program. Each start of a
    /// task writes to a file of its own, because a node that Slurm considers lost may still write to its file.
    std::wstring writeScript() const
    {
        const std::wstring program = QuoteForShell(LbOs::GetExecutablePath());
        const std::wstring text = LbFormat(L"#!/bin/sh\n"
                                           L"exec >%s\"$SLURM_ARRAY_TASK_ID-$1-${SLURM_RESTART_COUNT:-0}.txt\" 2>&1\n"
                                           L"if ! test -x %s; then\n"
                                           L"    echo \"Fehler: Auf dem Rechner $(hostname) fehlt das Programm \"%s\n"
                                           L"    exit 2\n"
                                           L"fi\n"
                                           L"exec %s run --planned --shard \"$SLURM_ARRAY_TASK_ID/%u\""
                                           L" --out %s\"$SLURM_ARRAY_TASK_ID\"\n",
                                           QuoteForShell(getTasksFolder() + L"shard-"), program, program, program,
                                           m_settings.shardCount, QuoteForShell(m_settings.folder + L"shard-"));
        const std::wstring path = getTasksFolder() + L"task.sh";
        const std::string bytes = LbEncoding::ToUtf8(text);
        WriteWholeFile(path, [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
        return path;
    }

    /// By shard, the name of the output file of the newest start in the newest submission.
    std::map<std::uint32_t, std::wstring> findOutputs(const std::vector<SSubmission>& submissions) const
    {
        std::vector<std::wstring> files;
        LbOs::VisitDirectory(getTasksFolder(),
                             [&files](const LbOs::SDirectoryEntry& entry) { files.push_back(entry.name); });
        std::map<std::uint32_t, std::wstring> names = FindNewestOutputs(files);
        std::erase_if(names, [&submissions](const auto& output) {
            const auto& [shard, name] = output;
            const auto newest =
                std::find_if(submissions.rbegin(), submissions.rend(), [shard = shard](const SSubmission& one) {
                    return std::ranges::binary_search(one.shards, shard);
                });
            return newest != submissions.rend() && !name.starts_with(LbFormat(L"shard-%u-%u-", shard, newest->number));
        });
        return names;
    }

    /// The last error that a start of a task has printed; if there is no error, the last line.
    std::wstring describeOutput(const std::wstring& name) const
    {
        const std::string bytes = LbFileSystem::ReadFile8Bit(getTasksFolder() + name);
        const std::wstring error = FindLastError(bytes);
        // If the host could not start, for example without one of its libraries, the last line may tell why.
        const std::wstring line = error.empty() ? FindLastLine(bytes) : std::wstring();
        return line.empty() ? error : L"letzte Ausgabe: " + line;
    }

    std::wstring describeMissingOutput() const
    {
        return LbFormat(L"dieser Start hat keine Ausgabe hinterlassen, vielleicht fehlt auf dem Rechner der Ordner %s",
                        m_settings.folder);
    }

    /// True if all shards of the submissions have tasks that are not over.
    static bool areAllActive(const Tasks& tasks, const std::vector<SSubmission>& submissions)
    {
        const auto isActive = [&tasks](std::uint32_t shard) {
            const auto task = tasks.find(shard);
            return task != tasks.end() && task->second.state != ETaskState::Over;
        };
        return std::ranges::all_of(submissions, [&isActive](const SSubmission& submission) {
            return std::ranges::all_of(submission.shards, isActive);
        });
    }

    /// Adds the output of the newest start to the note of each task that is over. Slurm forgets tasks some minutes
    /// after their end (MinJobAge); then only the output says why they ended.
    void addErrors(Tasks& tasks, const std::vector<SSubmission>& submissions) const
    {
        if (areAllActive(tasks, submissions))
        {
            return;
        }
        const std::map<std::uint32_t, std::wstring> outputs = findOutputs(submissions);
        for (auto& [shard, task] : tasks)
        {
            // A task that has not begun has no output.
            if (task.state == ETaskState::Over && task.hasPlace)
            {
                const auto output = outputs.find(shard);
                const std::wstring text =
                    output == outputs.end() ? describeMissingOutput() : describeOutput(output->second);
                task.note += (text.empty() ? L"" : L": ") + text;
            }
        }
        for (const auto& [shard, name] : outputs)
        {
            if (!tasks.contains(shard))
            {
                tasks[shard].note = describeOutput(name);
            }
        }
    }

    const SEngineSettings m_settings;
};

void requireSlurm(const std::vector<std::wstring>& options)
{
    if (LbPath::c_Separator == L'\\')
    {
        throw LbException(L"Slurm gibt es nur unter Linux");
    }
    if (const auto own = std::ranges::find_if(options, IsOwnOption); own != options.end())
    {
        throw LbException(
            LbFormat(L"Die Option '--sbatch=%s' ist nicht möglich: submit legt selbst fest, wie die Teile "
                     L"heißen, wo sie laufen und worauf es wartet",
                     *own));
    }
    for (const wchar_t* const command : {L"sbatch", L"squeue", L"scancel"})
    {
        if (!ask({command, L"--version"}, SEngineSettings().patience).isGood)
        {
            throw LbException(
                LbFormat(L"Slurm gibt es hier nicht: der Befehl %s kann nicht gestartet werden", command));
        }
    }
}

/// Uses Slurm through its commands, which must be on the path. A submission is a job array.
constexpr SEngineKind c_SlurmEngine = {{L"slurm", L"Tasks eines Clusters mit Slurm"},
                                       L"Slurm",
                                       /*isOfThisMachine*/ false,
                                       requireSlurm,
                                       [](const SEngineSettings& settings) -> std::unique_ptr<IEngine> {
                                           return std::make_unique<CSlurmEngine>(settings);
                                       }};

const CEngineRegistration s_slurmRegistration(c_SlurmEngine);

} // namespace

} // namespace Runner
