#pragma once

#include "platform/DesktopPreferences.h"

namespace orbitledge::testing {

/// A desktop whose preferences the test sets.
class FakeDesktopPreferences final : public DesktopPreferences {
public:
    Colors preferredColors = Colors::NoPreference;
    bool isContrastIncreased = false;
    bool isMotionReduced = false;
    double scale = 1;

    [[nodiscard]] Colors colors() const override { return preferredColors; }
    [[nodiscard]] bool increasesContrast() const override { return isContrastIncreased; }
    [[nodiscard]] bool reducesMotion() const override { return isMotionReduced; }
    [[nodiscard]] double textScale() const override { return scale; }

    void announce() { Q_EMIT changed(); }
};

} // namespace orbitledge::testing
