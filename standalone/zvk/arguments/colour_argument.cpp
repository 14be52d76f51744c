#include "standalone/zvk/arguments/colour_argument.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>

#include "standalone/zvk/arguments/numbers.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {

std::optional<ColourArgument> ReadColour(std::string_view text) {
  constexpr size_t kPlain = 7, kWithAlpha = 9;
  if ((text.size() != kPlain && text.size() != kWithAlpha) || text[0] != '#') return std::nullopt;
  const std::optional<uint32_t> number = ReadNumber<uint32_t>(text.substr(1), 16);
  if (!number) return std::nullopt;
  if (text.size() == kPlain) return ColourArgument{*number, std::nullopt};
  return ColourArgument{*number >> 8, static_cast<uint8_t>(*number)};
}

ColourArgument ParseColour(std::string_view option, std::string_view text, bool mayHaveAlpha) {
  const std::optional<ColourArgument> colour = ReadColour(text);
  if (colour && (mayHaveAlpha || !colour->alpha)) return *colour;
  throw UsageError(std::string(option) + " '" + std::string(text) + "' is not understood; write " +
                   (mayHaveAlpha ? "#RRGGBB or #RRGGBBAA" : "#RRGGBB") + ", as in #FF8000");
}

std::string ColourText(uint32_t rgb) {
  std::array<char, 8> digits = {};
  std::snprintf(digits.data(), digits.size(), "#%06X", rgb & 0xFFFFFF);
  return digits.data();
}

void AddBackgroundOption(CLI::App &command, uint32_t &rgb) {
  command
      .add_option_function<std::string>(
          "--background", [&rgb](const std::string &text) { rgb = ParseColour("--background", text).rgb; },
          "The colour that transparent pixels are laid on where the result\ncannot be transparent [default: " +
              ColourText(rgb) + "]")
      ->type_name("#RRGGBB");
}

}  // namespace standalone
