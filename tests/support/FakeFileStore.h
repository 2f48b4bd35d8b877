#pragma once

#include "platform/FileStore.h"

#include <map>
#include <mutex>
#include <optional>

namespace orbitledge::testing {

/// Files in memory that fail where they are told to.
class FakeFileStore final : public FileStore {
public:
    tl::expected<QByteArray, FileError> read(const std::filesystem::path &path) override
    {
        const std::scoped_lock lock(m_mutex);
        if (m_readError)
            return tl::make_unexpected(*m_readError);
        const auto found = m_files.find(path);
        if (found == m_files.end())
            return tl::make_unexpected(FileError{
                .kind = FileError::Kind::NotFound, .errorDescription = QStringLiteral("No such file")});
        return found->second;
    }

    tl::expected<void, FileError> replace(
        const std::filesystem::path &path, const QByteArray &content) override
    {
        const std::scoped_lock lock(m_mutex);
        if (m_writeError)
            return tl::make_unexpected(*m_writeError);
        m_files[path] = content;
        return {};
    }

    tl::expected<void, FileError> remove(const std::filesystem::path &path) override
    {
        const std::scoped_lock lock(m_mutex);
        ++m_removals;
        if (m_writeError)
            return tl::make_unexpected(*m_writeError);
        m_files.erase(path);
        return {};
    }

    void failReading(FileError error) { m_readError = std::move(error); }
    void failWriting(FileError error) { m_writeError = std::move(error); }
    void writeAgain() { m_writeError.reset(); }

    bool exists(const std::filesystem::path &path) const { return m_files.contains(path); }
    QByteArray content(const std::filesystem::path &path) const { return m_files.at(path); }
    bool isEmpty() const { return m_files.empty(); }
    int removals() const { return m_removals; }

private:
    std::mutex m_mutex;
    std::map<std::filesystem::path, QByteArray> m_files;
    std::optional<FileError> m_readError;
    std::optional<FileError> m_writeError;
    int m_removals = 0;
};

} // namespace orbitledge::testing
