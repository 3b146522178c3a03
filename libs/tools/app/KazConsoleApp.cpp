// SPDX-License-Identifier: Apache-2.0
// The outermost frame of a tool. Whatever of the library's exceptions escapes from it ends here,
// is reported once, and becomes the status 1; what is none of the library's goes on to the
// handlers.
#include "tools/app/KazConsoleApp.h"

#include "tools/app/KazMasterContext.h"
#include "tools/app/exceptions/KazException.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/platform/host.h"

#include <cstdio>

KazConsoleApp::KazConsoleApp() = default;

KazConsoleApp::~KazConsoleApp() {
    removeTemporaryFiles();
}

bool KazConsoleApp::isGraphical() const {
    return false;
}

KazMasterContext* KazConsoleApp::getActiveContext() {
    // A master context registers itself with the application object, which
    // need not be this one: store it here as well.
    if (activeContext_ == nullptr)
        activeContext_ = new KazMasterContext;
    return activeContext_;
}

KazConsoleApp* KazConsoleApp::getInstance() {
    return static_cast<KazConsoleApp*>(KazApp::getInstance());
}

namespace {

/// Where memory has run out, there may be none for a director either.
void report(KazException& exception) {
    try {
        exception.reportError();
    } catch (KazMemoryException& noMemory) {
        std::fprintf(stderr, "%s\n", noMemory.getErrorMessage());
    }
}

} // namespace

int KazConsoleApp::superMain(int count, char** arguments) {
    // First of all: a file that is opened while one of them is closed would take its number, and
    // messages would be written into it.
    kaz::host::holdStandardStreams();
    setHandlers();
    argc_ = count;
    argv_ = arguments;
    try {
        initEnvironment();
        return runTool(count, arguments);
    } catch (KazException& exception) {
        report(exception);
        return 1;
    }
}
