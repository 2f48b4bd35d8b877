#include "ui/WindowAppearanceApplier.h"

#include "ui/kit/Typography.h"

#include <QGuiApplication>

namespace orbitledge::ui {

ColorScheme colorSchemeFor(Appearance chosen, DesktopPreferences::Colors preferred, ColorScheme toolkit)
{
    switch (chosen) {
    case Appearance::Light:
        return ColorScheme::Light;
    case Appearance::Dark:
        return ColorScheme::Dark;
    case Appearance::System:
        break;
    }
    switch (preferred) {
    case DesktopPreferences::Colors::Light:
        return ColorScheme::Light;
    case DesktopPreferences::Colors::Dark:
        return ColorScheme::Dark;
    case DesktopPreferences::Colors::NoPreference:
        break;
    }
    return toolkit;
}

WindowAppearanceApplier::WindowAppearanceApplier(
    std::shared_ptr<AppSettings> settings, std::shared_ptr<DesktopPreferences> preferences, Style *style)
    : m_settings(std::move(settings))
    , m_preferences(std::move(preferences))
    , m_style(style)
    , m_toolkit(isDark(colorSchemeOf(QGuiApplication::palette())) ? ColorScheme::Dark : ColorScheme::Light)
{
    connect(m_settings.get(), &AppSettings::changed, this, qOverload<>(&WindowAppearanceApplier::apply));
    connect(m_preferences.get(), &DesktopPreferences::changed, this,
        qOverload<>(&WindowAppearanceApplier::apply));
}

ColorScheme WindowAppearanceApplier::colorScheme() const
{
    const ColorScheme chosen = colorSchemeFor(m_settings->appearance(), m_preferences->colors(), m_toolkit);
    return m_preferences->increasesContrast() ? withHighContrast(chosen) : chosen;
}

ColorScheme WindowAppearanceApplier::desktopColorScheme() const
{
    return colorSchemeFor(Appearance::System, m_preferences->colors(), m_toolkit);
}

void WindowAppearanceApplier::applyTo(QWidget *window)
{
    m_windows.append(window);
    apply(*window);
}

void WindowAppearanceApplier::apply(QWidget &window) const
{
    if (colorSchemeOf(window.palette()) != colorScheme() || !window.testAttribute(Qt::WA_SetPalette))
        applyColorScheme(window, colorScheme());
    applyTextScale(window, m_preferences->textScale());
}

void WindowAppearanceApplier::apply()
{
    if (m_style)
        m_style->setMotion(m_preferences->reducesMotion() ? Style::Motion::Reduced : Style::Motion::Full);
    m_windows.removeIf([](const QPointer<QWidget> &window) { return window.isNull(); });
    for (const QPointer<QWidget> &window : std::as_const(m_windows))
        apply(*window);
    Q_EMIT changed();
}

} // namespace orbitledge::ui
