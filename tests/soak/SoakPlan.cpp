#include "soak/SoakPlan.h"

#include <array>
#include <numeric>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<const char *, SoakPlan::stepCount> names{"the network is well", "nobody listens",
    "the network is mute", "connections break", "answers are cut off", "answers are slow",
    "answers are garbage", "answers are 401", "answers are 429", "answers are 500",
    "every other answer is wrong", "the service is killed", "the service is frozen", "the service is back",
    "the keyring is killed", "the keyring is paused", "the keyring is locked", "the keyring is back",
    "the prompt is answered", "the prompt is dismissed", "the notification daemon is killed",
    "the notification daemon is paused", "the notification daemon is back", "the notifications are closed",
    "the bar is killed", "the bar is back", "the clock goes forward", "the clock goes back",
    "the clock is right", "the panel is opened", "the icon is clicked", "escape is pressed",
    "the settings are opened", "a refresh is asked for", "the first row is cancelled",
    "the first row is taken back", "something is added by the form", "something is added elsewhere",
    "the status is asked for", "the timeline is asked for", "somebody signs in", "somebody signs out",
    "the program is killed", "the program is quit and started"};

} // namespace

QString SoakPlan::nameOf(Step step)
{
    return QString::fromLatin1(names.at(static_cast<std::size_t>(step)));
}

int SoakPlan::weightOf(Step step) const
{
    // Long enough a life now and then for its memory to mean something.
    constexpr qint64 cycle = 200;
    constexpr qint64 restless = 100;
    const bool isRestless = m_count % cycle < restless;
    constexpr int usual = 2;
    constexpr int often = 6;
    constexpr int veryOften = 12;
    switch (step) {
    case Step::WeatherGood:
        return m_isWeatherGood ? 0 : veryOften;
    case Step::WeatherUnauthorized:
        return m_isWeatherGood ? 1 : 0;
    case Step::WeatherRefusing:
    case Step::WeatherMute:
    case Step::WeatherReset:
    case Step::WeatherCutOff:
    case Step::WeatherSlow:
    case Step::WeatherGarbage:
    case Step::WeatherTooMany:
    case Step::WeatherBroken:
    case Step::WeatherFickle:
        return 1;
    case Step::ServiceKilled:
    case Step::ServiceFrozen:
        return m_service == Part::There ? 1 : 0;
    case Step::ServiceBack:
        return m_service == Part::There ? 0 : veryOften;
    case Step::KeyringKilled:
    case Step::KeyringPaused:
    case Step::KeyringLocked:
        return m_keyring == Part::There ? 1 : 0;
    case Step::KeyringBack:
        return m_keyring == Part::There ? 0 : often;
    case Step::PromptAnswered:
    case Step::PromptDismissed:
        return 1;
    case Step::DaemonKilled:
    case Step::DaemonPaused:
        return m_daemon == Part::There ? usual : 0;
    case Step::DaemonBack:
        return m_daemon == Part::There ? 0 : veryOften;
    case Step::NotificationsClosed:
        return m_daemon == Part::There ? 1 : 0;
    case Step::BarKilled:
        return m_bar == Part::There ? 1 : 0;
    case Step::BarBack:
        return m_bar == Part::There ? 0 : often;
    case Step::ClockForward:
    case Step::ClockBack:
        return m_isClockRight ? 1 : 0;
    case Step::ClockRight:
        return m_isClockRight ? 0 : often;
    case Step::PanelOpened:
    case Step::IconClicked:
    case Step::Refreshed:
    case Step::AddedElsewhere:
        return step == Step::AddedElsewhere && m_service != Part::There ? 0 : often;
    case Step::EscapePressed:
    case Step::FirstCancelled:
    case Step::FirstUncancelled:
    case Step::StatusAsked:
        return usual;
    case Step::SettingsOpened:
    case Step::QuickAdded:
    case Step::TimelineAsked:
    case Step::SignedOut:
        return 1;
    case Step::SignedIn:
        return !m_isSessionDoubtful ? 1 : isSignInPossible() ? 2 * veryOften : usual;
    case Step::Killed:
        return isRestless ? usual + 1 : 0;
    case Step::QuitAndStarted:
        return isRestless ? 1 : 0;
    }
    return 0;
}

bool SoakPlan::isSignInPossible() const
{
    return m_isWeatherGood && m_service == Part::There && m_keyring == Part::There;
}

SoakPlan::Move SoakPlan::next()
{
    std::array<int, stepCount> weights{};
    for (int i = 0; i < stepCount; ++i)
        weights.at(static_cast<std::size_t>(i)) = weightOf(static_cast<Step>(i));
    int chosen = m_random.bounded(std::accumulate(weights.begin(), weights.end(), 0));
    int step = 0;
    for (; chosen >= weights.at(static_cast<std::size_t>(step)); ++step)
        chosen -= weights.at(static_cast<std::size_t>(step));
    ++m_count;
    follow(static_cast<Step>(step));
    constexpr int choices = 1000;
    constexpr int longestPause = 400;
    const int choice = m_random.bounded(choices);
    return {.step = static_cast<Step>(step), .choice = choice, .pause = m_random.bounded(longestPause)};
}

void SoakPlan::follow(Step step)
{
    switch (step) {
    case Step::WeatherGood:
        m_isWeatherGood = true;
        break;
    case Step::WeatherUnauthorized:
        m_isSessionDoubtful = true;
        m_isWeatherGood = false;
        break;
    case Step::WeatherRefusing:
    case Step::WeatherMute:
    case Step::WeatherReset:
    case Step::WeatherCutOff:
    case Step::WeatherSlow:
    case Step::WeatherGarbage:
    case Step::WeatherTooMany:
    case Step::WeatherBroken:
    case Step::WeatherFickle:
        m_isWeatherGood = false;
        break;
    case Step::ServiceKilled:
        m_service = Part::Gone;
        break;
    case Step::ServiceFrozen:
        m_service = Part::Mute;
        break;
    case Step::ServiceBack:
        m_service = Part::There;
        break;
    case Step::KeyringKilled:
        m_keyring = Part::Gone;
        break;
    case Step::KeyringPaused:
        m_keyring = Part::Mute;
        break;
    case Step::KeyringLocked:
        m_keyring = Part::Mute;
        break;
    case Step::KeyringBack:
        m_keyring = Part::There;
        break;
    case Step::DaemonKilled:
        m_daemon = Part::Gone;
        break;
    case Step::DaemonPaused:
        m_daemon = Part::Mute;
        break;
    case Step::DaemonBack:
        m_daemon = Part::There;
        break;
    case Step::BarKilled:
        m_bar = Part::Gone;
        break;
    case Step::BarBack:
        m_bar = Part::There;
        break;
    case Step::ClockForward:
    case Step::ClockBack:
        m_isClockRight = false;
        break;
    case Step::ClockRight:
        m_isClockRight = true;
        break;
    case Step::SignedOut:
        m_isSessionDoubtful = true;
        break;
    case Step::SignedIn:
        m_isSessionDoubtful = !isSignInPossible();
        break;
    default:
        break;
    }
}

} // namespace orbitledge::testing
