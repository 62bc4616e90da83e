#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/explain/Explanation.h"
#include "trace/format/SettingsText.h"

namespace stmdcm {

class History;

/// A part of a file that may state something, with what it says.
struct StatingSection {
    std::string name;                       ///< of the section; empty for a settings file
    Place place;                            ///< of its header
    std::string text;                       ///< the payload, as far as the file holds it
    Standing standing = Standing::InForce;  ///< of what it says, where nothing else in it counts instead
    std::string why;                        ///< it is read, when, or why not

    bool IsRead() const { return standing == Standing::InForce; }
};

/// Everything of a file that may state something.
struct StatingFile {
    explicit StatingFile(const std::string& path);

    /// The sections of that name, the one that is read first.
    std::vector<StatingSection> Of(const std::string& name) const;

    Reading reading;
    std::vector<StatingSection> sections;  ///< a settings file is one that is called kSettingsFile
    Zu::Wep::Trace::LineLimits limits;     ///< of its settings text
    std::string settings;                  ///< the name of the sections that hold settings text

    static constexpr char kSettingsFile[] = "";

  private:
    void Add(const Container& capture, const Section& section, std::uint64_t next);
    void TellNumbers(const History& history);
};

}  // namespace stmdcm
