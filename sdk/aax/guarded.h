// Every AAX entry point into the plug-in runs its body through `guarded`: an exception never
// crosses into the host, which gets the AAX code for an unexpected exception instead.
#pragma once

#include "sdk/aax/aax_constants.h"

namespace ziv::aax {

template <class Body>
Result guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return kUnknownException;
  }
}

}  // namespace ziv::aax
