// SPDX-License-Identifier: Apache-2.0
/// @file
/// Which machine this is, and who works on it. All texts are UTF-8, as far as the system's own are;
/// what cannot be told is "". Each call asks the system anew.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// The host's own name up to its first dot, as the system has it (no resolver is asked).
KAZ_API KazString kazHostName();
/// The name with its domain, where the system's own name or resolver knows one without asking the
/// network; else kazHostName().
KAZ_API KazString kazFullHostName();

/// A GUID that is the same for each process of this machine, until the system is installed anew.
/// It is made from the system's own identity, which it does not show: KazGuid::fromName() of the
/// space 5d0c9b5e-3c3f-5a0b-9d52-1f6a2f0b7c41 and, on POSIX, the text of "/etc/machine-id" without
/// its line end, on Windows the value "MachineGuid" of the system's "Cryptography" key in lower
/// case; where there is none, the host name.
KAZ_API KazString kazHostId();

/// The login name of the user whom the process runs for: of the real user id in the system's user
/// database, else "LOGNAME", else "USER"; on Windows as the system tells.
KAZ_API KazString kazUserName();
/// The user's name as people write it: the first field of the comment in the user database, with
/// "&" replaced by the login name, first letter in upper case; on Windows the display name. Else
/// kazUserName().
KAZ_API KazString kazUserFullName();

/// Name, release and architecture of the system: "Linux 6.1.0-25-amd64 x86_64".
KAZ_API KazString kazSystemName();
