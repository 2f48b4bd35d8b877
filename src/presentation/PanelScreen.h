#pragma once

#include "state/AppState.h"
#include "timeline/TimelineSnapshot.h"

namespace orbitledge {

/// What fills the panel.
enum class PanelScreen {
    /// It is being found out whether somebody is signed in.
    CheckingSession,
    /// That could not be found out.
    SessionRecovery,
    SignIn,
    QuickAdd,
    Timeline,
};

PanelScreen panelScreenOf(const AppState &state);

/// What the recovery screen says.
QString recoveryMessage(const AppState &state);
/// The recovery screen's retry is under way.
bool isRetrying(const AppState &state);

/// What the timeline screen shows under its banner.
enum class TimelineContent { Loading, Sections, Empty };

TimelineContent timelineContentOf(const AppState &state, const TimelineSnapshot &snapshot);

/// In which the panel shows amounts: the profile's, or euros where none is loaded.
QString panelCurrency(const AppState &state);

} // namespace orbitledge
