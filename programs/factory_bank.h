// The factory bank: a complete .fxb image ("FBCh", header and chunk version 1011, 100 legacy
// programs of 106 values) compiled into the module's constant data. The build generates it
// from presets/factory.txt (see presets/generator/); it is read with the ordinary bank loader.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ziv {

constexpr std::size_t kFactoryBankSize = 45764;
extern const std::uint8_t kFactoryBankImage[kFactoryBankSize];

}  // namespace ziv
