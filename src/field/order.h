#pragma once

#include <cstddef>

#include "field/field.h"

// The order of quadrature for a tolerance, for those who call pistonfield or fix
// FieldOptions::order for another reason. With a tolerance, Field chooses an order for each
// integral by itself.

namespace pistonfield {

struct SufficientOrder {
  int order;
  double error;  ///< the largest error with this order, relative to the peak
};

/// Returns the lowest order whose error is below the tolerance at all points, as are the errors of
/// the higher orders that were tried. Errors are relative to the largest magnitude of the pressure
/// among the points.
///
/// Compares the pressures of Field with an order and with a hundredth of the tolerance. The error
/// may go up and down before it stays small, so the search has three steps. It halves the order,
/// from 384 on, until it is too low. From twice the last sufficient order it goes down again in
/// steps of 10 %. Finally it bisects between the last two orders.
///
/// The tolerance must be from 1e-6 to below 1. `progress` is called as by Field, with 0. Throws a
/// FieldError if the tolerance is invalid, if no order up to 384 is sufficient, and as Field does.
SufficientOrder sufficientOrder(const Field& field, const Position* points, std::size_t count,
                                double tolerance, const std::function<void(double)>& progress = {});

}  // namespace pistonfield
