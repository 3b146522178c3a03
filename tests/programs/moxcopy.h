// SPDX-License-Identifier: Apache-2.0
/// @file
/// The fixture of the tests of moxcopy.
#pragma once

#include "kit/host.h"
#include "kit/random.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace moxcopy_test {

namespace fs = std::filesystem;

/// Relative names of everything below a directory: the text of a file, "/" for a
/// directory, "@" for anything else.
inline std::map<std::string, std::string> contents(const moxkit::TempTree& tree,
                                                   const std::string& top) {
    std::map<std::string, std::string> result;
    if (!fs::exists(tree.path(top)))
        return result;
    for (const auto& entry : fs::recursive_directory_iterator(tree.path(top))) {
        const std::string name = fs::relative(entry.path(), tree.path(top)).generic_string();
        if (entry.is_symlink() || entry.is_other())
            result[name] = "@";
        else
            result[name] = entry.is_directory() ? "/" : tree.read(top + "/" + name);
    }
    return result;
}

inline std::size_t filesIn(const std::map<std::string, std::string>& names) {
    return static_cast<std::size_t>(std::count_if(
        names.begin(), names.end(), [](const auto& entry) { return entry.second != "/"; }));
}

/// A suite installed on its own, with a project in which to work.
class MoxCopy : public testing::Test {
protected:
    explicit MoxCopy(const std::string& parent = {}) : tree(parent) {
        tree.write("suite/ToolInfo", "ToolInfo = site\ntmp_dir=" + tree.path("copies") + "\n");
        tree.write("suite/site", "tmp_dir=/nowhere\n");
    }

    void makeSystem() {
        kit::Random random;
        for (const std::string name :
             {"mashing.dgm", "tank control.dgm", "a_b.dgm", "a_bc.dgm", "filestore/mashing.1",
              "filestore/mashing.2", ".sys_file_mode", "100%s%n.txt", "~", "C:x", "line\nfeed",
              "\xff\xfe", "deep/a/b/c"})
            if (kit::isFileName(name.substr(name.rfind('/') + 1)))
                tree.write("plant/brewery/" + name, name + random.text(5000, "abc\n"));
        tree.mkdir("plant/brewery/empty/inside");
        tree.write("plant/brewery/zero", "");
        fs::permissions(tree.path("plant/brewery/zero"), fs::perms(0640));
    }

    moxkit::Result copy(std::vector<std::string> arguments, moxkit::RunOptions options = {}) {
        arguments.insert(arguments.begin(), {program, "-projdir", "plant", "-system", "brewery"});
        return runTool(arguments, options);
    }

    moxkit::Result runTool(const std::vector<std::string>& arguments,
                           moxkit::RunOptions options = {}) {
        options.cwd = tree.path();
        options.env["ToolInfo"] = moxkit::unset;
        options.env["TOOLINFO"] = moxkit::unset;
        options.env["HOME"] = tree.path();
        return moxkit::run(arguments, options);
    }

    std::set<std::string> names(const std::string& directory) {
        std::set<std::string> result;
        for (const auto& [name, text] : contents(tree, directory))
            if (text != "/")
                result.insert(name);
        return result;
    }

    /// Nothing but the copy is left in the directory that received it.
    bool onlyCopyIn(const std::string& directory) {
        for (const auto& entry : fs::directory_iterator(tree.path(directory)))
            if (entry.path().filename() != "brewery")
                return false;
        return true;
    }

    moxkit::TempTree tree;
    const std::string program = kit::placeProgram("moxcopy", tree.mkdir("suite/bin"));
};

} // namespace moxcopy_test
