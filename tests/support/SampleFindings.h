#pragma once

#include "cli/DoctorChecks.h"

namespace orbitledge::testing {

inline findings::File sampleFile(const QByteArray &subject, const QString &path)
{
    findings::File file;
    file.subject = subject;
    file.path = path;
    file.state = findings::File::State::Whole;
    file.size = 12'345;
    file.modified = *Instant::fromText("2026-03-18T06:59:59Z");
    file.mode = 0600;
    return file;
}

inline findings::Folder sampleFolder(const QByteArray &subject, const QString &path)
{
    findings::Folder folder;
    folder.subject = subject;
    folder.path = path;
    folder.state = findings::Folder::State::Made;
    folder.isWritable = true;
    folder.mode = 0700;
    return folder;
}

/// A desktop where everything is as it should be, and a person called Ada on it.
inline Findings goodFindings()
{
    using namespace findings;
    Findings found;
    found.versions = {.toolkit = QStringLiteral("6.4.2"),
        .http = QStringLiteral("7.88.1 (OpenSSL/3.0.17)"),
        .tzdata = QStringLiteral("2025b"),
        .system = QStringLiteral("Debian GNU/Linux 12 (bookworm)"),
        .kernel = QStringLiteral("Linux 6.1.0 x86_64")};
    found.session = {.desktop = QStringLiteral("XFCE"),
        .type = QStringLiteral("x11"),
        .hasX11 = true,
        .hasWayland = false};
    found.running = Running::Yes;
    found.windowsProgram = WindowsProgram::Working;
    found.bus = Bus::Reached;
    found.tray.watcher = Presence::Present;
    found.tray.hasHost = true;
    found.tray.hasEmbedder = true;
    found.keyring.presence = Presence::Present;
    found.keyring.collection = Keyring::Collection::Unlocked;
    found.keyring.hasItem = true;
    found.notifications.daemon = Presence::Present;
    found.notifications.name = QStringLiteral("dunst");
    found.notifications.vendor = QStringLiteral("knopwob");
    found.notifications.version = QStringLiteral("1.9.0");
    found.notifications.specification = QStringLiteral("1.2");
    found.notifications.capabilities = {QStringLiteral("actions"), QStringLiteral("body")};
    found.notifications.doNotDisturb = false;
    found.portal = {.presence = Presence::Present, .settingsVersion = 1, .colorScheme = 1, .contrast = 0};
    found.delivery = {.systemd = Presence::Present,
        .version = QStringLiteral("252.38"),
        .timer = Delivery::Timer::Waiting,
        .next = Instant::fromText("2026-03-19T08:00:00Z")};
    found.autostart = {.status = LoginItemStatus::Enabled,
        .file = QStringLiteral("/home/ada/.config/autostart/app.example.desktop"),
        .program = QStringLiteral("/usr/bin/orbitledge"),
        .isProgramThere = true,
        .isThisProgram = true};
    found.folders = {
        sampleFolder("configuration", QStringLiteral("/home/ada/.config/app.example")),
        sampleFolder("data", QStringLiteral("/home/ada/.local/share/app.example")),
    };
    found.files
        = {sampleFile("snapshot", QStringLiteral("/home/ada/.local/share/app.example/snapshot.json"))};
    found.hasOpener = true;
    found.home = QStringLiteral("/home/ada");
    found.userNames = {QStringLiteral("ada")};
    return found;
}

inline OwnFacts sampleFacts()
{
    return {.version = QStringLiteral("1.2.3"),
        .build = QStringLiteral("45"),
        .icuVersion = QStringLiteral("72.1"),
        .dates = QStringLiteral("de_DE"),
        .money = QStringLiteral("de_CH"),
        .collation = QStringLiteral("de_DE"),
        .encoding = QStringLiteral("UTF-8"),
        .timeZone = QStringLiteral("Europe/Berlin"),
        .service = ServiceAddress::BuiltIn,
        .now = *Instant::fromText("2026-03-18T09:00:00Z")};
}

} // namespace orbitledge::testing
