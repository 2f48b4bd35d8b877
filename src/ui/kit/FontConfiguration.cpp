#include "ui/kit/FontConfiguration.h"

#include <fontconfig/fontconfig.h>

namespace orbitledge::ui {

std::jthread readFontConfiguration()
{
    return std::jthread([] { FcInit(); });
}

} // namespace orbitledge::ui
