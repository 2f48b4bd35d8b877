#pragma once

#include <QLatin1StringView>
#include <QUuid>

#include <optional>
#include <span>

namespace orbitledge::demo {

/// The kinds of subscription that the service knows.
std::span<const QLatin1StringView> categoryNames();

/// The same name has the same identifier in every installation.
QUuid categoryId(QLatin1StringView name);
std::optional<QLatin1StringView> categoryName(const QUuid &id);

} // namespace orbitledge::demo
