// The stream cipher of page 0 and of encoded files. It hides nothing here: the keys are known or lie in the file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace korlan::jet {

// Encodes or decodes `size` bytes in place: both are the same exclusive-or with the key's stream.
inline void ApplyRc4(std::string_view key, char* bytes, std::size_t size) {
    std::array<std::uint8_t, 256> state;
    for (std::size_t i = 0; i < 256; ++i) state[i] = static_cast<std::uint8_t>(i);
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < 256; ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + static_cast<std::uint8_t>(key[i % key.size()]));
        std::swap(state[i], state[j]);
    }
    std::uint8_t i = 0;
    j = 0;
    for (std::size_t n = 0; n < size; ++n) {
        i = static_cast<std::uint8_t>(i + 1);
        j = static_cast<std::uint8_t>(j + state[i]);
        std::swap(state[i], state[j]);
        bytes[n] = static_cast<char>(bytes[n] ^ state[static_cast<std::uint8_t>(state[i] + state[j])]);
    }
}

} // namespace korlan::jet
