#include "presentation/PanelScreen.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

PanelScreen panelScreenOf(const AppState &state)
{
    switch (state.authState) {
    case AuthState::Checking:
        return state.isOffline || state.errorMessage ? PanelScreen::SessionRecovery
                                                     : PanelScreen::CheckingSession;
    case AuthState::SignedOut:
        return PanelScreen::SignIn;
    case AuthState::SignedIn:
        break;
    }
    return state.isQuickAddPresented ? PanelScreen::QuickAdd : PanelScreen::Timeline;
}

QString recoveryMessage(const AppState &state)
{
    return state.errorMessage.value_or(u"Orbitledge couldn\u2019t check your saved session."_s);
}

bool isRetrying(const AppState &state)
{
    return state.refreshState != RefreshState::Idle;
}

TimelineContent timelineContentOf(const AppState &state, const TimelineSnapshot &snapshot)
{
    if (state.refreshState == RefreshState::Loading && state.subscriptions.isEmpty())
        return TimelineContent::Loading;
    return snapshot.sections.isEmpty() ? TimelineContent::Empty : TimelineContent::Sections;
}

QString panelCurrency(const AppState &state)
{
    return state.user ? state.user->defaultCurrency : u"EUR"_s;
}

} // namespace orbitledge
