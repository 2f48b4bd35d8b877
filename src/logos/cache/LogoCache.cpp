#include "logos/cache/LogoCache.h"

#include "BuildInfo.h"

#include <QCryptographicHash>

#include <algorithm>
#include <system_error>
#include <vector>

namespace orbitledge {

namespace fs = std::filesystem;

namespace {

// A line with the digest of all that follows; a line each for the address, the time until which it is fresh,
// and the two validators; the logo.

constexpr qsizetype largestHead = qsizetype{64} << 10;

QByteArray digestOf(QByteArrayView bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(bytes);
    return hash.result().toHex();
}

/// Nobody is sent a fragment, and so it names nothing else.
QByteArray keyOf(const QUrl &address)
{
    return address.toEncoded(QUrl::RemoveFragment);
}

QByteArray firstLine(QByteArrayView rest)
{
    return "orbitledge-logo-1 " + digestOf(rest) + '\n';
}

QByteArray encoded(const QByteArray &key, const KeptLogo &logo)
{
    const QByteArray rest = key + '\n' + QByteArray::number(logo.freshUntil.millisecondsSinceEpoch()) + '\n'
        + logo.entityTag + '\n' + logo.lastModified + '\n' + logo.content;
    return firstLine(rest) + rest;
}

/// Up to the end of the line, which is taken off `bytes`.
std::optional<QByteArray> takeLine(QByteArrayView &bytes)
{
    const qsizetype end = bytes.indexOf('\n');
    if (end < 0)
        return std::nullopt;
    QByteArray line = bytes.first(end).toByteArray();
    bytes = bytes.sliced(end + 1);
    return line;
}

std::optional<KeptLogo> decoded(const QByteArray &key, QByteArrayView bytes)
{
    const auto first = takeLine(bytes);
    if (!first || *first + '\n' != firstLine(bytes))
        return std::nullopt;
    const auto address = takeLine(bytes);
    const auto freshUntil = takeLine(bytes);
    const auto entityTag = takeLine(bytes);
    const auto lastModified = takeLine(bytes);
    if (address != key || !freshUntil || !entityTag || !lastModified)
        return std::nullopt;
    bool isNumber = false;
    const qlonglong milliseconds = freshUntil->toLongLong(&isNumber);
    if (!isNumber)
        return std::nullopt;
    return KeptLogo{
        .content = bytes.toByteArray(),
        .freshUntil = Instant::fromMillisecondsSinceEpoch(milliseconds),
        .entityTag = *entityTag,
        .lastModified = *lastModified,
    };
}

/// Of a value that comes from a header, nothing where it would be more than a line.
QByteArray line(const QByteArray &value)
{
    constexpr qsizetype most = 1024;
    return value.size() > most || value.contains('\n') ? QByteArray() : value;
}

void markAsUsed(const fs::path &path)
{
    std::error_code ignored; // a cache that cannot be written to is still one
    fs::last_write_time(path, fs::file_time_type::clock::now(), ignored);
}

/// A file that can be read whole, in no time.
bool isPlausible(const fs::path &path)
{
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(path, error)))
        return false;
    const auto size = fs::file_size(path, error);
    return !error && size <= static_cast<std::uintmax_t>(largestLogo + largestHead);
}

struct Occupant {
    fs::path path;
    fs::file_time_type usedLast;
    qint64 size = 0;
};

std::vector<Occupant> occupantsOf(const fs::path &folder)
{
    std::vector<Occupant> occupants;
    std::error_code error;
    for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
        entry.increment(error)) {
        std::error_code gone;
        if (!fs::is_regular_file(entry->symlink_status(gone)))
            continue;
        const auto size = entry->file_size(gone);
        const auto usedLast = entry->last_write_time(gone);
        if (!gone)
            occupants.push_back({entry->path(), usedLast, static_cast<qint64>(size)});
    }
    return occupants;
}

} // namespace

LogoCache::LogoCache(fs::path folder, std::shared_ptr<FileStore> files, qint64 capacity)
    : m_folder(std::move(folder))
    , m_files(std::move(files))
    , m_capacity(capacity)
{
}

fs::path LogoCache::defaultLocation(const UserDirectories &directories)
{
    return directories.cache().value_or(directories.temporary()) / build::applicationId / "logos";
}

fs::path LogoCache::pathOf(const QUrl &address) const
{
    return m_folder / digestOf(keyOf(address)).toStdString();
}

std::optional<KeptLogo> LogoCache::find(const QUrl &address)
{
    const fs::path path = pathOf(address);
    std::error_code error;
    if (!fs::exists(fs::symlink_status(path, error)))
        return std::nullopt;
    if (isPlausible(path)) {
        const auto content = m_files->read(path);
        if (!content)
            return std::nullopt; // its owner may still let us, later
        if (auto logo = decoded(keyOf(address), *content)) {
            markAsUsed(path);
            return logo;
        }
    }
    remove(address);
    return std::nullopt;
}

tl::expected<void, FileError> LogoCache::keep(const QUrl &address, const KeptLogo &logo)
{
    KeptLogo checked = logo;
    checked.entityTag = line(logo.entityTag);
    checked.lastModified = line(logo.lastModified);
    const QByteArray bytes = encoded(keyOf(address), checked);
    const fs::path path = pathOf(address);
    if (auto written = m_files->replace(path, bytes); !written)
        return written;
    markAsUsed(path);
    // What it replaced is counted as well, which only means to look sooner.
    if (m_used)
        *m_used += bytes.size();
    if (!m_used || *m_used > m_capacity)
        makeRoom();
    return {};
}

void LogoCache::remove(const QUrl &address)
{
    (void)m_files->remove(pathOf(address)); // nobody could do anything about a failure
}

void LogoCache::clear()
{
    for (const Occupant &occupant : occupantsOf(m_folder))
        (void)m_files->remove(occupant.path);
    std::error_code ignored; // where it is not empty, what is in it is not ours
    fs::remove(m_folder, ignored);
    m_used.reset();
}

void LogoCache::makeRoom()
{
    auto occupants = occupantsOf(m_folder);
    std::ranges::sort(occupants, {}, &Occupant::usedLast);
    qint64 used = 0;
    for (const Occupant &occupant : occupants)
        used += occupant.size;
    for (const Occupant &occupant : occupants) {
        if (used <= m_capacity)
            break;
        if (m_files->remove(occupant.path))
            used -= occupant.size;
    }
    m_used = used;
}

} // namespace orbitledge
