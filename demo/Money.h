#pragma once

#include "model/Decimal.h"

namespace orbitledge::demo {

/// Digits after the point of the plain form: 2 for 10.25, 0 for 1000.
int fractionDigits(const Decimal &value);

/// To `digits` digits after the point; what lies in the middle goes to the even neighbour.
Decimal roundedHalfEven(const Decimal &value, int digits);

/// The plain form with at least `digits` digits after the point: "10.50".
QString fixedText(const Decimal &value, int digits);

/// As people read it: "€1,234.50", "¥1,280", "CHF 12.00"; rounded half-even to the currency's digits.
QString moneyText(const Decimal &value, const QString &currency);

} // namespace orbitledge::demo
