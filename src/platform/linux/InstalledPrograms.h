#pragma once

#include <filesystem>

namespace orbitledge {

/// The program is two executables, so that its commands load nothing graphical: the one that people start,
/// and the one that it turns into where there is something to show. They lie beside each other where they
/// were built, and in bin and libexec where they were installed.
struct InstalledPrograms {
    /// "orbitledge"
    std::filesystem::path command;
    /// "orbitledge-desktop"
    std::filesystem::path desktop;

    /// `self` is the absolute path of either.
    static InstalledPrograms besides(const std::filesystem::path &self);
};

} // namespace orbitledge
