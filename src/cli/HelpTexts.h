#pragma once

#include <QString>

namespace orbitledge {

/// The answers to `orbitledge --help` and `orbitledge timeline --help`.
QString generalHelp();
QString timelineHelp();

} // namespace orbitledge
