#pragma once

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace stmdcm {

enum class Severity { Note, Warning, Error };

const char* SeverityName(Severity severity);

/// What a command that mends a finding asks of the file, each with all before it.
enum class Needs {
    Nothing,
    WholeCapture,  ///< the row of sections leads to the end of the file
    Device,        ///< and there is a device identification
    Configuration  ///< and a configuration; of a settings file that alone
};

struct NextStep {
    const char* command;
    Needs needs;
};

inline constexpr NextStep kRecover{"recover", Needs::Nothing};
inline constexpr NextStep kSplit{"recover --split", Needs::WholeCapture};  ///< what is missing lies in another section
inline constexpr NextStep kRestore{"restore", Needs::WholeCapture};
inline constexpr NextStep kApply{"apply", Needs::Device};
inline constexpr NextStep kMap{"objects --map", Needs::Configuration};
inline constexpr NextStep kSearch{"objects --search", Needs::Configuration};
inline constexpr NextStep kSet{"set", Needs::Configuration};

/// One kind of finding. Identifiers are stable: scripts match them.
struct FindingKind {
    const char* id;
    Severity severity;
    const char* meaning;               ///< one sentence, also in docs/check.md
    const NextStep* next = nullptr;    ///< what mends it, nullptr for nothing
    const NextStep* orElse = nullptr;  ///< where that does not work
};

/// Every kind that `check` reports: F file, C container, T text, D text of DEVID, P value of a property, U use case, O
/// object file, M what another machine would lack (CheckPortability).
/// Error: data is lost or the load fails. Warning: doubtful. Note: worth knowing.
inline constexpr FindingKind kFindingKinds[] = {
    {"F-UNREADABLE", Severity::Error, "The file can't be opened or read."},
    {"F-EMPTY", Severity::Error, "The file is empty."},
    {"F-NO-CAPTURE", Severity::Error, "A capture does not begin with \"TDF2\".", &kRecover},
    {"F-EXTENSION", Severity::Error, "The name of a capture does not end in \".tdf\"."},
    {"F-TOO-LARGE", Severity::Error, "A settings file is longer than 128 MiB, and what is behind is not read."},

    {"C-OVER-4GIB", Severity::Error, "The capture is longer than 4 GiB - 1, which its offsets can't express."},
    {"C-TORN-HEADER", Severity::Error, "The file ends within the header or name of a section.", &kRecover},
    {"C-TORN-PAYLOAD", Severity::Error, "A section reaches past the end of the file.", &kRecover},
    {"C-TRAILING-BYTES", Severity::Warning, "One to three bytes at the end are no header.", &kRecover},
    {"C-LENGTH-ZERO", Severity::Error, "A section states the length 0.", &kRecover},
    {"C-LENGTH-SHORT", Severity::Error, "A section states a length that does not cover its own header and name.",
     &kRecover},
    {"C-LENGTH-LIMIT", Severity::Error, "A section is longer than 128 MiB.", &kRecover},
    {"C-NAME-LIMIT", Severity::Error, "A section's name is longer than 4095 bytes.", &kRecover},
    {"C-PAST-4GIB", Severity::Error, "A section ends past 4 GiB - 1."},
    {"C-UNREACHABLE", Severity::Error, "A section stands behind the place where a search ends.", &kRecover},
    {"C-NAME-ODD", Severity::Warning, "A section's name has bytes that are not printable ASCII."},
    {"C-SHADOWED", Severity::Warning, "A section DEVID has an older one."},
    {"C-LATER-SAVES", Severity::Warning, "Later saves do not count, because an earlier one does.", &kRestore},
    {"C-UNFINISHED", Severity::Warning, "A save was interrupted, and a reader passes over what there is of it."},
    {"C-NO-PAIR", Severity::Warning, "One of the two sections of a save is there without the other."},
    {"C-OTHER-VERSION", Severity::Warning, "A section of the configuration has a version other than 1."},
    {"C-REPEATED", Severity::Note, "Another section has an older one of its name and version."},
    {"C-RETIRED", Severity::Note, "A section is out of use; it is kept as history."},
    {"C-TOO-MANY", Severity::Warning, "There are more than 1,000,000 sections; the rest was not looked at."},
    {"C-NO-COMMON", Severity::Error, "There is no section DCM_COMMON of version 1 that a search finds.", &kSplit,
     &kApply},
    {"C-NO-DEVID", Severity::Error, "There is no section DEVID of version 1 that a search finds.", &kSplit},
    {"C-NO-STM", Severity::Error, "There is no section STMDECODERINFO of version 1 that a search finds.", &kSplit,
     &kApply},
    {"C-EMPTY-DEVID", Severity::Error, "The section DEVID that a search finds is empty."},
    {"C-EMPTY-STM", Severity::Error, "The section STMDECODERINFO that a search finds is empty.", &kApply},

    {"T-UNKNOWN-KEY", Severity::Error, "A line sets something that is no property."},
    {"T-NO-VALUE", Severity::Error, "A line among the properties has no value."},
    {"T-BLANK-LINE", Severity::Warning, "A blank line ends the properties, and text follows."},
    {"T-NOT-READ", Severity::Error,
     "Lines behind the end of the properties are read neither as properties nor as blocks."},
    {"T-NOTHING", Severity::Error, "A settings text sets no property and holds no use case."},
    {"T-FINAL-LINE-FEED", Severity::Note, "A settings file without blocks of lines ends with a line feed."},
    {"T-NO-EQUALS", Severity::Note, "A property and its value have no \"=\" between them."},
    {"T-EXTRA-FIELD", Severity::Warning, "A line has more than a property and its value."},
    {"T-DUPLICATE", Severity::Warning, "A property is set twice in one text."},
    {"T-NOT-SET", Severity::Note, "A text does not set all properties."},
    {"T-NOT-A-NUMBER", Severity::Error, "A value that should be a number is none."},
    {"T-PARTLY-NUMBER", Severity::Warning, "A value only begins with a number, or has a fraction that is dropped."},
    {"T-NUMBER-WRAPPED", Severity::Error, "A number does not fit 32 bits."},
    {"T-NUMBER-SIGN", Severity::Note, "A number fits 32 bits only without a sign, and reads as a negative one."},
    {"T-NOT-0-OR-1", Severity::Warning, "A boolean is neither 0 nor 1."},
    {"T-LINE-CUT", Severity::Error,
     "A line of a settings file, without blanks at its end, is over 999 characters, in blocks 126."},
    {"T-ZERO-BYTE", Severity::Error, "A line holds a zero byte."},
    {"T-PACKED-CR", Severity::Warning, "A one-line block ends in CR LF."},
    {"T-PACKED-END", Severity::Error, "A one-line block does not end in \"}\"."},
    {"T-PACKED-REST", Severity::Error, "Text stands behind one-line blocks."},
    {"T-MIXED-BLOCKS", Severity::Error, "One-line blocks and blocks of lines are mixed."},

    {"D-NO-VALUE", Severity::Note, "A line of DEVID has a key and no value."},
    {"D-OVERRIDDEN", Severity::Note, "DEVID sets a property that STMDECODERINFO sets to another value."},

    {"P-CLOCK", Severity::Warning, "A clock is 0, negative, or stated with a rate that does not fit 32 bits.", &kSet},
    {"P-CLOCK-DEFAULT", Severity::Note, "A clock is at its default of 1 Hz.", &kSet},
    {"P-PINS", Severity::Warning, "No trace port has that number of pins.", &kSet},
    {"P-STP-VERSION", Severity::Warning, "There is no such version of STP.", &kSet},
    {"P-ATB-ID", Severity::Warning, "No trace source has that ATB id.", &kSet},
    {"P-HEAD-POINTER", Severity::Note, "A head pointer is set without the flag that it is present."},

    {"U-UNCLOSED", Severity::Error, "A block is not closed before the next one or the end of the text."},
    {"U-BLANK-IN-BLOCK", Severity::Error, "A blank line stands in a block."},
    {"U-NO-EQUALS", Severity::Error, "A line of a block has no \"=\"."},
    {"U-LINE-LENGTH", Severity::Error, "A line of a block is longer than 255 characters."},
    {"U-BLANK-LINE", Severity::Error, "A blank line ends the reading before the last block."},
    {"U-NOT-READ", Severity::Error, "A use case stands where its reader does not find it."},
    {"U-OUTSIDE", Severity::Error, "Lines up to a \"}\" stand in no block."},
    {"U-UNKNOWN-TYPE", Severity::Error, "The first line of a block names no type that there is."},
    {"U-LATE-TYPE", Severity::Error, "A type line is not the first of its block."},
    {"U-OPENER-TEXT", Severity::Error, "Text stands behind an opening brace."},
    {"U-EMPTY-BLOCK", Severity::Warning, "A block is empty, and so a use case of each kind that reads it."},
    {"U-STRAY-LINE", Severity::Warning, "A line stands between the blocks."},
    {"U-UNKNOWN-KEY", Severity::Warning, "A block has a key that its kind does not know."},
    {"U-NOT-SET", Severity::Note, "A block or formula does not set all fields of its kind."},
    {"U-KEY-TWICE", Severity::Warning, "A key is set twice in one block or formula."},
    {"U-COUNTER-TWICE", Severity::Note, "Two counters of a use case have one number."},
    {"U-CUT-ON-SAVE", Severity::Warning, "A value is too long for a written line of 127 bytes."},
    {"U-DUPLICATE", Severity::Warning, "Two use cases of one kind have one job and module, or one source."},
    {"U-IDENTICAL", Severity::Warning, "Two use cases of one kind are the same in every field."},
    {"U-NO-COUNTER", Severity::Note, "An SC use case has no counter."},
    {"U-SOURCE", Severity::Warning, "The source of a PMI/CMI use case is not PMI, CMI0 or CMI1."},
    {"U-FORMULA-OPEN", Severity::Error, "A formula is not closed by \"$/\"."},
    {"U-FORMULA-LINE", Severity::Warning, "A line of a formula has no \"=\"."},
    {"U-FORMULA-EMPTY", Severity::Warning, "\"/$\" stands before a blank line or the end of the text."},
    {"U-FORMULA-TAG", Severity::Warning, "A formula's tag number is guessed from text that does not state one."},

    {"O-TRUNCATED", Severity::Error, "An object file's entry runs past the payload."},
    {"O-MISSING", Severity::Warning, "An object file can't be opened on this machine.", &kMap},
    {"O-CHANGED", Severity::Warning, "An object file has another modification time than was recorded.", &kMap},
    {"O-NO-IMAGE", Severity::Warning, "What is in the place of an object file is no regular file.", &kMap},
    {"O-NOT-CAPTURED", Severity::Warning, "An object file is not the image that was captured, as its pin tells.",
     &kSearch},
    {"O-NOT-COMPARED", Severity::Warning, "An object file can't be held against its pin."},
    {"O-PINS-TORN", Severity::Warning, "The pins of the object files end within one."},
    {"O-PINS-VERSION", Severity::Warning, "A section of pins has a version that stmdcm does not know."},
    {"O-EMPTY-PATH", Severity::Warning, "An object file is recorded without a path."},
    {"O-DUPLICATE", Severity::Warning, "Two object files are recorded under one name."},

    {"M-PATH", Severity::Warning, "An object file is recorded under an absolute path."},
    {"M-NOT-PINNED", Severity::Warning, "Nothing but path and time tells which file an object file is."},
    {"M-SETTINGS", Severity::Warning, "Properties are left to the settings file of the machine."},
};

/// Whether it is about what a file says, not about the file that holds it or its sections.
constexpr bool IsAboutText(const FindingKind& kind) { return kind.id[0] != 'C' && kind.id[0] != 'F'; }

/// The kind with that identifier; one that is not in the table does not compile.
consteval const FindingKind& Kind(std::string_view id) {
    const auto* found = std::find_if(std::begin(kFindingKinds), std::end(kFindingKinds),
                                     [id](const FindingKind& kind) { return id == kind.id; });
    if (found == std::end(kFindingKinds)) {
        throw std::logic_error("no such kind of finding");
    }
    return *found;
}

}  // namespace stmdcm
