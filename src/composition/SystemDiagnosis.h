#pragma once

#include "platform/Diagnosis.h"

#include <memory>

namespace orbitledge {

/// What looks at this system. Needs an application object when it is asked.
std::shared_ptr<Diagnosis> makeDiagnosis();

} // namespace orbitledge
