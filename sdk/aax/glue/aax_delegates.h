// The taper and display delegates of every AAX parameter. AAX values are the instance's own
// normalised values, so the taper maps identically and only constrains to 0..1; the display shows
// the instance's display text for a value and reads text back as a plain number.
//
// Threads: whichever thread the host asks on; both only read the instance's parameter table.
#pragma once

#include <algorithm>

#include "AAX_CString.h"
#include "AAX_IDisplayDelegate.h"
#include "AAX_ITaperDelegate.h"
#include "plugin/parameter_display.h"
#include "sdk/aax/value_text.h"

namespace ziv {

template <typename T>
class MapperWrapper : public AAX_ITaperDelegate<T> {
 public:
  MapperWrapper* Clone() const override { return new MapperWrapper(*this); }
  T GetMaximumValue() const override { return T(1); }
  T GetMinimumValue() const override { return T(0); }
  T ConstrainRealValue(T value) const override { return static_cast<T>(aax::constrainNormalised(value)); }
  T NormalizedToReal(double normalizedValue) const override { return static_cast<T>(normalizedValue); }
  double RealToNormalized(T realValue) const override { return realValue; }
};

template <typename T>
class FormatterWrapper : public AAX_IDisplayDelegate<T> {
 public:
  // `instance` must outlive the parameter: both belong to the same parameters object.
  FormatterWrapper(VstTest* instance, int index) : instance_(instance), index_(index) {}

  FormatterWrapper* Clone() const override { return new FormatterWrapper(*this); }
  bool ValueToString(T value, AAX_CString* valueString) const override {
    return ValueToString(value, static_cast<int32_t>(kParamTextCapacity - 1), valueString);
  }
  bool ValueToString(T value, int32_t maxNumChars, AAX_CString* valueString) const override {
    if (valueString == nullptr) return false;
    char text[kParamTextCapacity];
    const std::size_t capacity =
        std::clamp<std::size_t>(maxNumChars > 0 ? maxNumChars + 1 : 1, 1, sizeof text);
    aax::valueText(instance_, index_, static_cast<float>(value), text, capacity);
    valueString->Set(text);
    return true;
  }
  bool StringToValue(const AAX_CString& valueString, T* value) const override {
    if (value != nullptr) *value = static_cast<T>(aax::parseValueText(valueString.Get()));
    return true;
  }

 private:
  VstTest* instance_;
  int index_;
};

}  // namespace ziv
