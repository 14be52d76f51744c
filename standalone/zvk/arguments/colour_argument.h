// Colours on a command line: #rrggbb, and #rrggbbaa where alpha is of use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace standalone {

constexpr uint8_t kClear = 0;
constexpr uint8_t kOpaque = 255;

struct ColourArgument {
  uint32_t rgb;                  // 0xRRGGBB
  std::optional<uint8_t> alpha;  // kClear to kOpaque, if it was written

  bool operator==(const ColourArgument &) const = default;
};

// Reads a colour in hexadecimal digits of any case; empty for anything else.
std::optional<ColourArgument> ReadColour(std::string_view text);

// The same for the value of an option: throws UsageError that names the option, also for alpha where there is to be
// none.
ColourArgument ParseColour(std::string_view option, std::string_view text, bool mayHaveAlpha = false);

// "#RRGGBB", for people.
std::string ColourText(uint32_t rgb);

constexpr uint32_t kWhite = 0xFFFFFF;

// Adds --background, the colour that transparent pixels are laid on where there is no place for their alpha. `rgb` must
// live as long as the command.
void AddBackgroundOption(CLI::App &command, uint32_t &rgb);

}  // namespace standalone
