// SPDX-License-Identifier: Apache-2.0
// There is one application object, mostly static, and the latest one made is the one in force.
// Its members are created when they are first asked for, because its constructor runs before
// main: nothing of the environment is looked at there. Temporary files belong to the process that
// noted them, not to a copy that was forked off.
#include "tools/app/KazApp.h"

#include "tools/app/KazParsedArgs.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/KazFilePath.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"
#include "tools/util/detail/panic.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <string>

constinit KazApp* KazApp::theApp = nullptr;

namespace {

/// The program's name, kept for the whole process. The constructor of KazApp
/// touches it, so that it is destroyed after every application object.
KazString& appNameCache() {
    static KazString name;
    return name;
}

KazString programName(const char* path) {
    const KazString extension(".exe");
    KazString name = kazLastFileComponent(path);
    name.toLower();
    const int stem = name.getLength() - extension.getLength();
    if (stem >= 0 && name.findLast(extension) == stem)
        name = name.subStringBefore(stem);
    return name;
}

/// Puts the suite's programs in front of "Path", whose entries are native text
/// on every host.
void extendPath(const char* binDir) {
    // Not joined where there was none: some take an empty entry for the current directory.
    KazString nativeDir = kazNormalizedPath(binDir);
    const char* path = kaz::host::environment("Path");
    if (path != nullptr && *path != '\0') {
        nativeDir += ";";
        nativeDir += path;
    }
    TI_putenv("Path", nativeDir);
}

/// Where the host's own search variable is not the one that extendPath has just
/// set, child tools are found through this one.
void extendHostSearchPath(const char* binDir) {
    // Compared by address: where case does not count both names find one and the same entry.
    const char* nativePath = kaz::host::environment("Path");
    const char* hostPath = kaz::host::environment("PATH");
    const bool sameVariable = hostPath != nullptr && nativePath == hostPath;
    std::string result = kaz::host::hostPath(binDir);
    if (sameVariable || result.empty())
        return;
    // A variable that is set to the suite alone would hide the programs of the host, which are
    // found by default only while there is no variable at all.
    const std::string behind = hostPath != nullptr ? hostPath : kaz::host::defaultSearchPath();
    if (!behind.empty())
        result.append(1, kaz::host::searchPathSeparator()).append(behind);
    TI_putenv("PATH", result.c_str());
}

/// A product's files are searched along a variable of its own.
KazString productPathValue(const char* product) {
    const bool hasProduct = product != nullptr && *product != '\0';
    KazString variable;
    if (hasProduct) {
        variable = product;
        variable.toLower();
        variable += "_";
    }
    variable += "mox_file_path";
    if (const char* value = TI_Vcont(variable))
        return value;
    if (hasProduct)
        print_err("TI variable \"%s\" undefined for product \"%s\" -- using default",
                  kaz::detail::quotedName(variable).getValue(),
                  kaz::detail::quotedName(product).getValue());
    else
        print_err("TI variable \"%s\" undefined -- using default", variable.getValue());
    return "templates/ct;templates";
}

/// Not being able to delete is ignored, for want of memory too.
void deleteQuietly(const char* path) {
    try {
        kaz::host::removeFile(path);
    } catch (const KazMemoryException&) {
    }
}

} // namespace

KazApp::KazApp() {
    // Made first and so destroyed last, see there.
    appNameCache();
    kaz::detail::isDebugged = [] { return theApp != nullptr && theApp->debugFlag_; };
    tempFiles_.setCheckIn(KazString::checkIn);
    tempFiles_.setCheckOut(KazString::checkOut);
    theApp = this;
}

KazApp::~KazApp() {
    // From here on nobody may call through the virtual slots any more.
    if (theApp == this)
        theApp = nullptr;
    delete parsedArgs_;
    delete productPath_;
}

const char* KazApp::getAppName() const {
    KazString& name = appNameCache();
    if (name.isEmpty())
        name = programName(getArgv0());
    return name.getValue();
}

KazParsedArgs* KazApp::getParsedArgs() {
    if (parsedArgs_ == nullptr)
        parsedArgs_ = new KazParsedArgs;
    return parsedArgs_;
}

KazMasterContext* KazApp::getActiveContext() {
    return activeContext_;
}

void KazApp::setBusy(bool) {}

/// The first tool of the suite prepares the environment for those that it starts; each of them
/// finds it prepared.
void KazApp::initEnvironment() {
    // The platform's copy command then never asks before it overwrites.
    TI_putenv("COPYCMD", "/Y");
    // Before the paths: each level of tools would put the same directory in front once more.
    if (kaz::host::environment("KAZCOREROOT") != nullptr) {
        nestedCall_ = true;
        return;
    }
    TI_putenv("KAZCOREROOT", TI_myRootDir());
    TI_putenv("LANG", "default");
    const KazString binDir = kazMoxBinDir();
    extendPath(binDir);
    extendHostSearchPath(binDir);
}

const char* KazApp::getArgv0() {
    if (theApp == nullptr || theApp->argc_ < 1 || theApp->argv_[0] == nullptr)
        return "";
    return theApp->argv_[0];
}

void KazApp::removeAtExit(const KazString& path) {
    // A process that was forked off lets go of the files that it inherited.
    if (tempFilesOwner_ != kaz::host::processId())
        tempFiles_.removeAll();
    tempFilesOwner_ = kaz::host::processId();
    KazString kept(path);
    tempFiles_.add(kept.disguise());
}

KazFilePath* KazApp::getProductPath() {
    if (productPath_ == nullptr)
        productPath_ = new KazFilePath(productPathValue(kaz_env_product()));
    return productPath_;
}

void KazApp::removeTemporaryFiles() {
    kaz::host::flushStreams();
    // Some hosts refuse to delete a file that is open.
    kaz::host::closeAllStreams();
    const bool isOwner = tempFilesOwner_ == kaz::host::processId();
    for (int i = isOwner ? tempFiles_.getSize() - 1 : -1; i >= 0; --i)
        if (const void* path = tempFiles_.getAt(i))
            deleteQuietly(static_cast<const char*>(path));
    tempFiles_.removeAll();
}

void KazApp::setHandlers() {
    std::set_terminate(terminateHandler);
    kaz::host::terminateOnUncaughtRethrow();
    // An exception of the library's, so that superMain can report what operator new has met.
    std::set_new_handler(newHandler);
}

void KazApp::newHandler() {
    throw KazMemoryException();
}

void KazApp::terminateHandler() {
    // A fault while the first one is being reported must not start over.
    static constinit bool entered = false;
    if (entered)
        std::abort();
    entered = true;
    kazInternalError(2);
    // Only a director whose fatalError returns leads here.
    std::exit(EXIT_FAILURE);
}
