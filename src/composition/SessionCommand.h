#pragma once

#include "platform/SessionService.h"
#include "platform/linux/application/ApplicationBus.h"

#include <tl/expected.hpp>

namespace orbitledge {

/// What this process works with.
SessionPlace sessionPlace(const QUrl &api);

/// Has the running program do it, so that what it shows, keyring, saved data and reminders agree. Where there
/// is none, this process does, and others wait meanwhile. On failure why nobody could, for people.
QCoro::Task<tl::expected<SessionOutcome, QString>> performSession(SessionRequest request);

} // namespace orbitledge
