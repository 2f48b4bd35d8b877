#include "support/DesktopLab.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60'000; // milliseconds; only reached by what will never come

const QString keyringName = u"org.freedesktop.secrets"_s;
const QString prompterName = u"org.gnome.keyring.SystemPrompter"_s;

/// Of an X server whose monitors are pictures in memory, and which leaves the machine's keyboard alone.
const QString cardlessConfiguration = uR"(
Section "ServerFlags"
    Option "AutoAddDevices" "false"
EndSection
Section "Device"
    Identifier "Card"
    Driver "dummy"
    VideoRam 65536
EndSection
Section "Monitor"
    Identifier "Monitor"
    HorizSync 1.0-2000.0
    VertRefresh 1.0-1000.0
EndSection
Section "Screen"
    Identifier "Screen"
    Device "Card"
    Monitor "Monitor"
    DefaultDepth 24
EndSection
)"_s;

void writeFile(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

void sendSignal(const QProcess &process, int signal)
{
    ::kill(static_cast<pid_t>(process.processId()), signal);
}

QString freshConnectionName()
{
    static int count = 0;
    return u"desktop-lab-%1"_s.arg(++count);
}

} // namespace

DesktopLab::DesktopLab()
    : DesktopLab(Options())
{
}

DesktopLab::DesktopLab(const Options &options)
    : m_environment(QProcessEnvironment::systemEnvironment())
    , m_bus(QString())
{
    for (const char *const name : {"WAYLAND_DISPLAY", "DISPLAY", "XAUTHORITY", "XDG_CURRENT_DESKTOP",
             "DESKTOP_SESSION", "KDE_FULL_SESSION", "KDE_SESSION_VERSION", "GNOME_DESKTOP_SESSION_ID",
             "GNOME_KEYRING_CONTROL", "SSH_AUTH_SOCK", "QT_NO_GLIB", "QT_QPA_PLATFORM"})
        m_environment.remove(QLatin1StringView(name));
    const auto makeFolder = [&](const QString &variable, const QString &name) {
        if (!QDir().mkpath(path(name))
            || !QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qFatal("cannot make %s", qPrintable(path(name)));
        m_environment.insert(variable, path(name));
    };
    makeFolder(u"HOME"_s, u"home"_s);
    makeFolder(u"XDG_CONFIG_HOME"_s, u"config"_s);
    makeFolder(u"XDG_DATA_HOME"_s, u"data"_s);
    makeFolder(u"XDG_STATE_HOME"_s, u"state"_s);
    makeFolder(u"XDG_CACHE_HOME"_s, u"cache"_s);
    makeFolder(u"XDG_RUNTIME_DIR"_s, u"runtime"_s);
    // The prompter is a GTK program, which would go and look for services that are not here.
    m_environment.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    m_environment.insert(u"NO_AT_BRIDGE"_s, u"1"_s);

    if (options.hasDisplay)
        startDisplay(options.monitors);
    startBus(options);
}

DesktopLab::~DesktopLab()
{
    for (auto &[name, service] : m_services)
        end(service, SIGKILL);
    end(m_monitor, SIGKILL);
    end(m_keyring, SIGKILL);
    const QString name = m_bus.name();
    m_bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(name);
    end(m_busDaemon, SIGKILL);
    end(m_display, SIGTERM); // it has a lock and a socket to take away
}

std::unique_ptr<QProcess> DesktopLab::makeChild(const QString &name) const
{
    auto child = std::make_unique<QProcess>();
    child->setProcessEnvironment(m_environment);
    child->setStandardErrorFile(path(name + u".err"_s));
    const pid_t parent = ::getpid();
    child->setChildProcessModifier([parent] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(1);
    });
    return child;
}

QByteArray DesktopLab::wordsOf(const QString &name) const
{
    QFile words(path(name + u".err"_s));
    return words.open(QIODevice::ReadOnly) ? words.readAll() : QByteArray();
}

void DesktopLab::start(QProcess &child, const QString &program, const QStringList &arguments)
{
    child.start(program, arguments);
    if (!child.waitForStarted(patience))
        qFatal("cannot start %s: %s", qPrintable(program), qPrintable(child.errorString()));
}

