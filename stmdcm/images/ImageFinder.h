#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stmdcm/images/FileSearch.h"
#include "stmdcm/images/PathMapping.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

/// What is known of one program image.
struct ImageAnswer {
    enum class How { Recorded, Mapped, Searched };

    ObjectFile recorded;                  ///< with what is at its place now
    ObjectFile found;                     ///< the one to use, which may be missing or changed, too
    How how = How::Recorded;              ///< where it was found
    std::vector<std::string> candidates;  ///< several that were found, none of which was chosen
    std::string unread = {};              ///< why it can't be read, though it is there: a clause

    const char* HowName() const;
    bool IsPresent() const { return found.IsPresent() && unread.empty(); }
};

/// Finds the program images of captures, each directory being searched once for all of them: by mappings, then by
/// searching. One with a pin is searched by that, whatever the file is called; of several that are it the first by name
/// is taken. One without a pin is searched by the file's name: of several the one with the recorded modification time
/// is taken; where there is no such, or more than one, nobody guesses.
class ImageFinder {
  public:
    ImageFinder(std::vector<PathMapping> mappings, std::vector<std::string> directories,
                ImageExaminer::OnHashed onHashed = nullptr)
        : m_mappings(std::move(mappings)), m_directories(std::move(directories)), m_examiner(std::move(onHashed)) {}

    /// Throws Failure for a directory that can't be searched.
    std::vector<ImageAnswer> Find(const std::vector<ObjectFile>& files);

    /// Sentences about the last ones: what could not be held against its pin, and where not all were found what was not
    /// searched.
    const std::vector<std::string>& Doubts() const { return m_doubts; }

    /// Which has asked the files about their pins.
    ImageExaminer& Examiner() { return m_examiner; }

  private:
    ImageAnswer Map(ObjectFile file);
    void HoldAgainstPin(ObjectFile& file);

    std::vector<PathMapping> m_mappings;
    std::vector<std::string> m_directories;
    std::optional<FileSearch> m_search;  ///< nothing before something was looked for
    std::vector<std::string> m_doubts;
    ImageExaminer m_examiner;
};

}  // namespace stmdcm
