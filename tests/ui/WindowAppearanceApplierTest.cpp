#include "ui/WindowAppearanceApplier.h"

#include "support/FakeDesktopPreferences.h"
#include "support/FakeUserDefaults.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Typography.h"

#include <QSignalSpy>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;
using Colors = DesktopPreferences::Colors;

class WindowAppearanceApplierTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<AppSettings> m_settings;
    std::shared_ptr<FakeDesktopPreferences> m_preferences;
    std::optional<WindowAppearanceApplier> m_applier;

    static bool isDark(const QWidget &window) { return colorSchemeOf(window.palette()) == ColorScheme::Dark; }

private Q_SLOTS:
    void init()
    {
        m_settings = std::make_shared<AppSettings>(std::make_shared<FakeUserDefaults>());
        m_preferences = std::make_shared<FakeDesktopPreferences>();
        m_applier.emplace(m_settings, m_preferences, static_cast<Style *>(QApplication::style()));
    }

    void shouldPreferThePersonsChoiceThenTheDesktopsThenTheToolkits_data()
    {
        QTest::addColumn<Appearance>("chosen");
        QTest::addColumn<Colors>("preferred");
        QTest::addColumn<ColorScheme>("toolkit");
        QTest::addColumn<ColorScheme>("expected");
        const auto row = [](const char *name, Appearance chosen, Colors preferred, ColorScheme toolkit,
                             ColorScheme expected) {
            QTest::newRow(name) << chosen << preferred << toolkit << expected;
        };
        using enum ColorScheme;
        row("chosen light", Appearance::Light, Colors::Dark, Dark, Light);
        row("chosen dark", Appearance::Dark, Colors::Light, Light, Dark);
        row("the desktop is dark", Appearance::System, Colors::Dark, Light, Dark);
        row("the desktop is light", Appearance::System, Colors::Light, Dark, Light);
        row("a dark toolkit", Appearance::System, Colors::NoPreference, Dark, Dark);
        row("a light toolkit", Appearance::System, Colors::NoPreference, Light, Light);
    }
    void shouldPreferThePersonsChoiceThenTheDesktopsThenTheToolkits()
    {
        QFETCH(Appearance, chosen);
        QFETCH(Colors, preferred);
        QFETCH(ColorScheme, toolkit);
        QFETCH(ColorScheme, expected);
        QCOMPARE(colorSchemeFor(chosen, preferred, toolkit), expected);
    }

    void shouldRaiseTheContrastWhereTheDesktopAsksForIt()
    {
        QWidget panel;
        m_applier->applyTo(&panel);
        m_preferences->isContrastIncreased = true;
        m_preferences->announce();
        QCOMPARE(colorSchemeOf(panel.palette()), ColorScheme::LightHighContrast);
        m_settings->setAppearance(Appearance::Dark);
        QCOMPARE(colorSchemeOf(panel.palette()), ColorScheme::DarkHighContrast);
        m_preferences->isContrastIncreased = false;
        m_preferences->announce();
        QCOMPARE(colorSchemeOf(panel.palette()), ColorScheme::Dark);
    }

    void shouldApplyAChangeToAllWindowsAtOnce()
    {
        QWidget panel;
        auto settings = std::make_unique<QWidget>();
        m_applier->applyTo(&panel);
        m_applier->applyTo(settings.get());
        QVERIFY(!isDark(panel));
        QSignalSpy changed(&*m_applier, &WindowAppearanceApplier::changed);
        m_settings->setAppearance(Appearance::Dark);
        QVERIFY(isDark(panel) && isDark(*settings));
        QVERIFY(!changed.isEmpty());
        settings.reset();
        m_settings->setAppearance(Appearance::System);
        QVERIFY(!isDark(panel));
        m_preferences->preferredColors = Colors::Dark;
        m_preferences->announce();
        QVERIFY(isDark(panel));
    }

    void shouldFollowTextScaleAndMotion()
    {
        QWidget panel;
        m_applier->applyTo(&panel);
        QCOMPARE(textScaleOf(panel), 1.0);
        m_preferences->scale = 1.5;
        m_preferences->announce();
        QCOMPARE(textScaleOf(panel), 1.5);
        const auto duration
            = [&] { return panel.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &panel); };
        QVERIFY(duration() > 0);
        m_preferences->isMotionReduced = true;
        m_preferences->announce();
        QCOMPARE(duration(), 0);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(WindowAppearanceApplierTest)
#include "WindowAppearanceApplierTest.moc"
