// Display rules. The plain rule shows the physical value with as many decimals as its size
// leaves room for (0.25, 12.5, 440), and never a negative zero.
#include "plugin/parameter_display.h"

#include <cmath>
#include <cstdio>

namespace ziv {
namespace {

// Tempo divisions in quarter notes: whole multiples of four, dotted and triplet lengths.
const double kTempoDivisions[kTempoDivisionCount] = {
    24.0,  64.0 / 3, 16.0,  12.0,     32.0 / 3, 8.0,   6.0,      16.0 / 3,
    4.0,   3.0,      8.0 / 3, 2.0,   1.5,      4.0 / 3, 1.0,   0.75,
    2.0 / 3, 0.5,    0.375, 1.0 / 3,  0.25,     0.1875, 1.0 / 6, 0.125};

// A length matches a form when it lies within this many quarter notes of it.
constexpr double kDivisionTolerance = 0.001;

int roundToInt(double x) { return static_cast<int>(std::floor(x + 0.5)); }

// Writes a note length as n/1 or 1/n whole notes, with "D" for dotted and "T" for triplet.
void formatDivision(double quarters, char* text, std::size_t capacity) {
  struct Form {
    double factor;
    const char* suffix;
  };
  static const Form kForms[] = {{1.0, ""}, {1.5, "D"}, {2.0 / 3.0, "T"}};
  const double wholeNotes = quarters / 4.0;
  for (const Form& form : kForms) {
    const int exponent = roundToInt(std::log2(wholeNotes / form.factor));
    const double formQuarters = 4.0 * form.factor * std::ldexp(1.0, exponent);
    if (std::fabs(formQuarters - quarters) > kDivisionTolerance) continue;
    if (exponent >= 0) {
      std::snprintf(text, capacity, "%d/%d%s", 1 << exponent, 1, form.suffix);
    } else {
      std::snprintf(text, capacity, "%d/%d%s", 1, 1 << -exponent, form.suffix);
    }
    return;
  }
  std::snprintf(text, capacity, "%.3f", quarters);
}

void formatPlain(double x, char* text, std::size_t capacity) {
  const double magnitude = std::fabs(x);
  const int decimals = magnitude < 10.0 ? 2 : (magnitude < 100.0 ? 1 : 0);
  const double scale = std::pow(10.0, decimals);
  double rounded = std::round(x * scale) / scale;
  if (rounded == 0.0) rounded = 0.0;  // drops the sign of -0.00
  std::snprintf(text, capacity, "%.*f", decimals, rounded);
}

}  // namespace

double tempoDivisionQuarters(int division) {
  if (division < 0) division = 0;
  if (division >= kTempoDivisionCount) division = kTempoDivisionCount - 1;
  return kTempoDivisions[division];
}

void formatParamValue(DisplayRule rule, int lo, int hi, const ChoiceList& choices, float normalised,
                      char* text, std::size_t capacity) {
  if (text == nullptr || capacity == 0) return;
  const double x = lo + static_cast<double>(hi - lo) * normalised;
  switch (rule) {
    case DisplayRule::kInteger:
      std::snprintf(text, capacity, "%d", roundToInt(x));
      return;
    case DisplayRule::kChoice: {
      const int choice = roundToInt(x);
      const bool inList = choice >= 0 && choice < choices.count;
      std::snprintf(text, capacity, "%s", inList ? choices.names[choice] : "");
      return;
    }
    case DisplayRule::kSemitones:
      std::snprintf(text, capacity, "%1.2f st", x);
      return;
    case DisplayRule::kRate:
      std::snprintf(text, capacity, "%1.2f Hz", std::exp(4.0 * x - 1.2));
      return;
    case DisplayRule::kTempoDivision: {
      const int division = roundToInt(x);
      if (division < 0 || division >= kTempoDivisionCount) {
        text[0] = '\0';
        return;
      }
      formatDivision(kTempoDivisions[division], text, capacity);
      return;
    }
    case DisplayRule::kPlain:
      formatPlain(x, text, capacity);
      return;
  }
  text[0] = '\0';
}

}  // namespace ziv
