#pragma once

#include "model/Instant.h"
#include "platform/LoginItemService.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orbitledge {

/// What a desktop was found to offer to this program, and what of the program's own lies on the disk: plain
/// facts, of which nobody has yet said whether they are good. None of it is a secret, and none of it comes
/// from the account; paths and names of others may tell who the person is, though.
namespace findings {

/// Whether somebody answers for a name on the session bus.
enum class Presence {
    /// There is no bus to ask.
    Unknown,
    /// Nobody, and the bus knows nobody whom it could start.
    Absent,
    /// Nobody yet, but the bus starts somebody as soon as it is needed.
    Startable,
    /// Somebody, who says nothing.
    Mute,
    /// Somebody, who answers what everybody of that name should know with an error.
    Refusing,
    Present,
};

enum class Bus {
    /// The environment names none.
    NotNamed,
    /// Nobody takes a connection at its address.
    Unreachable,
    Mute,
    Reached,
};

/// Of what the program is linked with, as it runs. Empty where it cannot be told.
struct Versions {
    QString toolkit;
    QString http;
    QString tzdata;
    QString system;
    QString kernel;
};

struct Session {
    /// XDG_CURRENT_DESKTOP and XDG_SESSION_TYPE.
    QString desktop;
    QString type;
    bool hasX11 = false;
    bool hasWayland = false;
};

/// The executable with windows.
enum class WindowsProgram {
    Missing,
    /// It does not run, for instance as a library is not there.
    Broken,
    /// It did not end in time, since the X server did not answer it.
    Mute,
    Working,
};

struct Tray {
    /// Whoever keeps the list of StatusNotifierItems.
    Presence watcher = Presence::Unknown;
    /// Somebody is registered there who shows them.
    bool hasHost = false;
    /// Whether somebody owns the selection of XEmbed's trays; absent where no X server tells.
    std::optional<bool> hasEmbedder;
};

struct Keyring {
    enum class Kind { SecretService, KWallet };
    enum class Collection { Unknown, None, Locked, Unlocked };

    Kind kind = Kind::SecretService;
    Presence presence = Presence::Unknown;
    /// KWallet can be switched off.
    bool isEnabled = true;
    /// The one that new items go to.
    Collection collection = Collection::Unknown;
    /// Whether this program's session is kept there; absent where that cannot be told without a prompt.
    std::optional<bool> hasItem;
};

struct Notifications {
    Presence daemon = Presence::Unknown;
    QString name;
    QString vendor;
    QString version;
    QString specification;
    QStringList capabilities;
    /// Absent where the daemon has no such state, or does not tell.
    std::optional<bool> doNotDisturb;
    /// What the desktop was set to for this program.
    bool allows = true;
    bool popsUp = true;
};

struct Portal {
    Presence presence = Presence::Unknown;
    /// Of its settings; absent where it has none.
    std::optional<qint64> settingsVersion;
    /// As the portal numbers them; absent where it does not tell.
    std::optional<qint64> colorScheme;
    std::optional<qint64> contrast;
};

/// Showing reminders while the program does not run.
struct Delivery {
    enum class Timer {
        /// None is arranged.
        None,
        Waiting,
        /// Its files are there, but systemd does not wait for it.
        NotInForce,
        Failed,
    };

    Presence systemd = Presence::Unknown;
    QString version;
    Timer timer = Timer::None;
    std::optional<Instant> next;
};

struct Autostart {
    LoginItemStatus status = LoginItemStatus::NotRegistered;
    QString file;
    /// What the entry names; empty where it names nothing.
    QString program;
    /// Whether that is there, and whether it is this very program.
    bool isProgramThere = false;
    bool isThisProgram = false;
};

/// A folder of this program's, or the place where it would be.
struct Folder {
    enum class State {
        /// The machine names no place for it.
        Nowhere,
        /// It will be made when it is needed.
        NotMade,
        /// Something else has its name, or that of a folder above it.
        NotAFolder,
        Made,
    };

    /// "configuration"
    QByteArray subject;
    QString path;
    State state = State::NotMade;
    /// Of the folder, or of the one in which it would be made.
    bool isWritable = false;
    /// The permission bits; of no meaning where it is not made.
    int mode = 0;
    bool isOwn = true;
};

struct File {
    enum class State { Missing, Unreadable, Damaged, Whole };

    /// "cache"
    QByteArray subject;
    QString path;
    State state = State::Missing;
    qint64 size = 0;
    Instant modified;
    int mode = 0;
    bool isOwn = true;
};

/// Whether the program with windows owns its name on the bus.
enum class Running { Unknown, No, Yes };

} // namespace findings

struct Findings {
    findings::Versions versions;
    findings::Session session;
    findings::Running running = findings::Running::Unknown;
    findings::WindowsProgram windowsProgram = findings::WindowsProgram::Missing;
    findings::Bus bus = findings::Bus::NotNamed;
    findings::Tray tray;
    findings::Keyring keyring;
    findings::Notifications notifications;
    findings::Portal portal;
    findings::Delivery delivery;
    findings::Autostart autostart;
    QList<findings::Folder> folders;
    QList<findings::File> files;
    bool hasOpener = false;
    bool isOffline = false;

    /// Not for anybody's eyes: what must not be told of paths.
    QString home;
    QStringList userNames;
};

/// Looks at the machine and at the desktop on behalf of somebody who wonders why something does not work.
/// Changes nothing, starts nothing of the desktop's, and nobody is prompted.
class Diagnosis {
public:
    Diagnosis() = default;
    Diagnosis(const Diagnosis &) = delete;
    Diagnosis &operator=(const Diagnosis &) = delete;
    virtual ~Diagnosis() = default;

    /// Within a few seconds, whoever does not answer.
    [[nodiscard]] virtual QCoro::Task<Findings> findings() = 0;
};

} // namespace orbitledge
