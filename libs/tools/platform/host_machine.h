// SPDX-License-Identifier: Apache-2.0
/// @file
/// A part of the door to the operating system (see host.h): which machine this is, and
/// who works on it. All texts are UTF-8 and "" when they are not known.
#pragma once

#include <string>

namespace kaz::host {

/// The system's own name, as it has it.
std::string hostName();
/// With its domain; "" when the system cannot tell without asking the network.
std::string fullHostName();
/// What tells this installation of the system from all others; not for showing.
std::string machineIdentity();

/// The login name of the user whom the process runs for. The environment is not asked.
std::string userName();
/// The user's name as people write it.
std::string userFullName();

/// Name, release and architecture of the system.
std::string systemName();

} // namespace kaz::host
