// AAX names parameters by text: here the parameter index written in decimal ("0" .. "107").
// These two functions turn one form into the other; any thread, no allocation.
#pragma once

#include <cstdint>
#include <optional>

namespace ziv::aax {

// Room for any 32-bit integer in decimal with its sign and terminator.
constexpr int kParameterIdCapacity = 12;

struct ParameterId {
  char text[kParameterIdCapacity];
};

ParameterId parameterId(std::int32_t index);

// The index an identifier names: the whole text must be a base-10 integer within 32 bits
// (a sign is allowed, surrounding characters are not). Null, empty or anything else: nothing.
std::optional<std::int32_t> parseParameterId(const char* id);

}  // namespace ziv::aax
