#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace cli {

/// The look of the help: one option a paragraph, its value named beside it, descriptions wrapped to the width
/// of a terminal.
class HelpFormatter : public CLI::Formatter {
public:
  std::string make_option(const CLI::Option* option, bool isPositional) const override;
  std::string make_option_usage(const CLI::Option* option) const override;
};

} // namespace cli
