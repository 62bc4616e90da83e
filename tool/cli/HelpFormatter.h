#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace stmdcm {

/// The text that --help prints, for the whole program and for a command.
class HelpFormatter final : public CLI::FormatterBase {
  public:
    static constexpr std::size_t kWidth = 80;

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace stmdcm
