#pragma once

#include <QString>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace orbitledge::testing {

/// Asks a program something over the bus, again and again, that its user-interface thread answers, and beside
/// it one that does nothing else. On a thread of its own.
class PingWatch {
public:
    struct Target {
        QString name;
        QString path;
    };

    /// Of one kind of program, in milliseconds.
    struct Figures {
        std::size_t count = 0;
        double median = 0;
        double percentile99 = 0;
        double longest = 0;
    };

    PingWatch(QString busAddress, Target program, Target bare);
    ~PingWatch();
    PingWatch(const PingWatch &) = delete;
    PingWatch &operator=(const PingWatch &) = delete;

    /// The program is this process now; 0 while it is not there. Its first answer of each run is the start's,
    /// and not counted.
    void setProcess(qint64 process);

    /// Whether it has answered since `setProcess`.
    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }

    /// From the question to the answer.
    [[nodiscard]] Figures program() const { return figuresOf(m_program); }
    [[nodiscard]] Figures bare() const { return figuresOf(m_bare); }
    /// The same without the time for which the thread was ready to run and the machine had no processor for
    /// it.
    [[nodiscard]] Figures programsOwn() const { return figuresOf(m_own); }
    /// The longest of these since the last call.
    double takeLongest() { return m_longest.exchange(0); }

private:
    void add(std::vector<float> &list, double milliseconds) const;
    [[nodiscard]] Figures figuresOf(const std::vector<float> &list) const;

    std::atomic<qint64> m_process = 0;
    std::atomic<bool> m_hasAnswered = false;
    std::atomic<double> m_longest = 0;
    mutable std::mutex m_mutex;
    std::vector<float> m_program;
    std::vector<float> m_own;
    std::vector<float> m_bare;
    std::jthread m_thread;
};

} // namespace orbitledge::testing
