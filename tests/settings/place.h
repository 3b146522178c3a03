// SPDX-License-Identifier: Apache-2.0
/// @file
/// Settings that belong to one test.
#pragma once

#include "kit/host.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"
#include "tools/settings/KazSettings.h"

#include <filesystem>
#include <string>
#include <unistd.h>

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

    /// The section that a test means by @p name; the root's is "".
    static std::string section(const std::string& name = "") {
        const std::string& own = ownSection();
        return own.empty() || name.empty() ? own + name : own + "\\" + name;
    }

    /// In memory where that is possible: each commit waits for the disk.
    moxkit::TempTree tree{std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : ""};

private:
    /// A registry is one for all tests that run, and for the user who runs them.
    static const std::string& ownSection() {
        static const std::string own = kit::hasDrives ? "tests " + std::to_string(::getpid()) : "";
        return own;
    }

    static void removeAll() {
        KazSettings all(section().c_str());
        all.removeAll();
        all.commit();
    }

    moxkit::ScopedEnv config_{"XDG_CONFIG_HOME", tree.path().c_str()};
};

} // namespace settings_test
