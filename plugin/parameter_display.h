// Turns a parameter's normalised value into the text that hosts and the editor show.
// Units are part of the text; the host's separate unit label stays empty.
#pragma once

#include <cstddef>

#include "plugin/parameter_table.h"

namespace ziv {

// Buffer size, terminator included, that display texts and names are cut to.
constexpr std::size_t kParamTextCapacity = 32;

constexpr int kTempoDivisionCount = 24;

// Length of tempo division 0..23 in quarter notes, longest first (24 quarters down to 1/32).
double tempoDivisionQuarters(int division);

// Writes the text for `normalised` under `rule` with the entry's current bounds. Writes at most
// `capacity` bytes including the terminator; any thread, no allocation.
void formatParamValue(DisplayRule rule, int lo, int hi, const ChoiceList& choices, float normalised,
                      char* text, std::size_t capacity);

}  // namespace ziv
