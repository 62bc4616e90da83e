#pragma once

#include <string>
#include <vector>

#include "stmdcm/change/AppliedParts.h"

namespace stmdcm {

/// The configuration of one file, to be put into captures.
class AppliedSource {
  public:
    struct Wanted {
        std::vector<std::string> only = {};    ///< PartNames; none: all that the source names
        std::vector<std::string> except = {};  ///< PartNames
        bool replace = false;                  ///< use cases go for which there are none in the source; images stay
        bool force = false;                    ///< go on without what of the source is not read
    };

    /// Reads it. Throws Failure, also where there is nothing in it of what is wanted.
    AppliedSource(const std::string& path, const Wanted& wanted);
    AppliedSource(const AppliedSource&) = delete;
    AppliedSource& operator=(const AppliedSource&) = delete;

    /// Sentences: what of it is not read.
    const std::vector<std::string>& Doubts() const { return m_doubts; }
    /// In place; a capture without a configuration gets its first one. Throws Failure.
    ChangeResult ApplyTo(const std::string& capture, ChangeMode mode = ChangeMode::Write) const;

  private:
    ConfigurationChange ChangeFor(const Wanted& wanted) const;

    Reading m_source;
    std::vector<std::string> m_doubts;
    ConfigurationChange m_change;  ///< borrows the source
};

}  // namespace stmdcm
