#pragma once

#include <QByteArray>
#include <QList>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <string>

namespace orbitledge::testing {

/// For how long a thread was ready to go on and had to wait for a processor, which is what others do to it on
/// a busy machine. Always nothing on a system that does not count it.
class ProcessorWait {
public:
    /// Of the thread that makes it. Any thread may ask.
    ProcessorWait()
        : m_file(::open(
              ("/proc/self/task/" + std::to_string(::gettid()) + "/schedstat").c_str(), O_RDONLY | O_CLOEXEC))
    {
    }
    ~ProcessorWait()
    {
        if (m_file >= 0)
            ::close(m_file);
    }
    ProcessorWait(const ProcessorWait &) = delete;
    ProcessorWait &operator=(const ProcessorWait &) = delete;

    /// Since the thread began. One that goes on at this moment is not counted before its end.
    [[nodiscard]] std::chrono::nanoseconds total() const
    {
        // "time on a processor, time waited for one, times on a processor", in nanoseconds
        std::array<char, 128> text{};
        const auto size = ::pread(m_file, text.data(), text.size(), 0);
        if (size <= 0)
            return {};
        const QList<QByteArray> numbers = QByteArray(text.data(), size).split(' ');
        return std::chrono::nanoseconds(numbers.value(1).toLongLong());
    }

private:
    int m_file;
};

/// The time that the current thread has worked: on a busy machine it stands still while others work.
inline std::chrono::nanoseconds workOfThisThread()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// A stopwatch for work: it stops while the thread that made it has no processor or waits.
class WorkTimer {
public:
    /// In milliseconds, since it was made.
    [[nodiscard]] qint64 elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(workOfThisThread() - m_start).count();
    }

private:
    std::chrono::nanoseconds m_start = workOfThisThread();
};

} // namespace orbitledge::testing
