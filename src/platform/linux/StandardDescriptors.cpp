#include "platform/linux/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace orbitledge {

namespace {

struct Stand {
    int descriptor = 0;
    /// The one way in which it is of no use, so that its use still is an error.
    int mode = 0;
};

} // namespace

void occupyStandardDescriptors()
{
    constexpr std::array stands{
        Stand{STDIN_FILENO, O_WRONLY}, Stand{STDOUT_FILENO, O_RDONLY}, Stand{STDERR_FILENO, O_RDONLY}};
    for (const Stand &stand : stands) {
        // NOLINTBEGIN(cppcoreguidelines-pro-type-vararg,hicpp-vararg): POSIX has it so
        // A new descriptor is the lowest that is free, which is this one: those below it are taken by now.
        if (::fcntl(stand.descriptor, F_GETFD) < 0)
            (void)::open("/dev/null", stand.mode);
        // NOLINTEND(cppcoreguidelines-pro-type-vararg,hicpp-vararg)
    }
}

} // namespace orbitledge
