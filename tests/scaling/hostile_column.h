// A column of a picture, found by search, on which sums in floats go as wrong as they can.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace zvk::scaling {

// 1200 samples of which Lanczos8 makes 254 in the last of five rows, by a hair. A running sum that begins with the half
// and with what 128 weighs goes beyond 256 on its way; rounded there, it ends as 255.
inline std::vector<uint8_t> HostileColumn() {
  constexpr std::string_view kDigits =
      "fffdfafefffffffffffffffffffffffffffffffbfffffffcfdfffdfffffffdfefffffffefffefefefffffffffefefffffffdfdfffffffefe"
      "fefffefdfffefefefffffffdfffefdfffefffdfffefefefefefffffffffefffdfffefefefdfefffefcfcfefffefffbfffefdfffcfefffdff"
      "fffdfefffefffffbfefffffefffefdfffffdfffefcfffdfefffbfffefffefcfcfefffefdfefefefffdfffefffffffffefefefefefffdfffe"
      "fffdfefffdfffffffefefefffdfefffefefefffffffdfdfffffffefefffffffffefefefffefffffffefdfffffffdfffdfcfffdfffbffffff"
      "fffffffffffffffffffffffffefafdfffcfef7fffffefffffffffefffdfdfffbfdfffdfffffffdfffffdf8fefcfffeffc7ba3097a1debae7"
      "7c4f227c8c4e5ff270b278c6d9c06d11195a1851f3b8b10c08e55fed24d9d074f8d2882e5efcf172314f173d14c11dff8808fe2dcc719046"
      "0404d7016683d86a6e17d14cbae4c264aeefed273c81075619e4df1fed3d8233304855ffdfa334f0590c450e70f36752a5eeac8219f60a03"
      "b50be5718bc3132fb5fbe00e7d83c478dbdb6fd111a24a762866d7ec53c5b3e59530893cc496a7105dbd095ed40b5e9ee68af5671418ce77"
      "52db1c0f05efbad1349ab01e2b1e413d6aee79014d29da63109c2dbef4a84b2dd1cf3479999d64619324fa46f9347f5c04fd25d021e4f02d"
      "966dfd38e1880fa2ef4f7ea19fde0b5ab8243aeabf0af104993abb02b032229c278a097fe7249acb4fe70a6b6b04482cfa0761764a2f4020"
      "3007e901f7ffb8e834c92ee16c1b00c4485b5506dff19665f607eed1f0d9b1a97019b4ffef0769db42ef04c8675a0ddf89f66064af2f8878"
      "24ff3310a29e825f13fdaced0c3d18c7674e59ff1c1baa59eaa27155fd06b5a88fb45ea16b6900ffd1e1d212aa00e4012afa077e16e1cf78"
      "fe895eb33307f4a000a10abe4d03bc4568c5a1004e7e0dd1540f1b7916000a4fff002d2a00ffab6a2164270707ce61eb101ffd22e7b3273a"
      "99536b0fb8f1fffe8af50f6a5f01870ea5b7eaba24222b40bd16fdab09271cb6fbbd926a67633d55b9076700013a2e037401aa47b7fe027e"
      "12eee0d8469e57ffe7a7157921af0a2de38407756343abe81b8b5be6188427bfda6a06bdb91bb18536c0d71d37c29984bb9ff6193f0237c5"
      "54eb33cbf032ca3e9d6843c7d02275844dc38d7602b6f0f90e67340c086bb18f47fc101b271c7399e709e1c140ca0654017cc7e9d2de173d"
      "743d9f3e0b70f55375b2efcd14def53744ab46885b56762076005d355dcaa9fd4c882dbf075757f3dec9900afc4286bc39cdf90960d8e902"
      "cb512351bb11cc7ff1f4065d896e00b004934c835542b4d358cf5d28940a9a675ab0b6f349fd8713a8f05e07997ec0d8b90c6a3ebe902c00"
      "0140c3fee27f86b513caff3db116f2a3f2ffdbb816281ba0ce016af60340ea0fe77ccee1c3f349f41f4dcc9a36a2dc391100977663284ffa"
      "0934cedacc2388a8d205b33d1ed068c89fe4d552455ba1e444e0ca4bb6fa2252f522e965fb143d7547469e7253175699faff457a9098e2fd"
      "c5d954fec4bdc3e6d270b106fe3b0a0101000000000000000000000000000000000000000000000000000000000000000000000000000000"
      "000000000000000000000000000000000000000000000000";
  const auto value = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'a' + 10; };
  std::vector<uint8_t> column;
  for (size_t i = 0; i < kDigits.size(); i += 2) {
    column.push_back(static_cast<uint8_t>(value(kDigits[i]) * 16 + value(kDigits[i + 1])));
  }
  return column;
}

}  // namespace zvk::scaling
