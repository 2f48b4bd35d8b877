#include "demo/Categories.h"

#include <QHash>

#include <array>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr std::array names{"Business"_L1, "Education"_L1, "Finance"_L1, "Fitness"_L1, "Food"_L1, "Games"_L1,
    "Health"_L1, "Home"_L1, "Insurance"_L1, "Music"_L1, "News"_L1, "Phone"_L1, "Photography"_L1,
    "Productivity"_L1, "Reading"_L1, "Security"_L1, "Shopping"_L1, "Software"_L1, "Storage"_L1,
    "Streaming"_L1, "Travel"_L1};

} // namespace

std::span<const QLatin1StringView> categoryNames()
{
    return names;
}

QUuid categoryId(QLatin1StringView name)
{
    static const QUuid space("6f1d1c1e-7a55-5a0b-9c0e-51f6d6a4f0c7"_L1);
    return QUuid::createUuidV5(space, QString(name));
}

std::optional<QLatin1StringView> categoryName(const QUuid &id)
{
    static const QHash<QUuid, QLatin1StringView> known = [] {
        QHash<QUuid, QLatin1StringView> result;
        for (const QLatin1StringView name : names)
            result.insert(categoryId(name), name);
        return result;
    }();
    const auto found = known.constFind(id);
    return found == known.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace orbitledge::demo
