#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/capture/Container.h"
#include "tool/cli/Command.h"

namespace stmdcm {

/// One section's payload, byte for byte.
class Extract final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    const Section& Choose(const Container& container) const;
    const Section& ChooseAtOffset(const Container& container) const;
    [[noreturn]] void FailToFind(const Container& container) const;
    void Copy(const Container& container, const Section& section) const;
    void CopyTo(ByteSink& sink, const Container& container, const Section& section) const;

    std::string m_file;
    std::string m_name;
    std::optional<std::uint32_t> m_version;
    std::optional<std::uint64_t> m_offset;
    std::string m_output;
    bool m_force = false;
    bool m_progress = false;
};

}  // namespace stmdcm
