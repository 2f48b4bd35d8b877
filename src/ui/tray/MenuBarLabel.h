#pragma once

#include "ui/kit/Palette.h"

#include <QIcon>
#include <QPixmap>
#include <QString>

#include <array>

namespace orbitledge::ui {

/// The icon in the tray: the mark in one colour, and over its corner a red badge that counts.
///
/// Nobody tells which colour the desktop's bar has. The mark is drawn in that which suits the color scheme,
/// within a thin halo of the opposite one, so that it is seen on any bar.
class MenuBarLabel {
public:
    /// In pixels: what trays ask for.
    static constexpr std::array sizes{16, 22, 24, 32, 48, 64};

    /// There is no badge where its text is empty.
    explicit MenuBarLabel(QString badge = QString(), ColorScheme colorScheme = ColorScheme::Light);

    /// Drawn for this number of pixels, not scaled.
    [[nodiscard]] QPixmap pixmap(int side) const;

    /// Of all sizes; what a tray asks for beyond those is drawn for it as well.
    [[nodiscard]] QIcon icon() const;

private:
    QString m_badge;
    ColorScheme m_colorScheme;
};

} // namespace orbitledge::ui
