// SPDX-License-Identifier: Apache-2.0
// Every allocation of the file functions, failing.
#include "kit/sweep.h"
#include "testkit/temp_tree.h"
#include "tools/config/KazFilePath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

/// A call and its result as text; "" where it says that it failed.
using Calls = std::map<std::string, std::function<std::string()>>;

std::string str(const KazString& text) {
    return text.getValue();
}

std::string made(int result) {
    return result == 0 ? "made" : "";
}

/// A call for which memory runs out ends in the exception or in its own kind of
/// failure, and does its work when it is called again.
void expectRepeatable(const Calls& calls) {
    for (const auto& [name, call] : calls)
        kit::sweepQuestion(name, [&call = call] {
            std::string result = call();
            if (result.empty())
                throw KazMemoryException();
            return result;
        });
}

TEST(Allocations, FilesAndProcesses) {
    const moxkit::TempTree tree;
    const std::string dir = tree.native();
    const std::string file = tree.write("in/file with a long name", "contents");
    const KazFilePath path((dir + ";" + tree.native("in")).c_str());
    // The one entry of a list.
    const auto one = [](const std::function<int(KazStringColl&)>& list) {
        return [list] {
            KazStringColl found;
            return list(found) == 1 ? str(found[0]) : "";
        };
    };
    expectRepeatable({
        {"directory", [&] { return made(TI_makedir((dir + "\\made\\below").c_str())); }},
        {"copy", [&] { return made(copy_file(file.c_str(), (dir + "\\copy").c_str(), false)); }},
        {"temporary file", [&] { return made(TI_tmpname(dir.c_str(), "t").isEmpty()); }},
        {"temporary directory", [&] { return made(TI_tmpdir(dir.c_str(), "t").isEmpty()); }},
        {"listing",
         one([&](KazStringColl& found) { return read_a_dir((dir + "\\in\\f*").c_str(), found); })},
        {"search", [&] { return str(path.find("file with a long name")); }},
        {"search for all",
         one([&](KazStringColl& found) { return path.findAll("file with a long name", found); })},
        {"search by pattern",
         one([&](KazStringColl& found) { return path.findMatching("f*", found); })},
        {"output",
         [] {
             KazString output;
             shell_cmd_output("echo some output", output);
             return str(output);
         }},
    });
    const KazString target = tree.write("target", "old").c_str();
    const std::string text(5000, 'w');
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        moxkit::sweepAllocations(
            [&] {
                if (TI_writefile(target, text.data(), text.size()) != 0)
                    throw KazMemoryException();
            },
            [&] {
                const std::string now = tree.read("target");
                EXPECT_TRUE(now == "old" || now == text);
                tree.write("target", "old");
            },
            mode);
        EXPECT_EQ(tree.read("target"), text);
        tree.write("target", "old");
    }
    KazFilePath changed("one;two");
    for (const auto change : {&KazFilePath::set, &KazFilePath::append, &KazFilePath::prepend}) {
        changed.set("one;two");
        moxkit::sweepAllocations([&] { (changed.*change)("three;four;five"); },
                                 [&] { EXPECT_STREQ(changed.getText().getValue(), "one;two"); });
        EXPECT_GE(changed.getSize(), 3);
    }
}

} // namespace
