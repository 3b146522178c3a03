// SPDX-License-Identifier: Apache-2.0
/// A tool that does what its first argument says, for the tests of whole
/// processes.
#include "tools/moxtools.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>

namespace {

/// Shows errors and survives the fatal ones.
class SurvivingDirector : public KazIODirector {
    void doFatalError(const char* format, va_list args) override { doPrintError(format, args); }
};

const char* text(const char* value) {
    return value != nullptr ? value : "(unset)";
}

int showEnvironment() {
    KazApp* app = KazApp::getInstance();
    std::printf("name=%s\nargv0=%s\nnested=%d\ngraphical=%d\nroot=%s\nbin=%s\n", app->getAppName(),
                KazApp::getArgv0(), app->isNestedCall(), app->isGraphical(), TI_myRootDir(),
                kazMoxBinDir().getValue());
    for (const char* name : {"COPYCMD", "KAZCOREROOT", "LANG", "Path", "PATH"})
        std::printf("%s=%s\n", name, text(std::getenv(name)));
    return 0;
}

int showProductPath(int argc, char** argv) {
    if (argc > 2)
        kaz_env_product_asgn(argv[2]);
    KazFilePath* path = KazApp::getInstance()->getProductPath();
    std::printf("%s|%d\n", path->getText().getValue(),
                path == KazApp::getInstance()->getProductPath());
    return 0;
}

/// Leaves streams open and text unwritten, and registers its files for removal.
int leaveFiles(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    std::cout.exceptions(std::ios::badbit);
    std::cout << "in a buffer of its own, ";
    std::wclog << L"in a wide one";
    for (int i = 2; i < argc; ++i) {
        std::FILE* stream = TI_fopen(argv[i], "w");
        std::fprintf(stream, "text");
        KazApp::getInstance()->removeAtExit(argv[i]);
    }
    KazApp::getInstance()->removeAtExit(argv[argc - 1]); // once more
    KazApp::getInstance()->removeAtExit("");
    KazApp::getInstance()->removeAtExit("no such file");
    std::printf("not ended by a line feed");
    return 3;
}

int runChild(int argc, char** argv) {
    std::string command;
    for (int i = 2; i < argc; ++i)
        command.append(i > 2 ? " " : "").append(argv[i]);
    std::fflush(stdout);
    return std::system(command.c_str()) == 0 ? 0 : 1;
}

int throwUp(const std::string& what) {
    if (what == "memory")
        std::get_new_handler()(); // what a failed allocation calls
    if (what == "file")
        throw KazFileException(KazFileException::fileNotFound, "100%s");
    if (what == "reported")
        throw KazReportedException();
    if (what == "standard")
        throw std::runtime_error("not the library's");
    if (what == "rethrown") {
        try {
            throw 42;
        } catch (int) {
            throw;
        }
    }
    (new SurvivingDirector)->install();
    throw 42;
}

class AppTool : public KazConsoleApp {
    int runTool(int argc, char** argv) override {
        const std::string what = argc > 1 ? argv[1] : "";
        if (what == "environment")
            return showEnvironment();
        if (what == "product")
            return showProductPath(argc, argv);
        if (what == "leave")
            return leaveFiles(argc, argv);
        if (what == "run")
            return runChild(argc, argv);
        return throwUp(what);
    }
};

AppTool theTool;

} // namespace
