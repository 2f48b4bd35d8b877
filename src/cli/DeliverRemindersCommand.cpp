#include "cli/DeliverRemindersCommand.h"

#include "cli/HelpTexts.h"
#include "cli/Operands.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

ExitCode runDeliverReminders(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "deliver-reminders"_L1, deliverRemindersHelp, environment, end))
        return end;
    switch (environment.deliverReminders()) {
    case NotificationDelivery::Done:
    case NotificationDelivery::Elsewhere:
        return ExitCode::Success;
    case NotificationDelivery::NoDisplay:
        return failure(environment,
            u"Reminders are due, but nothing on this desktop shows notifications at the moment."_s);
    case NotificationDelivery::Unreadable:
        break;
    }
    return failure(environment, u"The reminders that wait to be shown cannot be read or written."_s);
}

} // namespace orbitledge
