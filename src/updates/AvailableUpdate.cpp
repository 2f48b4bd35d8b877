#include "updates/AvailableUpdate.h"

#include "updates/Version.h"

#include <algorithm>

namespace orbitledge {

namespace {

/// A whole number of any size, as its sign and its digits without the zeros before them.
struct BuildNumber {
    bool isNegative = false;
    QString digits;

    friend bool operator==(const BuildNumber &, const BuildNumber &) = default;
    friend bool operator<(const BuildNumber &left, const BuildNumber &right)
    {
        if (left.isNegative != right.isNegative)
            return left.isNegative;
        const BuildNumber &smaller = left.isNegative ? right : left;
        const BuildNumber &larger = left.isNegative ? left : right;
        if (smaller.digits.size() != larger.digits.size())
            return smaller.digits.size() < larger.digits.size();
        return smaller.digits < larger.digits;
    }
};

std::optional<BuildNumber> buildNumber(const QString &text)
{
    QStringView rest = QStringView(text).trimmed();
    const bool hasSign = rest.startsWith(u'+') || rest.startsWith(u'-');
    const bool isNegative = rest.startsWith(u'-');
    if (hasSign)
        rest = rest.sliced(1);
    if (rest.isEmpty() || !std::ranges::all_of(rest, [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return std::nullopt;
    while (rest.size() > 1 && rest.front() == u'0')
        rest = rest.sliced(1);
    return BuildNumber{isNegative && rest != u"0", rest.toString()};
}

bool isNewer(const ReleaseManifest &manifest, const RunningRelease &running)
{
    const auto offered = buildNumber(manifest.build);
    const auto current = buildNumber(running.build);
    if (offered && current && *offered != *current)
        return *current < *offered;
    return Version::fromText(manifest.version) > Version::fromText(running.version);
}

} // namespace

bool isAvailableUpdate(const ReleaseManifest &manifest, const RunningRelease &running,
    const std::optional<QString> &dismissedVersion)
{
    if (manifest.comingSoon || !isNewer(manifest, running))
        return false;
    return !dismissedVersion || Version::fromText(manifest.version) > Version::fromText(*dismissedVersion);
}

} // namespace orbitledge
