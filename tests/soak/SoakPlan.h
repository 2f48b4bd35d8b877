#pragma once

#include <QRandomGenerator>
#include <QString>

#include <array>
#include <vector>

namespace orbitledge::testing {

/// What happens next, chosen by a seed and by what happened before, and by nothing else: the same seed makes
/// the same steps, however fast the machine is.
class SoakPlan {
public:
    enum class Step {
        // The network, and what comes from the service through it.
        WeatherGood,
        WeatherRefusing,
        WeatherMute,
        WeatherReset,
        WeatherCutOff,
        WeatherSlow,
        WeatherGarbage,
        WeatherUnauthorized,
        WeatherTooMany,
        WeatherBroken,
        WeatherFickle,
        // The service itself.
        ServiceKilled,
        ServiceFrozen,
        ServiceBack,
        // The desktop.
        KeyringKilled,
        KeyringPaused,
        KeyringLocked,
        KeyringBack,
        PromptAnswered,
        PromptDismissed,
        DaemonKilled,
        DaemonPaused,
        DaemonBack,
        NotificationsClosed,
        BarKilled,
        BarBack,
        ClockForward,
        ClockBack,
        ClockRight,
        // A person.
        PanelOpened,
        IconClicked,
        EscapePressed,
        SettingsOpened,
        Refreshed,
        FirstCancelled,
        FirstUncancelled,
        QuickAdded,
        AddedElsewhere,
        StatusAsked,
        TimelineAsked,
        SignedIn,
        SignedOut,
        // The program.
        Killed,
        QuitAndStarted,
    };
    static constexpr int stepCount = static_cast<int>(Step::QuitAndStarted) + 1;

    explicit SoakPlan(quint32 seed)
        : m_random(seed)
    {
    }

    struct Move {
        Step step = Step::WeatherGood;
        /// For what the step leaves open; less than a thousand.
        int choice = 0;
        /// How long the next step waits, in milliseconds.
        int pause = 0;
    };

    Move next();

    static QString nameOf(Step step);

private:
    enum class Part { There, Mute, Gone };

    [[nodiscard]] int weightOf(Step step) const;
    [[nodiscard]] bool isSignInPossible() const;
    void follow(Step step);

    QRandomGenerator m_random;
    qint64 m_count = 0;
    bool m_isWeatherGood = true;
    Part m_service = Part::There;
    Part m_keyring = Part::There;
    Part m_daemon = Part::There;
    Part m_bar = Part::There;
    bool m_isClockRight = true;
    bool m_isSessionDoubtful = false;
};

} // namespace orbitledge::testing
