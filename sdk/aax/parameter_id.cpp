#include "sdk/aax/parameter_id.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace ziv::aax {

ParameterId parameterId(std::int32_t index) {
  ParameterId id;
  std::snprintf(id.text, sizeof id.text, "%d", static_cast<int>(index));
  return id;
}

std::optional<std::int32_t> parseParameterId(const char* id) {
  // strtoll would skip leading white space; an identifier has none.
  if (id == nullptr || !(std::isdigit(static_cast<unsigned char>(*id)) || *id == '-' || *id == '+')) {
    return std::nullopt;
  }
  errno = 0;
  char* end = nullptr;
  const long long value = std::strtoll(id, &end, 10);
  if (errno == ERANGE || end == id || *end != '\0') return std::nullopt;
  if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace ziv::aax
