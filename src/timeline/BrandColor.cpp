#include "timeline/BrandColor.h"

#include <QList>

namespace orbitledge {

std::size_t brandIndex(QStringView name)
{
    quint32 hash = 0;
    const QList<uint> scalars = name.toUcs4();
    for (const uint scalar : scalars)
        hash = (hash * 31 + scalar) & 0x7FFF'FFFFU;
    return hash % brandPalette.size();
}

} // namespace orbitledge
