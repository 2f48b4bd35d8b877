#pragma once

#include "logos/LogoLoader.h"

#include <memory>

namespace orbitledge {

/// Logos by the network and the disk of this system. Needs an application
/// object. Nothing is fetched or read yet.
std::shared_ptr<LogoLoader> makeLogos(std::shared_ptr<HttpSession> http);

} // namespace orbitledge