void DesktopLab::end(std::unique_ptr<QProcess> &child, int signal)
{
    if (!child)
        return;
    if (child->state() != QProcess::NotRunning) {
        sendSignal(*child, signal);
        sendSignal(*child, SIGCONT);
        if (!child->waitForFinished(patience))
            child->kill();
    }
    child.reset();
}

void DesktopLab::await(const char *what, const std::function<bool()> &isSo)
{
    if (!QTest::qWaitFor(isSo, patience))
        qFatal("waited in vain for: %s", what);
}

// ---- display ---------------------------------------------------------------------------------------------

void DesktopLab::startDisplay(const QList<QRect> &monitors)
{
    if (monitors.size() == 1) {
        const QSize size = monitors.constFirst().size();
        startServer(u"Xvfb"_s, {u"-screen"_s, u"0"_s, u"%1x%2x24"_s.arg(size.width()).arg(size.height())});
        return;
    }
    // The server for tests has one output only.
    writeFile(path(u"display.conf"_s), cardlessConfiguration);
    startServer(u"/usr/lib/xorg/Xorg"_s,
        {u"-config"_s, path(u"display.conf"_s), u"-logfile"_s, path(u"display.log"_s), u"-novtswitch"_s});
    plugIn(monitors);
}

void DesktopLab::startServer(const QString &program, const QStringList &arguments)
{
    m_display = makeChild(u"display"_s);
    // By itself it begins anew when its last client leaves, and turns away whoever comes meanwhile. And it
    // repeats a key where whoever pressed it has no processor to let it go in time.
    start(*m_display, program,
        QStringList{u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s, u"-noreset"_s, u"-r"_s} + arguments);
    QByteArray number;
    await("the X server", [&] {
        if (m_display->state() == QProcess::NotRunning)
            qFatal("%s ended: %s", qPrintable(program), wordsOf(u"display"_s).constData());
        number += m_display->readAllStandardOutput();
        return number.endsWith('\n');
    });
    m_environment.insert(u"DISPLAY"_s, u':' + QString::fromLatin1(number.trimmed()));
}

void DesktopLab::plugIn(const QList<QRect> &monitors)
{
    QStringList arrangement;
    for (int i = 0; i < monitors.size(); ++i) {
        const QRect &place = monitors[i];
        const QString output = u"DUMMY%1"_s.arg(i);
        const QString mode = u"%1x%2"_s.arg(place.width()).arg(place.height());
        if (i > 0) // the first one knows the usual modes
            run(u"xrandr"_s, {u"--addmode"_s, output, mode});
        arrangement += {
            u"--output"_s, output, u"--mode"_s, mode, u"--pos"_s, u"%1x%2"_s.arg(place.x()).arg(place.y())};
    }
    run(u"xrandr"_s, arrangement);
    // Which outputs have a monitor the server finds out when it is asked to look.
    run(u"xrandr"_s, {u"--query"_s});
}

QByteArray DesktopLab::searchPrompt(const QStringList &doing) const
{
    QProcess search;
    search.setProcessEnvironment(m_environment);
    search.start(
        u"xdotool"_s, QStringList{u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"gcr-prompter"_s} + doing);
    search.waitForFinished(patience);
    return search.exitCode() == 0 ? search.readAllStandardOutput().trimmed() : QByteArray();
}

bool DesktopLab::isPromptShown() const
{
    return !searchPrompt().isEmpty();
}

/// Until its window has the keyboard: what is typed before that is lost. The prompt takes it by itself, but
/// nobody can see when; there is no window manager that would give it.
void DesktopLab::awaitPrompt()
{
    awaitOnBus(prompterName);
    await("the prompt's window",
        [&] { return !searchPrompt({u"windowfocus"_s, u"getwindowfocus"_s}).isEmpty(); });
}

/// Until its window is gone, the next prompt could be taken for this one, and what is typed would be lost.
void DesktopLab::awaitPromptGone()
{
    await("the end of the prompt's window", [&] { return !isPromptShown(); });
}

void DesktopLab::tryAtPrompt(const QString &text)
{
    awaitPrompt();
    run(u"xdotool"_s, {u"type"_s, text});
    run(u"xdotool"_s, {u"key"_s, u"Return"_s});
}

