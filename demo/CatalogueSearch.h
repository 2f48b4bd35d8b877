#pragma once

#include "model/SubscriptionTemplate.h"

#include <QList>
#include <QString>

namespace orbitledge::demo {

/// A text as it is searched: letters and digits without accents, in one case, words separated by one blank.
QString searchForm(const QString &text);

/// A catalogue entry with what it is found by.
struct SearchableTemplate {
    SubscriptionTemplate record;
    QString name;
    QString company;
    QString category;
};

SearchableTemplate searchable(SubscriptionTemplate record);

/// The entries that match best, best first: the name itself, its beginning, the beginning of one of its
/// words, anywhere in it, then the company's or the category's name. Where nothing matches, names that begin
/// with the query but for one typing error (a letter wrong, missing, too many, or two swapped). Equal ones
/// are ordered by how often they are used, then by name.
QList<SubscriptionTemplate> searchCatalogue(
    const QList<SearchableTemplate> &catalogue, const QString &query, qsizetype limit);

} // namespace orbitledge::demo
