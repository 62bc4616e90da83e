#pragma once

#include <string>
#include <vector>

#include "stmdcm/images/PathMapping.h"
#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

class FileSearch;

/// What is known of one program image.
struct ImageAnswer {
    enum class How { Recorded, Mapped, Searched };

    ObjectFile recorded;                  ///< with what is at its place now
    ObjectFile found;                     ///< the one to use, which may be missing or changed, too
    How how = How::Recorded;              ///< where it was found
    std::vector<std::string> candidates;  ///< several that were found, none of which was chosen

    const char* HowName() const;
    bool IsPresent() const { return found.DiskState() == ObjectFile::State::Present; }
};

/// Finds the program images of captures: by mappings, then by searching for the file's name. Of several files of that
/// name the one with the recorded modification time is taken; where there is no such, or more than one, nobody guesses.
class ImageFinder {
  public:
    ImageFinder(std::vector<PathMapping> mappings, std::vector<std::string> directories)
        : m_mappings(std::move(mappings)), m_directories(std::move(directories)) {}

    /// Throws Failure for a directory that can't be searched.
    std::vector<ImageAnswer> Find(const std::vector<ObjectFile>& files);

    /// Sentences, where not all of the last ones were found: what was not searched.
    const std::vector<std::string>& Doubts() const { return m_doubts; }

  private:
    ImageAnswer Map(const ObjectFile& file) const;

    std::vector<PathMapping> m_mappings;
    std::vector<std::string> m_directories;
    std::vector<std::string> m_doubts;
};

}  // namespace stmdcm
