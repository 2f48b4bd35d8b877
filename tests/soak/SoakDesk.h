#pragma once

#include "soak/FaultProxy.h"
#include "soak/NotificationLog.h"
#include "soak/PingWatch.h"
#include "soak/SoakPlan.h"
#include "support/Dunst.h"
#include "support/ProgramDesk.h"

#include <QElapsedTimer>

#include <list>
#include <optional>

namespace orbitledge::testing {

/// The program in a desktop where everything around it can fail, and a person who goes on using it. What
/// fails here is told as `problem`.
class SoakDesk {
public:
    SoakDesk();
    ~SoakDesk();
    SoakDesk(const SoakDesk &) = delete;
    SoakDesk &operator=(const SoakDesk &) = delete;

    void perform(const SoakPlan::Move &move);
    /// Mends everything, and signs in.
    void heal();
    /// Ends the program in order.
    void quit();

    /// The first thing that went wrong with the program; empty while nothing did.
    [[nodiscard]] const QString &problem() const { return m_problem; }

    [[nodiscard]] qint64 process() const
    {
        return m_session.program() ? m_session.program()->processId() : 0;
    }
    [[nodiscard]] bool isRunning() const;
    /// How many times it was started.
    [[nodiscard]] int lives() const { return m_lives; }
    [[nodiscard]] int kills() const { return m_kills; }
    /// What the program of this life said on its standard error.
    [[nodiscard]] QByteArray words() const;
    /// Looks at the commands that were given; true where none is under way.
    bool collectCommands();
    /// Of those that ended: how many, and how many could not do what they were to.
    [[nodiscard]] std::pair<int, int> commands() const { return {m_commands, m_refusals}; }

    [[nodiscard]] QString path(const QString &name) { return m_session.lab().path(name); }
    [[nodiscard]] QString cacheFile()
    {
        return path(QStringLiteral("data/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"));
    }
    [[nodiscard]] QString remindersFile()
    {
        return path(QStringLiteral("state/app.orbitledge.Orbitledge/reminders.json"));
    }
    [[nodiscard]] FaultProxy &proxy() { return m_proxy; }
    [[nodiscard]] NotificationLog &notifications() { return *m_notifications; }
    [[nodiscard]] PingWatch &pings() { return *m_pings; }
    /// What nobody may see.
    [[nodiscard]] QByteArrayList secrets() const;
    void keepPicture(const QString &name) { m_session.keepPicture(name); }

private:
    struct Command {
        std::unique_ptr<QProcess> process;
        QString name;
        qint64 begin = 0;
    };

    static QString barePath();
    void bringUpSession();
    void wantReminders();
    void start();
    void kill();
    void note(const QString &problem);
    void give(const QStringList &arguments, const QByteArray &input = {});
    void take(Command &command);
    void setWeather(SoakPlan::Step step);
    void bringServiceBack();
    void bringKeyringBack();
    void lockKeyring();
    void bringDaemonBack();
    void setClock(int days);
    void ask(const QString &action);
    void clickIcon();
    /// Whether the person could type into the panel now; waits for that a moment.
    bool isPanelReady(int patience);
    [[nodiscard]] QString focusedTitle();
    void press(const QStringList &keys);
    void cancelFirst();
    void addByForm();
    void addElsewhere();
    void replyToPrompt(const QStringList &how);

    QString m_problem;
    FaultProxy m_proxy;
    ProgramDesk m_session;
    Dunst m_dunst{m_session.lab()};
    std::optional<NotificationLog> m_notifications;
    std::optional<PingWatch> m_pings;
    std::list<Command> m_givenCommands;
    int m_commands = 0;
    int m_refusals = 0;
    int m_lives = 0;
    int m_kills = 0;
    bool m_isDaemonThere = true;
    bool m_isDaemonPaused = false;
    bool m_isBarThere = true;
    QByteArray m_cookie;
    int m_added = 0;
    std::list<QByteArray> m_elsewhere;
};

} // namespace orbitledge::testing
