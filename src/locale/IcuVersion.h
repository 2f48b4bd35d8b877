#pragma once

#include <QString>

namespace orbitledge {

/// Of the library as it runs: "72.1".
QString icuVersion();

} // namespace orbitledge
