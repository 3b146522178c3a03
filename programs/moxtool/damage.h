// SPDX-License-Identifier: Apache-2.0
/// @file
/// What of an installation is no longer as it was installed.
#pragma once

#include <string>
#include <vector>

/// What is damaged since the installation, as far as that has a product file.
class Damage {
public:
    /// Looks at all parts.
    Damage();

    /// About the file itself; "" where there is none to be had.
    std::string problem() const;
    /// The parts that are programs of the suite, or those that are not.
    std::vector<std::string> parts(bool programs) const;

private:
    std::vector<std::string> parts_;
};
