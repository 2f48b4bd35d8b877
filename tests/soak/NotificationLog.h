#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace orbitledge::testing {

/// What passes over a session bus, as far as it is about notifications; and whether something passes there
/// that nobody should see. Times are milliseconds since the epoch.
class NotificationLog {
public:
    /// One that the daemon was asked to show; what only changes the text of another one is none.
    struct Showing {
        QByteArray title;
        /// Who asked, as the bus knows it.
        QByteArray sender;
        QByteArray serial;
        qint64 sentAt = 0;
        /// When the daemon said that it is shown.
        std::optional<qint64> answeredAt;
    };

    struct Span {
        qint64 begin = 0;
        std::optional<qint64> end;
    };

    /// Listens from now on, and waits until it does.
    NotificationLog(const QProcessEnvironment &environment, const QString &file);
    ~NotificationLog();
    NotificationLog(const NotificationLog &) = delete;
    NotificationLog &operator=(const NotificationLog &) = delete;

    /// Reads on. The first of the secrets that passed, if any did.
    std::optional<QByteArray> read(const QByteArrayList &secrets);

    [[nodiscard]] const std::map<QByteArray, std::vector<Showing>> &showings() const { return m_showings; }
    [[nodiscard]] qint64 bytes() const { return m_file.pos(); }

    /// The program was killed.
    void recordKill() { m_kills.push_back(now()); }
    /// It has ended in order.
    void recordEnd() { m_ends.push_back(now()); }
    /// While somebody signs out, which has what was shown forgotten.
    void recordForgetting(Span span) { m_forgettings.push_back(span); }

    struct Verdict {
        qint64 shown = 0;
        /// Again, and allowed to be.
        qint64 again = 0;
        /// In words, those that should not have been.
        QByteArrayList wrong;
    };
    /// Whether each was shown once, but for the windows that are promised; what was answered that long before
    /// a kill may not have been recorded.
    [[nodiscard]] Verdict verdict(qint64 recordingTime) const;

    static qint64 now();

private:
    void take(const QByteArray &line);
    void takeHead(const QByteArray &line);
    [[nodiscard]] bool mayRepeat(const Showing &first, const Showing &again, qint64 recordingTime) const;

    QProcess m_monitor;
    QFile m_file;
    QByteArray m_rest;
    QByteArray m_tail;
    /// The call whose arguments are being read, and its strings.
    std::optional<Showing> m_call;
    QByteArrayList m_strings;
    bool m_isChange = false;
    std::map<QByteArray, std::vector<Showing>> m_showings;
    /// By sender and serial: which of the showings waits for an answer.
    std::map<std::pair<QByteArray, QByteArray>, std::pair<QByteArray, std::size_t>> m_unanswered;
    std::vector<qint64> m_kills;
    std::vector<qint64> m_ends;
    std::vector<Span> m_forgettings;
};

} // namespace orbitledge::testing
