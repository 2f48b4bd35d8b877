#include "updates/AvailableUpdate.h"

#include "updates/Version.h"
#include "updates/WholeNumber.h"

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
        const auto bySize = compareDigits(left.digits, right.digits);
        return left.isNegative ? bySize > 0 : bySize < 0;
    }
};

std::optional<BuildNumber> buildNumber(const QString &text)
{
    QStringView rest = QStringView(text).trimmed();
    const bool hasSign = rest.startsWith(u'+') || rest.startsWith(u'-');
    const bool isNegative = rest.startsWith(u'-');
    if (hasSign)
        rest = rest.sliced(1);
    const auto digits = wholeNumberDigits(rest);
    if (!digits)
        return std::nullopt;
    return BuildNumber{isNegative && *digits != u"0", digits->toString()};
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
