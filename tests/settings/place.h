// SPDX-License-Identifier: Apache-2.0
/// @file
/// Settings that belong to one test.
#pragma once

#include "kit/env.h"
#include "kit/temp_tree.h"
#include "tools/settings/KazSettings.h"

#include <filesystem>
#include <string>

namespace settings_test {

/// The user's configuration lies in a directory of the test's own. Where settings are kept
/// in a registry, the sections have a name of the test's own in front and are gone at the
/// end.
class Place {
public:
    Place() { removeAll(); }
    ~Place() { removeAll(); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    /// The file that holds the settings, where there is one.
    std::string file() const { return "Tarvo/Mox/settings"; }

    /// In memory where that is possible: each commit waits for the disk.
    kit::TempTree tree{std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : ""};

private:
    static void removeAll() {
        KazSettings all;
        all.removeAll();
        all.commit();
    }

    kit::ScopedEnv config_{"XDG_CONFIG_HOME", tree.path().c_str()};
};

} // namespace settings_test
