#include "platform/ApplicationService.h"

#include <QLatin1StringView>

#include <array>

namespace orbitledge {

namespace {

struct NamedAction {
    ApplicationAction action = ApplicationAction::Open;
    QLatin1StringView name;
};

constexpr std::array namedActions{
    NamedAction{ApplicationAction::Open, QLatin1StringView("open")},
    NamedAction{ApplicationAction::QuickAdd, QLatin1StringView("quick-add")},
    NamedAction{ApplicationAction::Settings, QLatin1StringView("settings")},
    NamedAction{ApplicationAction::Quit, QLatin1StringView("quit")},
};

} // namespace

QString nameOf(ApplicationAction action)
{
    for (const NamedAction &named : namedActions) {
        if (named.action == action)
            return named.name;
    }
    Q_UNREACHABLE();
}

std::optional<ApplicationAction> applicationActionNamed(const QString &name)
{
    for (const NamedAction &named : namedActions) {
        if (named.name == name)
            return named.action;
    }
    return std::nullopt;
}

} // namespace orbitledge
