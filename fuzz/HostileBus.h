#pragma once

#include "Require.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QCoroTimer>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/prctl.h>

#include <csignal>
#include <cstdint>
#include <span>

namespace orbitledge::fuzz {

/// A secret as it crosses the bus, of the signature (oayays).
struct BusSecret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString type;
};
inline QDBusArgument &operator<<(QDBusArgument &argument, const BusSecret &secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.type;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument &operator>>(const QDBusArgument &argument, BusSecret &secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.type;
    argument.endStructure();
    return argument;
}

} // namespace orbitledge::fuzz

Q_DECLARE_METATYPE(orbitledge::fuzz::BusSecret)

namespace orbitledge::fuzz {

using BusSecrets = QMap<QDBusObjectPath, BusSecret>;
using SettingGroups = QMap<QString, QVariantMap>;

/// What is said, made from bytes. Where they are used up, it is all zero and empty.
class BusWords {
public:
    explicit BusWords(std::span<const std::uint8_t> bytes)
        : m_rest(bytes)
    {
    }

    [[nodiscard]] bool isOver() const { return m_rest.empty(); }

    std::uint8_t byte()
    {
        if (m_rest.empty())
            return 0;
        const std::uint8_t first = m_rest.front();
        m_rest = m_rest.subspan(1);
        return first;
    }
    quint64 number(int bytes)
    {
        quint64 value = 0;
        for (int i = 0; i < bytes; ++i)
            value = value << 8U | byte();
        return value;
    }
    QByteArray bytes()
    {
        const std::size_t wished = byte();
        const auto taken = m_rest.first(std::min(wished, m_rest.size()));
        m_rest = m_rest.subspan(taken.size());
        return {reinterpret_cast<const char *>(taken.data()), static_cast<qsizetype>(taken.size())};
    }
    /// The bus carries no zeros in texts, and nothing but UTF-8.
    QString text()
    {
        QString text = QString::fromUtf8(bytes());
        text.remove(QChar(0));
        return text;
    }
    QDBusObjectPath path()
    {
        switch (const std::uint8_t kind = byte(); kind % 4) {
        case 0:
            return QDBusObjectPath("/");
        case 1:
            return QDBusObjectPath("/org/freedesktop/secrets/collection/login");
        case 2:
            return QDBusObjectPath(QStringLiteral("/p/%1").arg(kind));
        default:
            return QDBusObjectPath(QStringLiteral("/org/freedesktop/secrets/collection/login/%1").arg(kind));
        }
    }
    QList<QDBusObjectPath> paths()
    {
        QList<QDBusObjectPath> all;
        for (int count = byte() % 4; count > 0; --count)
            all.append(path());
        return all;
    }
    QStringList texts()
    {
        QStringList all;
        for (int count = byte() % 4; count > 0; --count)
            all.append(text());
        return all;
    }
    QVariantMap map(int depth)
    {
        QVariantMap all;
        for (int count = byte() % 4; count > 0; --count) {
            const QString key = knownKey();
            all.insert(key, value(depth + 1));
        }
        return all;
    }
    SettingGroups groups()
    {
        SettingGroups all;
        for (int count = byte() % 4; count > 0; --count) {
            const QString key = knownKey();
            all.insert(key, map(1));
        }
        return all;
    }
    BusSecrets secrets()
    {
        BusSecrets all;
        for (int count = byte() % 3; count > 0; --count) {
            const QDBusObjectPath item = path();
            BusSecret secret;
            secret.session = path();
            secret.parameters = bytes();
            secret.value = bytes();
            secret.type = text();
            all.insert(item, secret);
        }
        return all;
    }

    /// Of any type that the bus has, nearly.
    QVariant value(int depth = 0)
    {
        const int kinds = depth < 3 ? 18 : 10;
        switch (byte() % kinds) {
        case 0:
            return byte() % 2 == 1;
        case 1:
            return QVariant::fromValue(byte());
        case 2:
            return QVariant::fromValue(static_cast<short>(number(2)));
        case 3:
            return static_cast<int>(number(4));
        case 4:
            return static_cast<uint>(number(byte() % 5));
        case 5:
            return static_cast<qlonglong>(number(8));
        case 6:
            return static_cast<qulonglong>(number(8));
        case 7:
            return std::bit_cast<double>(number(8));
        case 8:
            return text();
        case 9:
            return QVariant::fromValue(path());
        case 10:
            return QVariant::fromValue(QDBusVariant(value(depth + 1)));
        case 11:
            return texts();
        case 12:
            return map(depth);
        case 13:
            return bytes();
        case 14:
            return QVariant::fromValue(paths());
        case 15:
            return QVariant::fromValue(secrets());
        case 16:
            return QVariant::fromValue(groups());
        default:
            return QVariant::fromValue(QDBusSignature(QStringLiteral("a{sv}")));
        }
    }

private:
    QString knownKey()
    {
        static const QStringList keys{QStringLiteral("org.freedesktop.appearance"),
            QStringLiteral("color-scheme"), QStringLiteral("contrast"),
            QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("text-scaling-factor"),
            QStringLiteral("enable-animations"), QStringLiteral("org.gnome.desktop.a11y.interface"),
            QStringLiteral("high-contrast"), QStringLiteral("done"), QStringLiteral("problem"),
            QStringLiteral("subscriptions")};
        const std::uint8_t choice = byte();
        return choice < 2 * keys.size() ? keys.at(choice % keys.size()) : text();
    }

