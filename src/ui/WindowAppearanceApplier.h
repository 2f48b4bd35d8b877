#pragma once

#include "platform/DesktopPreferences.h"
#include "state/AppSettings.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Style.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace orbitledge::ui {

/// What a window looks like: the person's choice in the settings, else what the desktop prefers, else as
/// light or dark as the toolkit's own windows are.
ColorScheme colorSchemeFor(Appearance chosen, DesktopPreferences::Colors preferred, ColorScheme toolkit);

/// Gives windows the chosen appearance, and the desktop's text scale and motion, and keeps them up to date.
class WindowAppearanceApplier : public QObject {
    Q_OBJECT

public:
    /// `style` is the application's; it may be absent.
    WindowAppearanceApplier(
        std::shared_ptr<AppSettings> settings, std::shared_ptr<DesktopPreferences> preferences, Style *style);

    /// At once, and whenever something changes, for as long as the window lives.
    void applyTo(QWidget *window);

    ColorScheme colorScheme() const;
    /// What the desktop prefers, whatever is chosen for this program.
    ColorScheme desktopColorScheme() const;

Q_SIGNALS:
    void changed();

private:
    void apply();
    void apply(QWidget &window) const;

    std::shared_ptr<AppSettings> m_settings;
    std::shared_ptr<DesktopPreferences> m_preferences;
    QPointer<Style> m_style;
    ColorScheme m_toolkit;
    QList<QPointer<QWidget>> m_windows;
};

} // namespace orbitledge::ui
