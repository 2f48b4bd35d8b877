#pragma once

#include "ui/panel/LogoTile.h"

namespace orbitledge::ui {

/// The logo of a subscription.
class BrandLogo : public LogoTile {
    Q_OBJECT

public:
    explicit BrandLogo(LogoImages *images, QWidget *parent = nullptr)
        : LogoTile({.side = 26, .radius = 7, .imageInset = 3, .initialsSize = 10, .groundOpacity = 0.18},
              images, parent)
    {
    }
};

} // namespace orbitledge::ui
