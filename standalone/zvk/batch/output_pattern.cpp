#include "standalone/zvk/batch/output_pattern.h"

#include <filesystem>
#include <string_view>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

std::string PartOf(const std::filesystem::path &input, std::string_view word, const std::string &pattern) {
  if (word == "name") return input.stem().string();
  if (word == "file") return input.filename().string();
  if (word == "extension") {
    const std::string extension = input.extension().string();
    return extension.empty() ? "" : extension.substr(1);
  }
  if (word == "folder") return input.has_parent_path() ? input.parent_path().string() : ".";
  throw UsageError("there is no {" + std::string(word) + "} for '" + pattern + "'; write " + kOutputPlaceholders);
}

}  // namespace

const char kOutputPlaceholders[] = "{name}, {extension}, {file} or {folder}, and {{ for a brace";

std::string FillOutputPattern(const std::string &pattern, const std::string &input) {
  std::string filled;
  for (size_t i = 0; i < pattern.size();) {
    const size_t brace = pattern.find('{', i);
    filled += pattern.substr(i, brace - i);
    if (brace == std::string::npos) break;
    if (pattern.compare(brace, 2, "{{") == 0) {
      filled += '{';
      i = brace + 2;
      continue;
    }
    const size_t end = pattern.find('}', brace);
    if (end == std::string::npos) {
      throw UsageError("there is no } after the { in '" + pattern + "'; write " + kOutputPlaceholders);
    }
    filled += PartOf(input, std::string_view(pattern).substr(brace + 1, end - brace - 1), pattern);
    i = end + 1;
  }
  return filled;
}

}  // namespace standalone
