#pragma once

#include <thread>

namespace orbitledge::ui {

/// Begins to read which fonts there are, on a thread of its own. The toolkit would do it with the first text,
/// and whoever draws that would wait for as long as the start of an empty program takes. Join the thread
/// before there is any text: who asks meanwhile reads everything once more.
[[nodiscard]] std::jthread readFontConfiguration();

} // namespace orbitledge::ui
