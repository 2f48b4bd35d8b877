#pragma once

#include "model/Decimal.h"

#include <QString>

#include <span>

namespace orbitledge::demo {

/// A currency of ISO 4217 that the service keeps amounts in.
struct Currency {
    QLatin1StringView code;
    QLatin1StringView name;
    /// Digits after the point.
    int digits = 2;
    /// How many of it one euro buys: `rate` × 10^−`rateScale`. A made-up table, in the order of magnitude of
    /// the real one, which never changes: what is converted today is converted alike tomorrow.
    quint32 rate = 1;
    int rateScale = 0;
};

/// By code.
std::span<const Currency> currencies();

/// In any case.
const Currency *findCurrency(QStringView code);

/// `amount` of one currency in another, rounded half-even to the digits of the latter.
Decimal converted(const Decimal &amount, const Currency &from, const Currency &to);

} // namespace orbitledge::demo
