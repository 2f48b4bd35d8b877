#include "cli/KeyringCheck.h"

#include "cli/DoctorVerdict.h"

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;
using Detail = Check::Detail;

QString keyringName(const Keyring &keyring)
{
    return keyring.kind == Keyring::Kind::KWallet ? u"KWallet"_s : u"Secret Service"_s;
}

/// What keeps the program from using the keyring that is there; absent where nothing does.
std::optional<Verdict> keyringFault(const Keyring &keyring)
{
    const QString name = keyringName(keyring);
    if (keyring.presence == Presence::Mute) {
        return Verdict{.level = Failure,
            .state = "mute",
            .text = name + u" is there, but does not answer"_s,
            .advice = u"See whether it waits for you in a window of its own, or log out and in again."_s};
    }
    if (keyring.presence == Presence::Refusing) {
        return Verdict{.level = Failure,
            .state = "refused",
            .text = name + u" is there, but refuses to answer"_s,
            .advice = u"Look into the settings of your keyring for programs that are kept out."_s};
    }
    if (!keyring.isEnabled) {
        return Verdict{.level = Failure,
            .state = "disabled",
            .text = name + u" is switched off"_s,
            .advice = u"Switch it on in the System Settings, under KDE Wallet."_s};
    }
    return std::nullopt;
}

Verdict keyringVerdict(const Keyring &keyring)
{
    if (keyring.presence == Presence::Unknown)
        return unknownWithoutBus();
    if (keyring.presence == Presence::Absent) {
        return {.level = Failure,
            .state = "absent",
            .text = u"no keyring is there"_s,
            .advice = u"Install and start GNOME Keyring, KWallet or KeePassXC."_s};
    }
    if (auto fault = keyringFault(keyring))
        return *std::move(fault);
    const QString name = keyringName(keyring);
    if (keyring.presence == Presence::Startable)
        return {.level = Ok,
            .state = "startable",
            .text = name + u", which starts when it is needed"_s,
            .advice = {}};
    QString item = u", which does not tell whether a session is kept"_s;
    if (keyring.hasItem)
        item = *keyring.hasItem ? u", a session is kept"_s : u", no session is kept"_s;
    switch (keyring.collection) {
    case Keyring::Collection::Locked:
        return {.level = Warning,
            .state = "locked",
            .text = name + u", locked"_s + item,
            .advice = u"Unlock it with your keyring manager, or give its password when you are asked."_s};
    case Keyring::Collection::None:
        return {.level = Info,
            .state = "no-collection",
            .text = name + u", without a default keyring yet"_s + item,
            .advice = u"Signing in makes one, for which you choose a password."_s};
    case Keyring::Collection::Unknown:
    case Keyring::Collection::Unlocked:
        break;
    }
    const bool isUnlocked = keyring.collection == Keyring::Collection::Unlocked;
    return {.level = Ok,
        .state = isUnlocked ? "unlocked" : "there",
        .text = name + (isUnlocked ? u", unlocked"_s : QString()) + item,
        .advice = {}};
}

} // namespace

Check keyringCheck(const Keyring &keyring)
{
    using enum Keyring::Collection;
    const bool isTold = keyring.collection == Locked || keyring.collection == Unlocked;
    const QString service = keyring.kind == Keyring::Kind::KWallet ? u"kwallet"_s : u"secret-service"_s;
    return checkOf("keyring", u"Keyring"_s, keyringVerdict(keyring),
        {{"service", service}, {"locked", isTold ? Detail(keyring.collection == Locked) : Detail()},
            {"hasSession", detailOf(keyring.hasItem)}});
}

} // namespace orbitledge