void DesktopLab::answerPrompt(const QString &text)
{
    tryAtPrompt(text);
    awaitPromptGone();
}

void DesktopLab::choosePassword(const QString &password)
{
    awaitPrompt();
    run(u"xdotool"_s, {u"type"_s, password});
    run(u"xdotool"_s, {u"key"_s, u"Tab"_s});
    run(u"xdotool"_s, {u"type"_s, password});
    run(u"xdotool"_s, {u"key"_s, u"Return"_s});
    awaitPromptGone();
}

void DesktopLab::dismissPrompt()
{
    awaitPrompt();
    run(u"xdotool"_s, {u"key"_s, u"Escape"_s});
    awaitPromptGone();
}

bool DesktopLab::hasMisreadPassword() const
{
    return wordsOf(u"keyring"_s).contains("Cannot import an invalid key");
}

void DesktopLab::killPrompter()
{
    awaitPrompt();
    const QDBusReply<uint> prompter = m_bus.interface()->servicePid(prompterName);
    ::kill(static_cast<pid_t>(prompter.value()), SIGKILL);
    await("the prompter to be gone", [this] { return !isOnBus(prompterName); });
    awaitPromptGone();
}

// ---- bus -------------------------------------------------------------------------------------------------

QString DesktopLab::busConfiguration(const Options &options) const
{
    return u"<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           "  \"http:\x2F/www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>unix:path=%1</listen><auth>EXTERNAL</auth>\n"
           "<servicedir>%2</servicedir><policy context=\"default\">\n"
           "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>\n"
           "%3</policy></busconfig>\n"_s.arg(path(u"runtime/bus"_s), path(u"services"_s), options.busPolicy);
}

void DesktopLab::writeServiceFile(const QString &name, const QString &command) const
{
    writeFile(path(u"services/"_s + name + u".service"_s),
        u"[D-BUS Service]\nName=%1\nExec=%2\n"_s.arg(name, command));
}

void DesktopLab::offerService(const QString &name, const QString &command)
{
    writeServiceFile(name, command);
    const QDBusMessage reload = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"ReloadConfig"_s);
    if (m_bus.call(reload).type() != QDBusMessage::ReplyMessage)
        qFatal("the bus does not read its configuration anew");
}

void DesktopLab::startBus(const Options &options)
{
    QDir().mkpath(path(u"services"_s));
    if (options.hasDisplay)
        writeServiceFile(prompterName, u"/usr/libexec/gcr-prompter"_s);
    if (!options.keyringCommand.isEmpty())
        writeServiceFile(keyringName, options.keyringCommand);
    writeFile(path(u"bus.conf"_s), busConfiguration(options));

    m_busDaemon = makeChild(u"bus"_s);
    start(*m_busDaemon, u"dbus-daemon"_s,
        {u"--config-file="_s + path(u"bus.conf"_s), u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s});
    QByteArray address;
    await("the session bus", [&] {
        address += m_busDaemon->readAllStandardOutput();
        return address.endsWith('\n');
    });
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromLatin1(address.trimmed()));
    m_bus = QDBusConnection::connectToBus(QString::fromLatin1(address.trimmed()), freshConnectionName());
    if (!m_bus.isConnected())
        qFatal("cannot connect to the session bus");
}

void DesktopLab::startMonitor()
{
    m_monitor = makeChild(u"monitor"_s);
    start(*m_monitor, u"dbus-monitor"_s, {u"--session"_s});
    // It is not told that it is one; it sees what is sent from then on.
    await("the monitor", [this] {
        m_bus.send(QDBusMessage::createSignal(u"/monitor"_s, u"app.orbitledge.Test"_s, u"IsThere"_s));
        QTest::qWait(10);
        m_monitored += m_monitor->readAllStandardOutput();
        return m_monitored.contains("member=IsThere");
    });
}

