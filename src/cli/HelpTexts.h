#pragma once

#include <QString>

namespace orbitledge {

/// The answers to `orbitledge --help` and `orbitledge COMMAND --help`.
QString generalHelp();
QString timelineHelp();
QString statusHelp();
QString remindersHelp();
QString deliverRemindersHelp();
QString doctorHelp();
QString signInHelp();
QString refreshHelp();
QString signOutHelp();

} // namespace orbitledge
