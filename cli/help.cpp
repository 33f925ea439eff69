#include "cli/help.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <utility>

namespace Orvel::Tool {

namespace {

class ExplainingFormatter : public CLI::Formatter {
  public:
    explicit ExplainingFormatter(std::string text) : text_(std::move(text)) {}

    std::string make_description(const CLI::App* /*command*/) const override {
        return text_ + '\n';
    }

  private:
    std::string text_;
};

}  // namespace

void explain(CLI::App& command, std::string text) {
    command.formatter(std::make_shared<ExplainingFormatter>(std::move(text)));
}

}  // namespace Orvel::Tool
