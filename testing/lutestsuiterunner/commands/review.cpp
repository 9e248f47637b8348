/// The command "review": shows, accepts and rejects test output that differs from its references.

#include <algorithm>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/console.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/reviewchoice.h"
#include "testing/lutestsuiterunner/commands/reviewdecisions.h"
#include "testing/lutestsuiterunner/commands/reviewdialog.h"
#include "testing/lutestsuiterunner/console/changetext.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/review/changes.h"
#include "testing/lutestsuiterunner/review/decision.h"

namespace Runner
{

namespace
{

void print(const std::wstring& text)
{
    CTerminal::Get().WriteOutput(text);
}

/// Build servers set CI in each job.
bool isBuildServer()
{
    const std::wstring value = LbOs::GetEnvironmentText(L"CI");
    return !value.empty() && value != L"false";
}

/// The review of one folder.
class CReview
{
public:
    explicit CReview(const SReviewOptions& options)
        : m_options(options), m_directory(LbPath::WithSeparator(LbOs::GetFullPath(options.directory))),
          m_shows(options.diff || options.sideBySide),
          m_file(options.diffFile.empty() ? options.sideBySideFile : options.diffFile)
    {
        const bool isTerminal = LbOs::EnableTerminalSequences();
        m_style.isColoured = isTerminal && LbOs::GetEnvironmentText(L"NO_COLOR").empty();
        m_style.isSideBySide = options.sideBySide;
        if (const std::uint32_t width = LbOs::GetOutputTerminalWidth(); width > 0)
        {
            m_style.areLinesCut = true;
            m_style.width = width - 1;
        }
        m_mayAsk = isTerminal && LbOs::IsInputTerminal() && !m_isBuildServer;
    }

    int Run()
    {
        if (!LbFileSystem::IsDirectory(m_directory))
        {
            throw describeMissing();
        }
        requireCompatibleOptions();
        m_changes = GroupChanges(finishEarlier().references);
        if (decides())
        {
            return decide();
        }
        if (m_mayAsk && !m_options.ci && !m_shows && !m_options.files)
        {
            return ask();
        }
        if (m_options.files)
        {
            listFiles();
        }
        else
        {
            list(m_file.empty() ? m_changes : findOfFile());
        }
        return m_options.ci && !m_changes.empty() ? LuTestSuiteHost::c_Failed : LuTestSuiteHost::c_Succeeded;
    }

private:
    bool decides() const { return !m_options.accept.empty() || !m_options.reject.empty(); }

    /// Throws a German message if the options contradict each other, or accept or reject changes where nothing may be
    /// decided.
    void requireCompatibleOptions() const
    {
        if (m_shows && m_options.files)
        {
            throw std::wstring(L"'--files' listet nur Namen: ohne '--diff' und '--side-by-side' angeben");
        }
        if (!m_options.sideBySideFile.empty() && m_options.sideBySideFile != m_file)
        {
            throw std::wstring(L"'--diff' und '--side-by-side' nennen verschiedene Dateien");
        }
        if (decides() && (m_shows || m_options.files))
        {
            throw std::wstring(L"'--diff', '--side-by-side' und '--files' entscheiden nichts: ohne '--accept' und "
                               L"'--reject' angeben");
        }
        if (decides() && (m_options.ci || m_isBuildServer))
        {
            throw std::wstring(L"Mit '--ci' oder der Umgebungsvariablen CI wird nichts übernommen oder verworfen");
        }
    }

    /// The message if the folder is missing. The argument after an option with an optional value is read as the folder,
    /// even if the user meant it as the value. The message then explains "=".
    std::wstring describeMissing() const
    {
        const bool lacksFile = m_shows && m_file.empty();
        if (lacksFile || (m_options.files && m_options.filesOf.empty()))
        {
            return LbFormat(L"Verzeichnis %s gibt es nicht; ein Wert von '%s' steht hinter '='", m_directory,
                            lacksFile ? L"--diff" : L"--files");
        }
        return LbFormat(L"Verzeichnis %s gibt es nicht", m_directory);
    }

    /// Finishes decisions that were interrupted. Returns the changes that remain.
    SFound finishEarlier() const
    {
        SFound found = FindReceived(m_directory);
        if (!m_options.ci)
        {
            std::ranges::for_each(found.remains, RemoveRemains);
        }
        std::vector<std::wstring> folders = FindUnfinishedAbove(m_directory);
        folders.insert(folders.end(), found.unfinished.begin(), found.unfinished.end());
        if (folders.empty())
        {
            return found;
        }
        if (m_options.ci)
        {
            throw LbFormat(L"In %s ist eine Entscheidung unvollendet: 'review' ohne '--ci' vollendet sie",
                           folders.front());
        }
        for (const std::wstring& folder : folders)
        {
            finish(folder);
        }
        return FindReceived(m_directory);
    }