QByteArray DesktopLab::monitored()
{
    // The bus keeps the order: what was sent before this has been seen when this is.
    static int count = 0;
    const QString mark = u"Mark%1Seen"_s.arg(++count);
    m_bus.send(QDBusMessage::createSignal(u"/monitor"_s, u"app.orbitledge.Test"_s, mark));
    await("the monitor to catch up", [&] {
        m_monitored += m_monitor->readAllStandardOutput();
        return m_monitored.contains("member=" + mark.toLatin1());
    });
    return m_monitored;
}

void DesktopLab::awaitCall(const QByteArray &method)
{
    await(method.constData(), [&] {
        m_monitored += m_monitor->readAllStandardOutput();
        return m_monitored.contains("member=" + method);
    });
}

bool DesktopLab::isOnBus(const QString &name) const
{
    return m_bus.interface()->isServiceRegistered(name);
}

void DesktopLab::awaitOnBus(const QString &name) const
{
    await(qPrintable(name), [&] { return isOnBus(name); });
}

void DesktopLab::pauseBus()
{
    sendSignal(*m_busDaemon, SIGSTOP);
}

void DesktopLab::resumeBus()
{
    sendSignal(*m_busDaemon, SIGCONT);
}

// ---- keyring and others ----------------------------------------------------------------------------------

void DesktopLab::startKeyring(Keyring state)
{
    m_keyring = makeChild(u"keyring"_s);
    m_keyring->setStandardOutputFile(QProcess::nullDevice());
    QStringList arguments{u"--foreground"_s, u"--components=secrets"_s};
    if (state == Keyring::Unlocked)
        arguments.append(u"--unlock"_s);
    start(*m_keyring, u"gnome-keyring-daemon"_s, arguments);
    if (state == Keyring::Unlocked)
        m_keyring->write(keyringPassword().toUtf8());
    m_keyring->closeWriteChannel();
    awaitOnBus(keyringName);
}

void DesktopLab::stopKeyring()
{
    end(m_keyring, SIGTERM);
    awaitKeyringGone();
}

void DesktopLab::pauseKeyring()
{
    sendSignal(*m_keyring, SIGSTOP);
}

void DesktopLab::resumeKeyring()
{
    sendSignal(*m_keyring, SIGCONT);
}

void DesktopLab::killKeyring()
{
    end(m_keyring, SIGKILL);
    awaitKeyringGone();
}

/// Until the bus knows, the next one could be taken for it.
void DesktopLab::awaitKeyringGone()
{
    await("the keyring to be gone", [this] { return !isOnBus(keyringName); });
}

QString DesktopLab::defaultKeyringCommand()
{
    return u"/usr/bin/gnome-keyring-daemon --start --foreground --components=secrets"_s;
}

void DesktopLab::startService(const QString &name, const QString &program, const QStringList &arguments)
{
    startProgram(name, program, arguments, [&] { return isOnBus(name); });
}

void DesktopLab::startProgram(const QString &name, const QString &program, const QStringList &arguments,
    const std::function<bool()> &isUp)
{
    std::unique_ptr<QProcess> &service = m_services[name];
    service = makeChild(name);
    service->setStandardOutputFile(QProcess::nullDevice());
    start(*service, program, arguments);
    await(qPrintable(name), [&] {
        if (service->state() == QProcess::NotRunning)
            qFatal("%s ended: %s", qPrintable(program), wordsOf(name).constData());
        return isUp();
    });
}

void DesktopLab::pauseService(const QString &name)
{
    sendSignal(*m_services.at(name), SIGSTOP);
}

void DesktopLab::resumeService(const QString &name)
{
    sendSignal(*m_services.at(name), SIGCONT);
}

void DesktopLab::killService(const QString &name)
{
    end(m_services.at(name), SIGKILL);
    await("the service to be gone", [&] { return !isOnBus(name); });
}

QByteArray DesktopLab::run(const QString &program, const QStringList &arguments, const QByteArray &input)
{
    const std::unique_ptr<QProcess> child = makeChild(u"run"_s);
    start(*child, program, arguments);
    child->write(input);
    child->closeWriteChannel();
    if (!child->waitForFinished(patience) || child->exitStatus() != QProcess::NormalExit
        || child->exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program), wordsOf(u"run"_s).constData());
    return child->readAllStandardOutput();
}

} // namespace orbitledge::testing
