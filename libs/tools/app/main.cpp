// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazApp.h"
#include "tools/app/arguments.h"
#include "tools/messages/detail/Dialogue.h"
#include "tools/messages/detail/ParentProgress.h"
#include "tools/messages/messages.h"

/// Entry point of every tool: a tool supplies a static application object, the
/// library its main. Status 1 when there is no application object.
KAZ_API int main(int argc, char** argv) {
    KazApp* app = KazApp::getInstance();
    if (app == nullptr) {
        print_err("This program has no application object");
        return 1;
    }
    kaz::detail::ParentProgress::start(
        [] { return kaz_arg_text(arg_progress_channel, 0, nullptr); });
    kaz::detail::Dialogue::start(argc, argv);
    const int status = app->superMain(argc, argv);
    kaz::detail::Dialogue::end(status);
    return status;
}
