#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace stmdcm {

/// Why something was not done: a sentence for the user that names the file.
class Failure : public std::runtime_error {
  public:
    enum class Kind {
        Work,     ///< it could not be done
        Request,  ///< what was asked for makes no sense
        Output    ///< the program's own output can't be written
    };

    /// One that no single file is the reason of.
    explicit Failure(const std::string& sentence, Kind kind = Kind::Work)
        : std::runtime_error(sentence), m_cause(sentence), m_kind(kind) {}
    /// The sentence is "file: cause".
    Failure(const std::string& file, const std::string& cause, Kind kind = Kind::Work)
        : std::runtime_error(file + ": " + cause), m_file(file), m_cause(cause), m_kind(kind) {}

    /// Adds where in the file it is, as an offset in bytes.
    Failure At(std::optional<std::uint64_t> offset) const {
        Failure copy = *this;
        copy.m_offset = offset;
        return copy;
    }

    /// The same of another file, or in other words.
    Failure Renamed(const std::string& file, const std::string& cause) const {
        Failure copy = file.empty() ? Failure(cause, m_kind) : Failure(file, cause, m_kind);
        return copy.At(m_offset);
    }

    const std::string& File() const { return m_file; }  ///< as it was named; empty: none
    const std::string& Cause() const { return m_cause; }
    std::optional<std::uint64_t> Offset() const { return m_offset; }
    Kind Reason() const { return m_kind; }

  private:
    std::string m_file;
    std::string m_cause;
    std::optional<std::uint64_t> m_offset;
    Kind m_kind;
};

}  // namespace stmdcm