    std::span<const std::uint8_t> m_rest;
};

/// A session bus of our own, on which one process has all the names that the program knows and says what it
/// is given. The program and this process are the same one here, and talk over the bus nevertheless.
class HostileBus : public QDBusVirtualObject {
public:
    static inline const QString applicationName = QStringLiteral("app.example.Other");

    HostileBus()
    {
        qDBusRegisterMetaType<BusSecret>();
        qDBusRegisterMetaType<BusSecrets>();
        qDBusRegisterMetaType<SettingGroups>();
        qDBusRegisterMetaType<QList<QDBusObjectPath>>();
        startDaemon();
        appear();
    }

    void begin(std::span<const std::uint8_t> bytes)
    {
        m_words = BusWords(bytes);
        m_unanswered.clear();
        m_prompts.clear();
    }

    /// Until it is done. After a while the others are through with everything that a person may take any time
    /// for, and then nobody has a reason to wait.
    void runUntil(const bool &isDone)
    {
        constexpr int whileThere = 150; // milliseconds
        constexpr int afterwards = 20000;
        turn(isDone, whileThere);
        m_words = BusWords({});
        for (const QDeadlineTimer deadline(afterwards); !isDone && !deadline.hasExpired();) {
            finish();
            turn(isDone, 20);
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// When everything has been said.
    QCoro::Task<void> quiet()
    {
        QTimer timer;
        for (int turns = 0; turns < 20 && !m_words.isOver(); ++turns) {
            say();
            timer.start(1);
            co_await timer;
        }
    }

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const std::uint8_t manner = m_words.byte();
        constexpr std::uint8_t asExpected = 0x90;
        constexpr std::uint8_t anything = 0xD0;
        constexpr std::uint8_t refusal = 0xF4;
        if (manner < asExpected)
            connection.send(message.createReply(expected(message.member())));
        else if (manner < anything)
            connection.send(message.createReply(values()));
        else if (manner < refusal)
            connection.send(message.createErrorReply(errorName(), m_words.text()));
        else
            m_unanswered.append(message);
        if (message.member() == u"Prompt")
            m_prompts.append(message.path());
        if (manner % 4 == 3)
            say();
        return true;
    }

private:
    void startDaemon()
    {
        static int count = 1;
        static char name[] = "bus";
        static char *words[] = {name, nullptr};
        static const QCoreApplication application(count, words);
        QFile file(m_folder.filePath(QStringLiteral("bus.conf")));
        require(file.open(QFile::WriteOnly), "there is room for a file");
        file.write("<busconfig><type>session</type><listen>unix:path="
            + m_folder.filePath(QStringLiteral("bus")).toUtf8()
            + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
              "eavesdrop=\"true\"/>"
              "<allow eavesdrop=\"true\"/>"
              "<allow own=\"*\"/></policy></busconfig>");
        file.close();
        m_daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_daemon.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--config-file=") + file.fileName(), QStringLiteral("--nofork"),
                QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
        require(m_daemon.waitForReadyRead(), "there is a bus");
        const QByteArray address = m_daemon.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        m_others = QDBusConnection::connectToBus(QString::fromUtf8(address), QStringLiteral("others"));
        require(QDBusConnection::sessionBus().isConnected(), "the bus is reached");
    }

    void appear()
    {
        require(m_others.isConnected(), "the bus is reached again");
        m_others.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        for (const char *service : {"org.freedesktop.secrets", "org.kde.kwalletd5",
                 "org.freedesktop.Notifications", "org.freedesktop.portal.Desktop",
                 "org.freedesktop.systemd1", "org.xfce.Xfconf", "org.kde.StatusNotifierWatcher"})
            m_others.registerService(QString::fromLatin1(service));
        m_others.registerService(applicationName);
    }

    /// Answers what was not, and ends what is on the screen.
    void finish()
    {
        for (const QDBusMessage &message : std::exchange(m_unanswered, {}))
            m_others.send(message.createErrorReply(errorName(), QString()));
        for (const QString &prompt : std::exchange(m_prompts, {})) {
            QDBusMessage signal = QDBusMessage::createSignal(
                prompt, QStringLiteral("org.freedesktop.Secret.Prompt"), QStringLiteral("Completed"));
            signal << true << QVariant::fromValue(QDBusVariant(QString()));
            m_others.send(signal);
        }
    }

    static void turn(const bool &isDone, int milliseconds)
    {
        const QDeadlineTimer deadline(milliseconds);
        while (!isDone && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }

    QVariantList values()
    {
        QVariantList all;
        for (int count = m_words.byte() % 4; count > 0; --count)
            all.append(m_words.value());
        return all;
    }

    /// What a sound service would say, with other contents.
    QVariantList expected(const QString &member)
    {
        const auto path = [this] { return QVariant::fromValue(m_words.path()); };
        const auto paths = [this] { return QVariant::fromValue(m_words.paths()); };
        const auto variant = [this] { return QVariant::fromValue(QDBusVariant(m_words.value(1))); };
        if (member == u"SearchItems")
            return {paths(), paths()};
        if (member == u"Unlock")
            return {paths(), path()};
        if (member == u"CreateCollection" || member == u"CreateItem")
            return {path(), path()};
        if (member == u"OpenSession")
            return {variant(), path()};
        if (member == u"GetSecrets")
            return {QVariant::fromValue(m_words.secrets())};
        if (member == u"ReadAll")
            return {QVariant::fromValue(m_words.groups())};
        if (member == u"ReadAlias" || member == u"Delete" || member == u"RestartUnit" || member == u"StopUnit"
            || member == u"GetUnit" || member == u"LoadUnit")
            return {path()};
        if (member == u"Get" || member == u"GetProperty" || member == u"Read")
            return {variant()};
        if (member == u"GetCapabilities" || member == u"users")
            return {m_words.texts()};
        if (member == u"GetServerInformation")
            return {m_words.text(), m_words.text(), m_words.text(), m_words.text()};
        if (member == u"Notify")
            return {static_cast<uint>(m_words.number(2))};
        if (member == u"isEnabled" || member == u"isOpen" || member == u"keyDoesNotExist")
            return {m_words.byte() % 2 == 1};
        if (member == u"networkWallet" || member == u"readPassword")
            return {m_words.text()};
        if (member == u"open" || member == u"entryType" || member == u"writePassword"
            || member == u"removeEntry" || member == u"writeEntry")
            return {static_cast<int>(m_words.byte() % 4)};
        if (member == u"Refresh" || member == u"SignIn" || member == u"SignOut")
            return {m_words.byte() % 2 == 1, m_words.text(), static_cast<qlonglong>(m_words.number(8))};
        return {};
    }

    QString errorName()
    {
        static const QStringList names{QStringLiteral("org.freedesktop.Secret.Error.NoSuchObject"),
            QStringLiteral("org.freedesktop.Secret.Error.IsLocked"),
            QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"),
            QStringLiteral("org.freedesktop.DBus.Error.UnknownObject"),
            QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
            QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
            QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"),
            QStringLiteral("org.freedesktop.systemd1.NoSuchUnit"),
            QStringLiteral("app.orbitledge.Orbitledge.Error.OtherPlace"), QStringLiteral("a.b")};
        return names.at(m_words.byte() % names.size());
    }

    /// Something that nobody asked for.
    void say()
    {
        static constexpr std::array<std::array<const char *, 3>, 7> signals_{{
            {"/org/freedesktop/secrets/collection/login", "org.freedesktop.Secret.Prompt", "Completed"},
            {"/", "org.freedesktop.Secret.Prompt", "Completed"},
            {"/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked"},
            {"/org/freedesktop/Notifications", "org.freedesktop.Notifications", "NotificationClosed"},
            {"/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActivationToken"},
            {"/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged"},
            {"/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", "JobRemoved"},
        }};
        const auto &[path, interface, member] = signals_.at(m_words.byte() % signals_.size());
        const QDBusObjectPath prompt = m_words.path();
        QDBusMessage signal = QDBusMessage::createSignal(
            member == QByteArrayView("Completed") ? prompt.path() : QString::fromLatin1(path),
            QString::fromLatin1(interface), QString::fromLatin1(member));
        const bool isAsExpected = m_words.byte() < 0xC0;
        if (!isAsExpected)
            signal.setArguments(values());
        else if (member == QByteArrayView("Completed"))
            signal << (m_words.byte() % 2 == 1) << QVariant::fromValue(QDBusVariant(m_words.value(1)));
        else if (member == QByteArrayView("ActionInvoked") || member == QByteArrayView("ActivationToken"))
            signal << static_cast<uint>(m_words.number(2)) << m_words.text();
        else if (member == QByteArrayView("NotificationClosed"))
            signal << static_cast<uint>(m_words.number(2)) << static_cast<uint>(m_words.byte());
        else if (member == QByteArrayView("SettingChanged"))
            signal << QStringLiteral("org.gnome.desktop.interface") << QStringLiteral("text-scaling-factor")
                   << QVariant::fromValue(QDBusVariant(m_words.value(1)));
        else
            signal << static_cast<uint>(m_words.byte()) << QVariant::fromValue(prompt) << m_words.text()
                   << m_words.text();
        m_others.send(signal);
    }

    QTemporaryDir m_folder;
    QProcess m_daemon;
    QDBusConnection m_others{QString()};
    QList<QDBusMessage> m_unanswered;
    QStringList m_prompts;
    BusWords m_words{{}};
};

} // namespace orbitledge::fuzz