    static void finish(const std::wstring& folder)
    {
        const std::optional<SOutcome> outcome = FinishDecision(folder);
        if (outcome)
        {
            report(*outcome);
        }
    }

    static void report(const SOutcome& outcome)
    {
        if (!outcome.changed.empty())
        {
            CTerminal::Get().WriteError(
                LbFormat(L"Warnung: Unterbrochene Entscheidung zurückgenommen: Datei %s hat sich seitdem geändert\n",
                         outcome.changed));
            return;
        }
        print(LbFormat(L"Unterbrochene Entscheidung vollendet: %s\n", FormatFileCount(outcome.done.size())));
        if (outcome.left > 0)
        {
            CTerminal::Get().WriteError(LbFormat(L"Warnung: seit dieser Entscheidung geändert und noch offen: %s\n",
                                                 FormatFileCount(outcome.left)));
        }
    }

    std::vector<SChange> findOfFile() const
    {
        std::vector<SChange> changes = FindChangesOf(m_changes, m_directory, m_file);
        if (changes.empty())
        {
            throw LbFormat(L"'%s' ist keine Datei mit einer Änderung", m_file);
        }
        return changes;
    }

    void list(const std::vector<SChange>& changes) const
    {
        std::set<std::wstring_view> files;
        for (const SChange& change : changes)
        {
            for (const SReceivedFile& file : change.files)
            {
                files.insert(file.reference);
            }
            CTerminal::Get().WriteColoured(m_shows
                                               ? FormatHeading(change, m_directory, m_style) +
                                                     ShowDifference(change, change.files.front(), m_directory, m_style)
                                               : DescribeChange(change, m_directory, m_style));
        }
        print(LbFormat(L"Änderungen: %u, Dateien: %u\n", changes.size(), files.size()));
    }

    void listFiles() const
    {
        if (!m_options.filesOf.empty())
        {
            print(FormatFiles(FindChange(m_changes, m_options.filesOf), m_directory, L""));
            return;
        }
        for (const SChange& change : m_changes)
        {
            print(FormatFiles(change, m_directory, change.id + L"  "));
        }
    }

    /// Tells the user if an option chooses no change.
    void reportMissing(const SReviewChoice& choice) const
    {
        if (!m_options.accept.empty() && choice.accepted.empty())
        {
            print(L"Nichts zu übernehmen\n");
        }
        if (!m_options.reject.empty() && choice.rejected.empty())
        {
            print(L"Nichts zu verwerfen\n");
        }
    }

    int decide() const
    {
        // This may throw, so it comes before the first change to a file.
        const SReviewChoice choice = ChooseChanges(m_changes, m_options);
        reportMissing(choice);
        for (const SChange& change : choice.accepted)
        {
            RequireAcceptable(change, m_options.acceptEmpty);
        }
        CReviewDecisions decisions(m_directory, findUndecided(choice));
        for (const SChange& change : choice.accepted)
        {
            decisions.Carry(EDecision::Accept, change);
        }
        for (const SChange& change : choice.rejected)
        {
            decisions.Carry(EDecision::Reject, change);
        }
        return LuTestSuiteHost::c_Succeeded;
    }

    /// The changes that the options do not name. Files named by path need no attention here: ChooseChanges has removed
    /// them from all other chosen changes.
    std::vector<SChange> findUndecided(const SReviewChoice& choice) const
    {
        std::vector<SChange> undecided = m_changes;
        for (const std::vector<SChange>* const named : {&choice.accepted, &choice.rejected})
        {
            for (const SChange& change : *named)
            {
                // A chosen change for a file named by path has no parts. Its checksum is that of one of the file's
                // changes, which must stay in the list.
                std::erase_if(undecided, [&change](const SChange& other) {
                    return !change.parts.empty() && other.checksum == change.checksum;
                });
            }
        }
        return undecided;
    }

    int ask() const
    {
        CReviewDecisions decisions(m_directory, m_changes);
        CReviewDialog(m_directory, m_style, m_options.acceptEmpty, std::cin).Ask(m_changes, decisions);
        return LuTestSuiteHost::c_Succeeded;
    }

    const SReviewOptions& m_options;
    std::wstring m_directory;
    bool m_shows;        ///< shows differences
    std::wstring m_file; ///< the only reference whose changes are shown; empty: all references
    SDiffStyle m_style;
    bool m_isBuildServer = isBuildServer();
    bool m_mayAsk = false;
    std::vector<SChange> m_changes;
};

} // namespace

int Execute(const SReviewOptions& options)
{
    if (options.directory.empty())
    {
        throw std::wstring(L"Der Befehl 'review' braucht einen Ordner");
    }
    return CReview(options).Run();
}

} // namespace Runner
