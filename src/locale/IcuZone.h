#pragma once

namespace orbitledge {

/// To be called before ICU makes a calendar or a formatter for dates: it would look for the system's zone,
/// and read its own data of all zones, to give each one that is replaced at once. Does it once; from any
/// thread.
void keepIcuFromTheSystemsZone();

} // namespace orbitledge
