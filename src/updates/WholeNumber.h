#pragma once

#include <QStringView>

#include <compare>
#include <optional>

namespace orbitledge {

/// The digits of a whole number without a sign and without the zeros before them. Absent where it is none.
/// The digits are a part of `text`.
std::optional<QStringView> wholeNumberDigits(QStringView text);

/// Compares two of them by their values, however large they are.
std::weak_ordering compareDigits(QStringView left, QStringView right);

} // namespace orbitledge
