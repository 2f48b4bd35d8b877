#pragma once

#include <filesystem>

namespace orbitledge {

/// The program is four executables. People start "orbitledge", which turns at once into "orbitledge-desktop",
/// or into "orbitledge-command", which loads nothing graphical. The one with windows starts "orbitledge-http"
/// where something is to be fetched. All lie beside each other where they were built; where they were
/// installed, the first is in bin and the others are in libexec.
struct InstalledPrograms {
    /// What others are to start.
    std::filesystem::path started;
    std::filesystem::path desktop;
    std::filesystem::path http;

    /// `self` is the absolute path of the command or the desktop one.
    static InstalledPrograms besides(const std::filesystem::path &self);
};

} // namespace orbitledge
