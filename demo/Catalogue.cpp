#include "demo/Catalogue.h"

#include "model/RecordCodecs.h"

#include <QFile>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

QList<SearchableTemplate> loadCatalogue()
{
    QFile file(u":/demo/data/templates.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::logic_error("the catalogue is not compiled in");
    auto templates = decodeJson<QList<SubscriptionTemplate>>(file.readAll());
    if (!templates)
        throw std::logic_error(templates.error().errorDescription().toStdString());
    QList<SearchableTemplate> result;
    for (SubscriptionTemplate &record : *templates)
        result.append(searchable(std::move(record)));
    return result;
}

} // namespace orbitledge::demo
