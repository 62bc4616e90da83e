#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/reading/Configuration.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Settings.h"

namespace stmdcm {

class Container;

enum class ConfigurationKind { Capture, Settings };

/// "capture", "settings".
const char* KindName(ConfigurationKind kind);

/// The device identification of a capture that no host has made: one line, of no property (docs/settings-text.md).
inline constexpr std::string_view kNoDeviceText = "written_by=stmdcm\n";

/// Stands for standard input and output where a file is named, and is the path of what was read from there.
inline constexpr char kStandardStream[] = "-";

/// By the name alone, as hosts take it: a capture is called `.tdf`, in any case.
ConfigurationKind KindOfName(const std::string& path);

/// Throws Failure of a request for the name of a capture to be written that no host takes.
void RequireCaptureName(const std::string& path);

/// By content and name: a capture begins with its identifier and is called `.tdf`, all else is settings text. Throws
/// Failure where the two contradict each other, or the file can be neither.
ConfigurationKind KindOf(const std::string& path);

/// What a file holds, and what of it is not read: the answer of every command to both questions.
struct Reading {
    std::string path;
    std::optional<ConfigurationKind> kind;  ///< nothing for a file that can't be read
    Findings findings;

    bool loads = false;           ///< the result that a host gets; for a settings file that is advice
    bool isLoaded = false;        ///< any host holds what follows, after loading it
    bool hasSettings = false;     ///< properties and use cases were read, perhaps of a capture that hosts can't load
    bool hasObjectFiles = false;  ///< never of a settings file
    bool hasDevice = false;       ///< a capture has a device identification, which is not empty
    bool hasDeviceText = false;   ///< and a host has written it
    std::vector<std::uint64_t> readSections;  ///< the offsets of those sections of a capture that are read
    std::unique_ptr<Settings> settings = std::make_unique<Settings>();
    std::size_t pins = 0;         ///< of program images in a capture
    Configuration configuration;  ///< the same and the object files, as plain values

    /// Sentences, without the path: the findings that tell what of the configuration is not read.
    std::vector<std::string> Losses() const;
    /// Those, and why no host loads it.
    std::vector<std::string> Doubts() const;
    /// The doubts, each behind the path.
    std::vector<std::string> Sentences() const;
    /// Throws Failure with the doubts unless a host can load it.
    void RequireLoaded() const;
    /// Throws Failure with the doubts unless properties and use cases were read.
    void RequireSettings() const;
};

/// Whether the finding tells of something that the file says and that is not in what is read.
bool IsLoss(const Reading& reading, const Finding& finding);

/// Reads a capture or a settings file. Throws Failure, with the file's name, where KindOf does or the file can't be
/// read.
Reading Read(const std::string& path);

/// The same for an open capture.
Reading Read(const Container& capture);

/// Throws Failure, with what is not read, for a file of which parts are not, unless `force`.
void RequireWhole(const Reading& source, bool force);

/// Sentences: where the row of a capture's sections is broken or over a limit, and what stands behind that.
std::vector<std::string> RowDoubts(const Container& capture);

/// What of the payload of a configuration section, DCM_COMMON or STMDECODERINFO, is not read once the section is in
/// force: in sentences, as `Reading::Losses` has them. `place` names the section and its offset.
std::vector<std::string> PayloadLosses(const Place& place, const std::string& payload);

/// Reads any file, taken for what its first bytes and its name say, or as `forced`. A file that can't be read is a
/// finding. An `examiner` holds the program images against their pins.
Reading CheckFile(const std::string& path, std::optional<ConfigurationKind> forced = {},
                  ImageExaminer* examiner = nullptr);

}  // namespace stmdcm
