#pragma once

#include <complex>
#include <string>

#include "field/field.h"

// What tests of fields share.

inline pistonfield::Field::Piston piston(double width, double height,
                                         pistonfield::Position centre = {0, 0, 0},
                                         std::complex<double> weight = 1) {
  pistonfield::Field::Piston p;
  p.width = width;
  p.height = height;
  p.centre = centre;
  p.weight = weight;
  return p;
}

/// What a call throws, or "".
template <class Call>
std::string errorOf(Call call) {
  try {
    call();
  } catch (const pistonfield::FieldError& error) {
    return error.what();
  }
  return "";
}
