#pragma once

#include <QString>
#include <QUuid>

#include <optional>
#include <string_view>

namespace orbitledge {

/// Reads the canonical form of RFC 9562, section 4: 36 characters, hexadecimal digits in either case and
/// four hyphens. Nothing else is accepted, neither braces nor a missing hyphen.
std::optional<QUuid> uuidFromText(std::string_view text);

/// The canonical form in upper case, as it stands in the cache file and in web addresses.
QString uuidText(const QUuid &uuid);

} // namespace orbitledge
