// SPDX-License-Identifier: Apache-2.0
// Questions about places and files while each allocation fails in turn. What is read,
// defined and looked up without memory is the models' to show.
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"

#include "kit/host.h"
#include "kit/sweep.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace {

/// Where a lock gets its memory at its first use, no exception can be thrown once all memory
/// is gone.
void sweep(const std::string& name, const std::function<std::string()>& ask) {
    using moxkit::FailAllocation;
    if (kit::hasDrives)
        kit::sweepQuestion(name, ask, {FailAllocation::once});
    else
        kit::sweepQuestion(name, ask);
}

/// No memory for a stream is no file.
std::string closed(std::FILE* stream) {
    if (stream == nullptr)
        throw KazMemoryException();
    return std::to_string(std::fclose(stream));
}

TEST(ConfigMemory, PlacesAndFilesAreFoundOrThrown) {
    const moxkit::TempTree tree("/tmp");
    const moxkit::ScopedEnv home("HOME", tree.path().c_str());
    const moxkit::ScopedEnv toolInfo("ToolInfo", tree.write("first", "value=first\n").c_str());
    const moxkit::RecordingDirector director;
    tree.mkdir("p/sys/store");
    TI_Vinit();
    sweep("home", [] { return std::string(_TI_hm("~/x")); });
    sweep("home copy", [] {
        const std::unique_ptr<char, decltype(&std::free)> copy(
            const_cast<char*>(kazGetUserHomeDir()), &std::free);
        return std::string(copy.get());
    });
    sweep("directories",
          [] { return std::string(kazMoxRootDir().getValue()) + kazMoxBinDir().getValue(); });
    sweep("configuration", [] { return closed(_TI_Cfile()); });
    kaz_env_projdir_asgn(tree.native("p").c_str());
    kaz_env_system_asgn("sys");
    kaz_fs_filestore_dir_asgn("store");
    sweep("file of the filestore", [] {
        char name[] = "file", mode[] = "w";
        return closed(kaz_fs_open_filestore_file(name, mode));
    });
}

} // namespace
