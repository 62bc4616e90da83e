#pragma once

#include <optional>
#include <string>

#include "stmdcm/reading/Reading.h"
#include "tool/output/GuardedHome.h"

namespace stmdcm {

/// A file that is read, or standard input where it is called "-": that is copied to where it can be read at any place.
class InputFile {
  public:
    /// Throws Failure where standard input can't be read or copied.
    explicit InputFile(const std::string& name);

    /// Gives `read(path)`, in which, as in a Failure, the file has the name that the user gave it.
    template <class ReadIt>
    Reading Read(ReadIt read) const {
        try {
            Reading reading = read(m_path);
            reading.path = m_name;
            return reading;
        } catch (const Failure& failure) {
            throw failure.File() == m_path ? failure.Renamed(m_name, failure.Cause()) : failure;
        }
    }
    Reading Read() const {
        return Read([](const std::string& path) { return stmdcm::Read(path); });
    }

  private:
    std::string m_name;
    std::optional<GuardedHome> m_home;
    std::string m_path;
};

}  // namespace stmdcm
