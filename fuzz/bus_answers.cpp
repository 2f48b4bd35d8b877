#include "HostileBus.h"
#include "Require.h"
#include "platform/linux/application/RunningApplication.h"
#include "platform/linux/diagnosis/BusInquiry.h"
#include "platform/linux/diagnosis/DeliveryInspection.h"
#include "platform/linux/diagnosis/KeyringInspection.h"
#include "platform/linux/diagnosis/NotificationInspection.h"
#include "platform/linux/diagnosis/PortalInspection.h"
#include "platform/linux/diagnosis/TrayInspection.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "platform/linux/notifications/DesktopNotificationDisplay.h"
#include "platform/linux/notifications/DesktopNotificationSwitches.h"
#include "platform/linux/notifications/SystemdManager.h"
#include "platform/linux/preferences/PortalPreferences.h"

#include <QCoroTask>

#include <cmath>
#include <memory>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 30ms;

const KeychainItem session{
    .service = u"app.example"_s, .account = u"session"_s, .label = u"Example session"_s};

std::unique_ptr<DesktopKeychain> keychain()
{
    return std::make_unique<DesktopKeychain>(KeychainPatience{.answer = patience, .serviceStart = 1ms});
}

/// One of the desktops that differ in whom the keyring is asked of.
void pretendDesktop(bool isPlasma)
{
    qputenv("XDG_CURRENT_DESKTOP", isPlasma ? "KDE" : "XFCE");
    qputenv("KDE_SESSION_VERSION", "5");
}

QCoro::Task<void> useKeyring(int what)
{
    const auto keys = keychain();
    switch (what) {
    case 0: {
        const auto read = co_await keys->read(session);
        fuzz::require(read || read.error() != KeychainStatus::Success, "a failure has a reason");
        break;
    }
    case 1:
        co_await keys->write(session, "a secret");
        break;
    default:
        co_await keys->remove(session, what == 2 ? KeychainPrompt::Allowed : KeychainPrompt::Forbidden);
    }
}

QCoro::Task<void> showNotification()
{
    DesktopNotificationDisplay display({.name = u"Example"_s, .applicationId = u"app.example"_s}, patience);
    const bool isThere = co_await display.awaken();
    const NotificationContent content{
        .title = u"Renews tomorrow"_s, .body = u"<b>9.99</b>"_s, .userInfo = {}};
    if (isThere) {
        const auto number = co_await display.show(content, 0);
        fuzz::require(number != 0U, "what is shown has a number");
        co_await display.isSenderThere(u":1.0"_s);
        if (number)
            display.close(*number);
    }
}

QCoro::Task<void> readSwitches()
{
    DesktopNotificationSwitches switches({.variable = [](const char *name) { return qgetenv(name); },
        .desktopId = u"app.example"_s,
        .applicationName = u"Example"_s,
        .patience = patience});
    co_await switches.read();
}

QCoro::Task<void> followPreferences(fuzz::HostileBus &bus)
{
    PortalPreferences preferences;
    co_await bus.quiet();
    fuzz::require(std::isfinite(preferences.textScale()) && preferences.textScale() > 0, "text has a size");
}

QCoro::Task<void> useSystemd()
{
    const auto manager = co_await SystemdManager::find(patience);
    if (!manager || !*manager)
        co_return;
    co_await (*manager)->reload();
    co_await (*manager)->restart(u"example.timer"_s);
    co_await (*manager)->stop(u"example.timer"_s);
}

QCoro::Task<void> handOver(int what)
{
    const RunningApplication application(fuzz::HostileBus::applicationName, patience);
    if (what == 0) {
        const auto outcome = co_await application.request(ApplicationAction::QuickAdd, u"token"_s);
        fuzz::require(outcome || !outcome.error().isEmpty(), "a failure is explained");
    } else {
        const SessionPlace place{.api = u"https://example.com"_s, .cacheFile = u"/nowhere"_s};
        const auto outcome = co_await application.perform(RefreshRequest{}, place);
        fuzz::require(outcome || !outcome.error().isEmpty(), "a failure is explained");
        if (outcome && *outcome)
            fuzz::require(
                (*outcome)->subscriptionCount >= 0 && ((*outcome)->isDone || !(*outcome)->problem.isEmpty()),
                "an outcome is one");
    }
}

QCoro::Task<void> diagnose()
{
    BusInquiry inquiry(patience);
    const auto names = co_await inquiry.names();
    if (!names)
        co_return;
    const auto variable = [](const char *name) { return qgetenv(name); };
    co_await inspectKeyring(*names, session, patience);
    co_await inspectPortal(*names, patience);
    co_await inspectTray(*names, patience);
    co_await inspectDelivery(*names, u"example"_s, true, patience);
    co_await inspectNotifications(*names, u"app.example"_s, variable, patience);
}

QCoro::Task<void> use(int what, fuzz::HostileBus &bus)
{
    switch (what) {
    case 0:
    case 1:
    case 2:
    case 3:
        return useKeyring(what);
    case 4:
        return showNotification();
    case 5:
        return readSwitches();
    case 6:
        return followPreferences(bus);
    case 7:
        return useSystemd();
    case 8:
    case 9:
        return handOver(what - 8);
    default:
        return diagnose();
    }
}

} // namespace

// Who is on the session bus answers anything, nothing, or says things unasked. The first byte is what is done
// with them, the others are what they say. Whatever it is, what was begun ends, once they have answered at
// the latest.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static fuzz::HostileBus bus;
    if (size == 0)
        return 0;
    pretendDesktop((data[0] & 0x80) != 0);
    bus.begin({data + 1, size - 1});
    bool hasEnded = false;
    auto using_ = use(data[0] % 16 % 11, bus);
    using_.then([&hasEnded] { hasEnded = true; });
    bus.runUntil(hasEnded);
    fuzz::require(hasEnded, "what was begun ends");
    return 0;
}
