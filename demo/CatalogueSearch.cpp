#include "demo/CatalogueSearch.h"

#include <QStringList>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

/// Letters that no accent explains.
QLatin1StringView plainLetters(QChar c)
{
    switch (c.unicode()) {
    case u'ß':
        return "ss"_L1;
    case u'æ':
        return "ae"_L1;
    case u'œ':
        return "oe"_L1;
    case u'ø':
        return "o"_L1;
    case u'ł':
        return "l"_L1;
    case u'đ':
    case u'ð':
        return "d"_L1;
    case u'þ':
        return "th"_L1;
    case u'ı':
        return "i"_L1;
    default:
        return {};
    }
}

enum Rank { ExactName, NamePrefix, WordPrefix, InsideName, CompanyOrCategory, OneTypo };

bool hasWordPrefix(const QString &text, const QString &query)
{
    return text.startsWith(query) || text.contains(u' ' + query);
}

std::optional<Rank> rankOf(const SearchableTemplate &entry, const QString &query)
{
    if (entry.name == query)
        return ExactName;
    if (entry.name.startsWith(query))
        return NamePrefix;
    if (hasWordPrefix(entry.name, query))
        return WordPrefix;
    if (entry.name.contains(query))
        return InsideName;
    if (hasWordPrefix(entry.company, query) || hasWordPrefix(entry.category, query))
        return CompanyOrCategory;
    return std::nullopt;
}

/// Whether one typing error at most lies between the two.
bool isWithinOneTypo(QStringView left, QStringView right)
{
    qsizetype same = 0;
    while (same < left.size() && same < right.size() && left[same] == right[same])
        ++same;
    const QStringView restLeft = left.sliced(same);
    const QStringView restRight = right.sliced(same);
    if (restLeft.size() == restRight.size()) {
        if (restLeft.isEmpty() || restLeft.sliced(1) == restRight.sliced(1))
            return true;
        return restLeft.size() > 1 && restLeft[0] == restRight[1] && restLeft[1] == restRight[0]
            && restLeft.sliced(2) == restRight.sliced(2);
    }
    if (restLeft.size() + 1 == restRight.size())
        return restLeft == restRight.sliced(1);
    if (restLeft.size() == restRight.size() + 1)
        return restLeft.sliced(1) == restRight;
    return false;
}

bool beginsAlmostLike(QStringView text, const QString &query)
{
    for (qsizetype length = query.size() - 1; length <= query.size() + 1; ++length) {
        if (length > 0 && length <= text.size() && isWithinOneTypo(text.first(length), query))
            return true;
    }
    return false;
}

std::optional<Rank> typoRankOf(const SearchableTemplate &entry, const QString &query)
{
    const QString &name = entry.name;
    for (qsizetype start = 0; start < name.size();) {
        if (beginsAlmostLike(QStringView(name).sliced(start), query))
            return OneTypo;
        const auto blank = name.indexOf(u' ', start);
        start = blank < 0 ? name.size() : blank + 1;
    }
    return std::nullopt;
}

using Match = std::pair<Rank, const SearchableTemplate *>;

template <typename RankOf>
std::vector<Match> matches(
    const QList<SearchableTemplate> &catalogue, const QString &query, const RankOf &rankOf)
{
    std::vector<Match> result;
    for (const SearchableTemplate &entry : catalogue) {
        if (const auto rank = rankOf(entry, query))
            result.emplace_back(*rank, &entry);
    }
    return result;
}

bool comesFirst(const Match &left, const Match &right)
{
    if (left.first != right.first)
        return left.first < right.first;
    const qint64 usesLeft = left.second->record.usageCount.value_or(0);
    const qint64 usesRight = right.second->record.usageCount.value_or(0);
    if (usesLeft != usesRight)
        return usesLeft > usesRight;
    return left.second->record.name < right.second->record.name;
}

// With less, one error leaves nothing of what was meant.
constexpr qsizetype shortestWithTypo = 4;

} // namespace

QString searchForm(const QString &text)
{
    QString result;
    bool needsBlank = false;
    const QString decomposed = text.toCaseFolded().normalized(QString::NormalizationForm_KD).toCaseFolded();
    for (const QChar c : decomposed) {
        if (c.isMark())
            continue;
        if (!c.isLetterOrNumber() && !c.isSurrogate()) {
            needsBlank = !result.isEmpty();
            continue;
        }
        if (needsBlank)
            result += u' ';
        needsBlank = false;
        if (const QLatin1StringView plain = plainLetters(c); !plain.isEmpty())
            result += plain;
        else
            result += c;
    }
    return result;
}

SearchableTemplate searchable(SubscriptionTemplate record)
{
    SearchableTemplate result;
    result.name = searchForm(record.name);
    result.company = searchForm(record.companyName.value_or(QString()));
    result.category = searchForm(record.category.value_or(QString()));
    result.record = std::move(record);
    return result;
}

QList<SubscriptionTemplate> searchCatalogue(
    const QList<SearchableTemplate> &catalogue, const QString &query, qsizetype limit)
{
    const QString wanted = searchForm(query);
    if (wanted.isEmpty())
        return {};
    auto found = matches(catalogue, wanted, rankOf);
    if (found.empty() && wanted.size() >= shortestWithTypo)
        found = matches(catalogue, wanted, typoRankOf);
    std::ranges::sort(found, comesFirst);

    QList<SubscriptionTemplate> result;
    for (const Match &match : found) {
        if (result.size() == limit)
            break;
        result.append(match.second->record);
    }
    return result;
}

} // namespace orbitledge::demo
