#include "updates/Version.h"

#include "Require.h"
#include "updates/AvailableUpdate.h"

#include <QRegularExpression>

#include <algorithm>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

bool isEquivalent(const Version &left, const Version &right)
{
    return (left <=> right) == 0;
}

void checkOne(const QString &text)
{
    const Version version = Version::fromText(text);
    fuzz::require(isEquivalent(version, version) && version == version, "a version is itself");
    fuzz::require(!(version < version) && !(version > version), "a version is not beside itself");
    fuzz::require(!version.core().isEmpty(), "a version has a number");
    const QString trimmed = text.trimmed();
    fuzz::require(
        Version::fromText(trimmed + u"+5"_s) == Version::fromText(trimmed), "build metadata does not count");
    if (!trimmed.startsWith(u'v', Qt::CaseInsensitive))
        fuzz::require(Version::fromText(u"v"_s + trimmed) == version, "a leading v does not count");
}

void checkTwo(const Version &left, const Version &right)
{
    const auto order = left <=> right;
    const auto reversed = right <=> left;
    fuzz::require((order < 0) == (reversed > 0) && (order == 0) == (reversed == 0),
        "an order is the same from both sides");
    fuzz::require((left == right) == (order == 0), "equality is of the order");
}

void checkThree(const Version &a, const Version &b, const Version &c)
{
    if (a < b && b < c)
        fuzz::require(a < c, "below what is below is below");
    if (isEquivalent(a, b))
        fuzz::require((a <=> c) == (b <=> c), "equal versions stand in one place");
}

// ---- Against the rules of Semantic Versioning, for texts that keep them -----------------------------------

/// Sections 9 to 11 by the book: what compares like the version, as a list of pairs of a rank and a text.
QList<std::pair<int, QString>> byTheBook(const QRegularExpressionMatch &match)
{
    // Numbers compare as texts once they are of one length; the pattern allows no zeros before them.
    const auto padded = [](const QString &digits) { return digits.rightJustified(18, u'0'); };
    QList<std::pair<int, QString>> places;
    for (int number = 1; number <= 3; ++number)
        places.append(std::pair(0, padded(match.captured(number))));
    if (!match.hasCaptured(4)) {
        places.append(std::pair(3, QString()));
        return places;
    }
    static const QRegularExpression digits(u"^[0-9]+$"_s);
    for (const QString &identifier : match.captured(4).split(u'.')) {
        const bool isNumber = digits.match(identifier).hasMatch();
        places.append(std::pair(isNumber ? 1 : 2, isNumber ? padded(identifier) : identifier));
    }
    return places;
}

void checkAgainstTheBook(const QString &left, const QString &right)
{
    static const QString number = u"(?:0|[1-9][0-9]{0,17})"_s;
    static const QString identifier = u"(?:%1|[0-9]*[A-Za-z-][0-9A-Za-z-]*)"_s.arg(number);
    static const QRegularExpression pattern(
        u"\\A(%1)\\.(%1)\\.(%1)(?:-(%2(?:\\.%2)*))?(?:\\+[0-9A-Za-z.-]+)?\\z"_s.arg(number, identifier));
    const auto matchOfLeft = pattern.match(left);
    const auto matchOfRight = pattern.match(right);
    if (!matchOfLeft.hasMatch() || !matchOfRight.hasMatch())
        return;
    const auto placesOfLeft = byTheBook(matchOfLeft);
    const auto placesOfRight = byTheBook(matchOfRight);
    const bool isBelow = Version::fromText(left) < Version::fromText(right);
    const bool isBelowByTheBook = std::lexicographical_compare(
        placesOfLeft.begin(), placesOfLeft.end(), placesOfRight.begin(), placesOfRight.end());
    fuzz::require(isBelow == isBelowByTheBook, "versions that keep the rules are ordered by them");
}

// ---- What is an update ------------------------------------------------------------------------------------

/// Absent also for those that the toolkit cannot read.
std::optional<qint64> smallNumber(const QString &text)
{
    // The toolkit alone would read up to a zero character.
    static const QRegularExpression pattern(u"\\A[+-]?[0-9]{1,18}\\z"_s);
    const QString trimmed = text.trimmed();
    return pattern.match(trimmed).hasMatch() ? std::optional(trimmed.toLongLong()) : std::nullopt;
}

ReleaseManifest announcementOf(const RunningRelease &release)
{
    ReleaseManifest manifest;
    manifest.version = release.version;
    manifest.build = release.build;
    return manifest;
}

void checkOffers(const RunningRelease &one, const RunningRelease &other, const QString &dismissed)
{
    ReleaseManifest manifest = announcementOf(one);
    const bool isOffered = isAvailableUpdate(manifest, other, std::nullopt);
    fuzz::require(!isAvailableUpdate(manifest, one, std::nullopt), "nothing is newer than itself");
    fuzz::require(!isOffered || !isAvailableUpdate(announcementOf(other), one, std::nullopt),
        "of two only one is newer");
    const bool isAboveDismissed = Version::fromText(one.version) > Version::fromText(dismissed);
    fuzz::require(isAvailableUpdate(manifest, other, dismissed) == (isOffered && isAboveDismissed),
        "what was dismissed hides what is not above it");
    const auto build = smallNumber(one.build);
    const auto otherBuild = smallNumber(other.build);
    if (build && otherBuild && *build != *otherBuild)
        fuzz::require(isOffered == (*build > *otherBuild), "builds decide");
    manifest.comingSoon = true;
    fuzz::require(!isAvailableUpdate(manifest, other, std::nullopt), "what is to come is not offered");
}

} // namespace

// Lines: three versions; or a version, a build, a version, a build and a version that was dismissed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QStringList lines
        = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)).split(u'\n');
    QList<Version> versions;
    for (const QString &line : lines.first(std::min<qsizetype>(lines.size(), 5))) {
        checkOne(line);
        versions.append(Version::fromText(line));
    }
    for (qsizetype i = 0; i < versions.size(); ++i) {
        for (qsizetype j = 0; j < versions.size(); ++j) {
            checkTwo(versions[i], versions[j]);
            checkAgainstTheBook(lines[i], lines[j]);
            for (const Version &third : std::as_const(versions))
                checkThree(versions[i], versions[j], third);
        }
    }
    checkOffers({lines.value(0), lines.value(1)}, {lines.value(2), lines.value(3)}, lines.value(4));
    return 0;
}
