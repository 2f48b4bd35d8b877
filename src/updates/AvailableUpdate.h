#pragma once

#include "updates/ReleaseManifest.h"

#include <optional>

namespace orbitledge {

/// What is running.
struct RunningRelease {
    QString version;
    /// A whole number, as a rule.
    QString build;
};

/// Whether a manifest announces something newer than what is running and, where a version was dismissed, than
/// that. Builds decide where both are whole numbers and differ, versions otherwise.
bool isAvailableUpdate(const ReleaseManifest &manifest, const RunningRelease &running,
    const std::optional<QString> &dismissedVersion);

} // namespace orbitledge
