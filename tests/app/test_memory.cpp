// SPDX-License-Identifier: Apache-2.0
// The frame, the messages and the configuration without memory: each allocation fails in its
// turn, alone or with all that follow.
#include "frame_app.h"
#include "kit/host.h"
#include "kit/sweep.h"
#include "testkit/capture.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"
#include "tools/app/KazEditorsBase.h"
#include "tools/app/arguments.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/app/failures/KazResourceException.h"
#include "tools/config/KazFilePath.h"
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/KazMsgProgressHandle.h"
#include "tools/messages/messages.h"
#include "tools/util/gu_set.h"
#include "util/owned.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

/// Shows nothing, and gives back what it is lent.
class QuietDirector : public KazIODirector {
    void doPrintSymMsg(gu_set* symbols, const char*, va_list) override { gu_set_destroy(symbols); }
    void doPrintError(const char*, va_list) override {}
};

std::string useApplication() {
    FrameApp app;
    app.getParsedArgs();
    app.removeAtExit("file");
    app.removeAtExit("another");
    return std::string(app.getAppName()) + app.getProductPath()->getText().getValue();
}

std::string useArgv() {
    char tool[] = "dir\\tool", option[] = "-ed", name[] = "gr", *editor = nullptr;
    char* argv[] = {tool, option, name, nullptr};
    int argc = 3;
    get_editor_from_argv(&argc, argv, &editor, 1);
    return take(argv[0]) + kaz_arg_text_encode("\xFF z").getValue() +
           KazEditorsBase::getInstance()->getCreationCommand("editor").getValue();
}

std::string useExceptions() {
    KazResourceException resource("no font");
    KazFileException file(KazFileException::fileNotFound, "name");
    file.reportError();
    return std::string(resource.getErrorMessage()) + file.getErrorMessage();
}

std::string useDirector() {
    QuietDirector director;
    director.install();
    print_single_sym_msg(3, "symbol");
    KazString answer;
    KazIODirector::getUserInput(answer, "Login", "Name", true);
    return answer.getValue();
}

std::string useProgress() {
    QuietDirector director;
    director.install();
    KazMsgProgressHandle handle("work", 0);
    handle.increment(10, false);
    handle.msg(1, "%s", "100%");
    return handle.asCmdLine(1, 2).getValue();
}

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

TEST(Memory, PlacesAndFilesAreFoundOrThrown) {
    const moxkit::TempTree tree("/tmp");
    const moxkit::ScopedEnv home("HOME", tree.path().c_str());
    const moxkit::ScopedEnv toolInfo("ToolInfo", tree.write("first", "value=first\n").c_str());
    const moxkit::RecordingDirector director;
    tree.mkdir("p/sys/store");
    TI_Vinit();
    sweep("home", [] { return std::string(_TI_hm("~/x")); });
    sweep("home copy", [] { return take(const_cast<char*>(kazGetUserHomeDir())); });
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

TEST(Memory, EveryFailedAllocationIsSurvived) {
    const moxkit::TempTree tree;
    const moxkit::ScopedEnv toolInfo("ToolInfo",
                                     tree.write("ToolInfo", "mox_file_path=a;b\n").c_str());
    std::string lines;
    for (int i = 0; i < 200; ++i)
        lines += "mary\n";
    const moxkit::ScopedInput input(lines);
    moxkit::Capture capture;
    kit::sweepQuestion("application", useApplication);
    kit::sweepQuestion("argv", useArgv);
    kit::sweepQuestion("exceptions", useExceptions);
    kit::sweepQuestion("director", useDirector);
    kit::sweepQuestion("progress", useProgress);
}

} // namespace
