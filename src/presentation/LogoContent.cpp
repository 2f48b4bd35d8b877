#include "presentation/LogoContent.h"

#include "locale/Graphemes.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QString initialsOf(const QString &name)
{
    constexpr qsizetype most = 2;
    QString initials;
    const QStringList words = name.split(u' ', Qt::SkipEmptyParts);
    for (const QString &word : words.first(std::min(words.size(), most)))
        initials += graphemesOf(word).constFirst().text;
    return initials.toUpper();
}

} // namespace

LogoContent logoOf(const QString &name, const std::optional<QUrl> &logoURL)
{
    const bool isSafe = logoURL && logoURL->scheme().toLower() == u"https";
    return {
        .image = isSafe ? logoURL : std::nullopt,
        .initials = initialsOf(name),
        .tint = brandColor(name),
    };
}

} // namespace orbitledge
