#pragma once

#include "demo/CatalogueSearch.h"

namespace orbitledge::demo {

/// The catalogue that is compiled in (data/templates.json).
QList<SearchableTemplate> loadCatalogue();

} // namespace orbitledge::demo
