#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace orbitledge::fuzz {

/// Ends the program, which is how a fuzzer is told that an input is worth keeping.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Violated: %s\n", what);
    std::abort();
}

inline std::string_view textOf(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

} // namespace orbitledge::fuzz
