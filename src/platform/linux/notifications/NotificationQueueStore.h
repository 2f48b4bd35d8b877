#pragma once

#include "platform/Completion.h"
#include "platform/FileStore.h"
#include "platform/SerialQueue.h"
#include "platform/linux/notifications/NotificationQueue.h"

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

#include <chrono>
#include <filesystem>
#include <memory>

namespace orbitledge {

/// The queue and its file, which one process at a time is in charge of, by a lock beside it. Kept alive by
/// the operations that it returns.
class NotificationQueueStore {
public:
    NotificationQueueStore(std::filesystem::path path, std::shared_ptr<FileStore> files);

    /// Takes charge of the file and reads it, where that was not done. Another process that is in charge is
    /// waited for as long as `patience`; who asks while somebody waits already waits along. False where it
    /// cannot be had. A file that cannot be understood is put aside.
    static QCoro::Task<bool> open(
        std::shared_ptr<NotificationQueueStore> store, std::chrono::milliseconds patience);
    /// From now on no other process is waited for.
    void abandon() { m_isAbandoned = true; }

    /// Another process may take charge when this is through. What the queue held can still be read; it is
    /// opened anew before it is saved again.
    static QCoro::Task<void> release(std::shared_ptr<NotificationQueueStore> store);

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    /// Why it could not be opened; empty where another process is in charge.
    [[nodiscard]] const QString &failure() const { return m_failure; }

    /// Empty before it is open.
    [[nodiscard]] const NotificationQueue &queue() const { return m_queue; }
    NotificationQueue &queue() { return m_queue; }

    /// Writes it, where it is not what the file holds already.
    static QCoro::Task<tl::expected<void, FileError>> save(std::shared_ptr<NotificationQueueStore> store);

private:
    struct File;

    static QCoro::Task<void> tryToOpen(
        std::shared_ptr<NotificationQueueStore> store, std::chrono::milliseconds patience);

    // Handed to the jobs, which must not hold the queue that they run on.
    std::shared_ptr<File> m_file;
    SerialQueue m_work;
    /// While it is being opened.
    std::shared_ptr<Completion> m_opening;
    NotificationQueue m_queue;
    QString m_failure;
    bool m_isOpen = false;
    bool m_isAbandoned = false;
};

} // namespace orbitledge
