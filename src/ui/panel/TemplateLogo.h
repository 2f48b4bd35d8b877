#pragma once

#include "ui/panel/LogoTile.h"

namespace orbitledge::ui {

/// The logo of an entry of the catalogue.
class TemplateLogo : public LogoTile {
    Q_OBJECT

public:
    explicit TemplateLogo(LogoImages *images, QWidget *parent = nullptr)
        : LogoTile({.side = 22, .radius = 6, .imageInset = 2, .initialsSize = 9, .groundOpacity = 0.1},
              images, parent)
    {
    }
};

} // namespace orbitledge::ui
