#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace orbitledge::testing {

/// A desktop session of a test's own: home and XDG folders, a session bus, and on demand GNOME's keyring, an
/// X server without a screen, and services that a test brings along. It knows nothing of the machine's
/// session, needs no rights, and any number of them run side by side.
///
/// The test itself stays outside: what is tested runs as a child in `environment()`, since a process is bound
/// to one session bus for its life. A bus and an unlocked keyring for a child are no more than
///
///     DesktopLab lab;
///     lab.startKeyring(DesktopLab::Keyring::Unlocked);
///     QProcess program;
///     program.setProcessEnvironment(lab.environment());
///
/// Everything that was started ends with the object, by its process id, and also when the test crashes: the
/// kernel ends the children with their parent, and what the bus started ends with the bus. What does not come
/// up in time ends the test at once. Needs an event loop, since it waits for conditions.
class DesktopLab {
public:
    struct Options {
        /// An X server, and the program that shows the keyring's prompts, which the bus starts when it is
        /// needed.
        bool hasDisplay = false;
        /// Where the monitors of that server are on its screen, in pixels; their sizes are ones that monitors
        /// have. More than one needs the server that people have, without a card.
        QList<QRect> monitors = {QRect(0, 0, 1024, 768)};
        /// What the bus runs when somebody asks for a keyring that is not there; nothing where this is empty.
        QString keyringCommand = QString();
        /// More rules for the bus, as elements of its default policy.
        QString busPolicy = QString();
    };

    DesktopLab();
    explicit DesktopLab(const Options &options);
    ~DesktopLab();
    DesktopLab(const DesktopLab &) = delete;
    DesktopLab &operator=(const DesktopLab &) = delete;

    /// For children that are to live in the session.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }

    /// A folder for the test's files, which goes with the session.
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

    // ---- the keyring ----

    enum class Keyring { Unlocked, Locked };

    /// The first start makes a keyring with the password; a later one finds what is in it.
    void startKeyring(Keyring state);
    static QString keyringPassword() { return QStringLiteral("correct horse"); }
    void stopKeyring();

    /// A command for the bus that starts the keyring, locked.
    static QString defaultKeyringCommand();

    /// It says nothing any more, but is still there, until it goes on.
    void pauseKeyring();
    void resumeKeyring();
    /// It ends from one moment to the next, whatever it is doing.
    void killKeyring();

    // ---- the person before the screen; for labs with a display ----

    void awaitPrompt();
    /// Waits for a prompt, types, and presses the enter key; the prompt may stay.
    void tryAtPrompt(const QString &text);
    /// The same, and waits until the prompt is gone, as it is after the right answer.
    void answerPrompt(const QString &text);
    /// The same for the prompt that wants a new password, twice.
    void choosePassword(const QString &password);
    void dismissPrompt();
    /// GNOME's keyring and the program that shows its prompts agree on a key for what the person types, and
    /// do not always agree: about one time in 256 the keyring cannot read a new password, says so, and calls
    /// the prompt dismissed. Has the running one ever said so?
    [[nodiscard]] bool hasMisreadPassword() const;
    /// Waits for a prompt, and ends the program that shows it.
    void killPrompter();

    // ---- the bus ----

    /// Keeps what passes over the bus from now on. Call it once.
    void startMonitor();
    /// What passed up to now, as dbus-monitor prints it.
    QByteArray monitored();
    /// Waits until a call of this method was seen.
    void awaitCall(const QByteArray &method);

    [[nodiscard]] bool isOnBus(const QString &name) const;
    void awaitOnBus(const QString &name) const;

    /// The test's own connection to this bus.
    [[nodiscard]] QDBusConnection bus() const { return m_bus; }
    [[nodiscard]] QString busAddress() const
    {
        return m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    }
    /// Makes it this process's session bus, of which a process has one for its life.
    void adoptBus() const { qputenv("DBUS_SESSION_BUS_ADDRESS", busAddress().toUtf8()); }

    void pauseBus();
    void resumeBus();

    // ---- other programs in the session ----

    /// Starts a program that then answers for `name` on the bus.
    void startService(const QString &name, const QString &program, const QStringList &arguments);
    /// Starts a program that has no name on the bus, and waits until `isUp`.
    void startProgram(const QString &name, const QString &program, const QStringList &arguments,
        const std::function<bool()> &isUp);
    void pauseService(const QString &name);
    void resumeService(const QString &name);
    void killService(const QString &name);

    /// Has the bus start a program when somebody asks for `name`.
    void offerService(const QString &name, const QString &command);

    /// Runs a program to its end, which has to be a good one, and returns what it printed.
    QByteArray run(const QString &program, const QStringList &arguments, const QByteArray &input = {});

    /// Waits until it is so, and ends the test where that takes too long.
    static void await(const char *what, const std::function<bool()> &isSo);

private:
    /// A child that ends with this process; its words are kept in a file of the folder.
    std::unique_ptr<QProcess> makeChild(const QString &name) const;
    /// What a child said on its standard error.
    [[nodiscard]] QByteArray wordsOf(const QString &name) const;
    static void start(QProcess &child, const QString &program, const QStringList &arguments);
    static void end(std::unique_ptr<QProcess> &child, int signal);
    void startDisplay(const QList<QRect> &monitors);
    void startServer(const QString &program, const QStringList &arguments);
    void plugIn(const QList<QRect> &monitors);
    /// The window of the prompt, after `doing` that with it; empty where there is none.
    [[nodiscard]] QByteArray searchPrompt(const QStringList &doing = {}) const;
    [[nodiscard]] bool isPromptShown() const;
    void awaitPromptGone();
    void awaitKeyringGone();
    void startBus(const Options &options);
    void writeServiceFile(const QString &name, const QString &command) const;
    [[nodiscard]] QString busConfiguration(const Options &options) const;

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QDBusConnection m_bus;
    std::unique_ptr<QProcess> m_display;
    std::unique_ptr<QProcess> m_busDaemon;
    std::unique_ptr<QProcess> m_keyring;
    std::unique_ptr<QProcess> m_monitor;
    QByteArray m_monitored;
    std::map<QString, std::unique_ptr<QProcess>> m_services;
};

} // namespace orbitledge::testing
