#include "filters/tone_tables.h"

#include <algorithm>
#include <cmath>

#include "host/integer_array.h"
#include "host/truncate.h"

namespace zvk::filters {

// clang-format off
const ToneTable kSolarizeTable = {
    255, 253, 251, 249, 247, 245, 243, 241, 239, 237, 235, 233, 231, 229, 227, 225, 223, 221, 219, 217, 215, 213, 211,
    209, 207, 205, 203, 201, 199, 197, 195, 193, 191, 189, 187, 185, 183, 180, 179, 177, 175, 173, 171, 169, 167, 164,
    163, 161, 159, 157, 155, 153, 151, 148, 147, 145, 143, 141, 139, 137, 135, 132, 131, 129, 127, 125, 122, 121, 119,
    117, 114, 113, 111, 109, 106, 105, 103, 101, 98, 97, 95, 93, 90, 89, 87, 85, 82, 81, 79, 77, 74, 73, 71, 69, 66, 65,
    63, 61, 58, 56, 55, 53, 50, 48, 47, 45, 42, 40, 39, 37, 34, 32, 31, 29, 26, 24, 23, 21, 18, 16, 15, 13, 10, 8, 7, 5,
    2, 0, 0, 2, 4, 6, 9, 11, 13, 15, 16, 18, 20, 22, 25, 27, 29, 31, 32, 34, 36, 38, 41, 43, 45, 47, 48, 50, 52, 54, 57,
    59, 61, 63, 65, 66, 68, 70, 73, 75, 77, 79, 81, 82, 84, 86, 89, 91, 93, 95, 97, 98, 100, 102, 105, 107, 109, 111,
    113, 114, 116, 118, 121, 123, 125, 127, 129, 131, 132, 134, 137, 139, 141, 143, 145, 147, 148, 150, 153, 155, 157,
    159, 161, 163, 164, 166, 169, 171, 173, 175, 177, 179, 180, 182, 185, 187, 189, 191, 193, 195, 196, 198, 201, 203,
    205, 207, 209, 211, 212, 214, 217, 219, 221, 223, 225, 227, 228, 230, 233, 235, 237, 239, 241, 243, 244, 246, 249,
    251, 253, 255,
};
// clang-format on

ToneTable GammaTable(double gamma) {
  ToneTable table = {};
  for (size_t i = 0; i < table.size(); ++i) {
    const int32_t value = Truncate(std::pow(static_cast<double>(i) / 255.0, 1.0 / gamma) * 255.0 + 0.5);
    table[i] = static_cast<uint8_t>(std::clamp(value, 0, 255));
  }
  return table;
}

// The gain is Perlin's, two halves of a power curve; the bias is the rational curve that Schlick gave for his.
ToneTable GainTable(double gain, double bias) {
  constexpr double kLogOfHalf = -0.6931471805599453;
  const double exponent = std::log(1.0 - gain) / kLogOfHalf;
  const double slope = 1.0 / bias - 2.0;
  ToneTable table = {};
  for (size_t i = 0; i < table.size(); ++i) {
    const double x = static_cast<double>(i) / 255.0;
    double y = 0;
    if (x < 0.001) {
      y = 0;
    } else if (x > 0.999) {
      y = 1.0;
    } else if (x < 0.5) {
      y = std::pow(x + x, exponent) * 0.5;
    } else {
      y = std::pow((1.0 - x) + (1.0 - x), exponent) * -0.5 + 1.0;
    }
    const double z = y / ((1.0 - y) * slope + 1.0) * 255.0;
    table[i] = static_cast<uint8_t>(z < 0 ? 0 : z > 255 ? 255 : Truncate(z));
  }
  return table;
}

ToneTable TransferTable(REALarray array) {
  std::array<int32_t, 256> values = {};
  if (array != nullptr) ReadIntegerArray(array, values);
  ToneTable table = {};
  for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<uint8_t>(values[i]);
  return table;
}

}  // namespace zvk::filters
