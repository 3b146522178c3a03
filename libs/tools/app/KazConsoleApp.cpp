#include "tools/app/KazConsoleApp.h"

#include "tools/app/KazException.h"
#include "tools/app/KazMasterContext.h"
#include "tools/platform/host.h"

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
    if (activeContext == nullptr)
        activeContext = new KazMasterContext;
    return activeContext;
}

KazConsoleApp* KazConsoleApp::getInstance() {
    return static_cast<KazConsoleApp*>(KazApp::getInstance());
}

int KazConsoleApp::superMain(int count, char** arguments) {
    kaz::host::holdStandardStreams();
    setHandlers();
    argc = count;
    argv = arguments;
    try {
        initEnvironment();
        return runTool(count, arguments);
    } catch (KazException& exception) {
        exception.reportError();
        return 1;
    }
}
