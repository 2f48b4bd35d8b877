#pragma once

#include "timeline/BrandColor.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace orbitledge {

/// The picture beside a name, and what stands for it while there is none.
struct LogoContent {
    /// Over https; absent where there is none to fetch.
    std::optional<QUrl> image;
    /// Of the first two words, in capitals; may be empty.
    QString initials;
    BrandColor tint;
};

LogoContent logoOf(const QString &name, const std::optional<QUrl> &logoURL);

} // namespace orbitledge
