#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Zu::Wep::Trace {

enum class UsecaseKind : std::size_t;
class BlockLines;
class BlockWriteReporter;

/// Reads one line as the blocks' readers do, into a buffer of `size` + 1 bytes: without what is blank at its end; a
/// longer one is cut to `size` characters. False for a blank line, with `dst` empty, and at the end of the text, with
/// `dst` as it is, as on a stream that has failed.
bool myfgets(char* dst, int size, std::istringstream& in);

/// The fields of a kind's block, a table known to the kind's source alone.
template <class Info>
struct UsecaseFields;

/// What the use cases of all kinds share: their block text (docs/use-case-blocks.md). `Info` is the kind's class,
/// `Interface` what hosts see of it. The bodies are in the library (UsecaseInfoBody.h).
template <class Info, class Interface>
class UsecaseInfoBase : public Interface {
  public:
    /// Appends the block. Returns 0.
    int DoExport(std::string& out) const;
    /// Reads one block into this object, which the caller has reset. `line` is the line read last: "{" means that the
    /// block is already open. Returns 0 done, 1 no block of this kind here, -1 bad block.
    int DoImport(const char* line, std::istringstream& in);
    /// Handles one key line. Returns 0 handled or ignored, 1 no "=" in the line, -1 line too long.
    int ProccessLine(const char* line, std::istringstream& in);
    /// Reads up to and including the next opening line. Returns 0 found, 1 not found.
    static int SearchForNextUsecase(const char* line, std::istringstream& in);

    /// `DoExport` and `DoImport` to and from lines, telling a reporter what they meet; of a kind that holds nothing but
    /// fields and must name its type in the first line.
    void Export(std::string& out, BlockWriteReporter& reporter) const;
    int Import(std::string_view line, BlockLines& in);

    /// The keys that a block sets, in the order of its lines; counters and formulas apart.
    static std::vector<std::string_view> Keys();

  protected:
    UsecaseInfoBase() = default;
    UsecaseInfoBase(const UsecaseInfoBase&) = default;
    UsecaseInfoBase& operator=(const UsecaseInfoBase&) = default;
    ~UsecaseInfoBase() = default;  // NOLINT(modernize-use-override): not every interface has a virtual one

  private:
    Info& Self() { return static_cast<Info&>(*this); }
    const Info& Self() const { return static_cast<const Info&>(*this); }
};

}  // namespace Zu::Wep::Trace
