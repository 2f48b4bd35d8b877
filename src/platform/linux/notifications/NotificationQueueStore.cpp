#include "platform/linux/notifications/NotificationQueueStore.h"

#include "platform/Pause.h"
#include "platform/linux/ProcessLock.h"

#include <QByteArray>

#include <optional>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

struct Opening {
    /// Absent where another process has the lock.
    std::optional<NotificationQueue> queue;
    QString failure;
};

} // namespace

/// The file, and the right to use it; both are touched by one background thread alone.
struct NotificationQueueStore::File {
    File(std::filesystem::path somePath, std::shared_ptr<FileStore> someFiles)
        : path(std::move(somePath))
        , files(std::move(someFiles))
    {
    }

    Opening open();
    tl::expected<void, FileError> write(const NotificationQueue &queue);

    std::filesystem::path path;
    std::shared_ptr<FileStore> files;
    std::optional<ProcessLock> lock;
    QByteArray saved;
};

Opening NotificationQueueStore::File::open()
{
    std::filesystem::path lockFile = path;
    lockFile += ".lock";
    auto taken = ProcessLock::take(lockFile);
    if (!taken)
        return {.queue = std::nullopt, .failure = taken.error().errorDescription};
    if (!*taken)
        return {};
    const auto content = files->read(path);
    if (!content && content.error().kind != FileError::Kind::NotFound)
        return {.queue = std::nullopt, .failure = content.error().errorDescription};
    if (!content) {
        lock = std::move(*taken);
        saved = NotificationQueue().encoded(); // to be written when there is something to keep
        return {.queue = NotificationQueue(), .failure = {}};
    }
    auto queue = NotificationQueue::decoded(*content);
    if (!queue) {
        // Somebody may still be able to read it.
        std::filesystem::path aside = path;
        aside += ".unreadable";
        if (const auto kept = files->replace(aside, *content); !kept)
            return {
                .queue = std::nullopt, .failure = queue.error() + u". "_s + kept.error().errorDescription};
        lock = std::move(*taken);
        return {.queue = NotificationQueue(), .failure = {}};
    }
    lock = std::move(*taken);
    saved = *content;
    return {.queue = *std::move(queue), .failure = {}};
}

tl::expected<void, FileError> NotificationQueueStore::File::write(const NotificationQueue &queue)
{
    QByteArray content = queue.encoded();
    if (content == saved)
        return {};
    auto written = files->replace(path, content);
    if (written)
        saved = std::move(content);
    return written;
}

NotificationQueueStore::NotificationQueueStore(std::filesystem::path path, std::shared_ptr<FileStore> files)
    : m_file(std::make_shared<File>(std::move(path), std::move(files)))
{
}

QCoro::Task<bool> NotificationQueueStore::open(
    std::shared_ptr<NotificationQueueStore> store, milliseconds patience)
{
    if (store->m_isOpen)
        co_return true;
    if (!store->m_opening) {
        store->m_opening = std::make_shared<Completion>();
        tryToOpen(store, patience);
    }
    co_await Completion::wait(store->m_opening);
    co_return store->m_isOpen;
}

QCoro::Task<void> NotificationQueueStore::tryToOpen(
    std::shared_ptr<NotificationQueueStore> store, milliseconds patience)
{
    constexpr milliseconds pause = 100ms;
    milliseconds waited{0};
    Opening opening;
    while (true) {
        auto work = [file = store->m_file] { return file->open(); };
        auto task = store->m_work.run(std::move(work));
        opening = co_await task;
        const bool isElsewhere = !opening.queue && opening.failure.isEmpty();
        if (!isElsewhere || waited >= patience || store->m_isAbandoned)
            break;
        co_await pauseFor(pause);
        waited += pause;
    }
    store->m_failure = opening.failure;
    if (opening.queue) {
        store->m_queue = *std::move(opening.queue);
        store->m_isOpen = true;
    }
    std::exchange(store->m_opening, nullptr)->complete();
}

QCoro::Task<void> NotificationQueueStore::release(std::shared_ptr<NotificationQueueStore> store)
{
    store->m_isOpen = false;
    auto work = [file = store->m_file] {
        file->lock.reset();
        return true;
    };
    auto task = store->m_work.run(std::move(work));
    (void)co_await task;
}

QCoro::Task<tl::expected<void, FileError>> NotificationQueueStore::save(
    std::shared_ptr<NotificationQueueStore> store)
{
    auto work = [file = store->m_file, queue = store->m_queue] { return file->write(queue); };
    auto task = store->m_work.run(std::move(work));
    co_return co_await task;
}

} // namespace orbitledge
