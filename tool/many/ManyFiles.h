#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tool/many/FileWork.h"

namespace stmdcm {

class FileNames;

/// The files that a command works on one by one: what the command line says about them, and the loop. Each is as if
/// the command were run for it alone; the output comes in the order of the files.
class ManyFiles {
  public:
    enum class Purpose { Read, Change };

    /// Gets what the work on a file printed and what became of it, in the order of the files. May throw Failure, which
    /// ends the run.
    using TakeOutcome = std::function<void(const std::string& file, const FileOutcome& outcome)>;

    explicit ManyFiles(Purpose purpose) : m_purpose(purpose) {}

    /// Adds the positional of any number of files. `name` is what a usage error calls it.
    CLI::Option* DeclareFiles(CLI::App& app, const char* name, const char* description);
    /// Adds --files-from and what goes with it.
    void DeclareOptions(CLI::App& app);

    /// Takes the words that are no files out of those that stand with them, in their order: `isOther(word, index)`
    /// says which. What is told about the positional of these is for the help alone, since the files take every word.
    std::vector<std::string> TakeOthers(const std::function<bool(const std::string& word, std::size_t index)>& isOther);
    const std::vector<std::string>& Named() const { return m_named; }
    std::size_t CountNamed() const { return m_named.size(); }
    bool HasList() const { return !m_list.empty(); }
    /// Whether Run forks off other processes, which do the work.
    bool IsForking() const { return IsSeveral() && Jobs() > 1; }
    bool IsAny() const { return !m_named.empty() || HasList(); }
    /// Throws CLI::RequiredError where there is none; for the end of the parsing.
    void RequireAny(const std::string& name) const;

    /// What stands, as text, for one of many of which nothing can be told. Borrows it.
    void SetTextOfUnknown(const char* text) { m_ofUnknown = text; }
    /// For work that was to change, and turns out to read alone.
    void SetPurpose(Purpose purpose) { m_purpose = purpose; }

    /// Does the work on each, in several processes where that was asked for. Of a single one, which is no list, as if
    /// there were no others: what the work throws is thrown. Of many what fails is told, and the next one comes; gives
    /// the status that counts most, and at the end tells what became of them.
    /// With a `take` the output goes there, of a single file too, and what fails is told; what keeps the run from its
    /// end is thrown then.
    ExitStatus Run(const Context& context, const FileWork& work, const TakeOutcome& take = nullptr) const;

  private:
    class Round;

    bool IsSeveral() const { return m_named.size() != 1 || HasList(); }
    std::size_t Jobs() const;
    ExitStatus RunEach(const Context& context, const FileWork& work, const TakeOutcome& take) const;
    void RunHere(FileNames& names, Round& round, const FileWork& work) const;
    void RunInWorkers(FileNames& names, Round& round, const FileWork& work) const;

    Purpose m_purpose;
    std::vector<std::string> m_named;
    std::string m_list;
    bool m_isZeroEnded = false;
    std::size_t m_jobs = 1;
    bool m_progress = false;
    const char* m_ofUnknown = "";
};

}  // namespace stmdcm
