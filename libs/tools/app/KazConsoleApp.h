// SPDX-License-Identifier: Apache-2.0
/// @file
/// The base of every command-line tool.
#pragma once

#include "tools/app/KazApp.h"
#include "tools/export.h"

/// A tool is an executable with one static object of a class derived from this
/// one. The library supplies main:
///
/// @code
/// class HelloApp : public KazConsoleApp {
///     int runTool(int, char**) override {
///         print_msg("hello from %s", getAppName());
///         return 0;
///     }
/// };
/// static HelloApp theTool;
/// @endcode
///
/// A KazException that leaves runTool is reported once and gives status 1. Any
/// other exception ends the process through the terminate handler, which
/// reports internal error 2. A failed allocation throws KazMemoryException.
class KAZ_API KazConsoleApp : public KazApp {
public:
    KazConsoleApp();

    /// Ends the stdio streams and deletes the files given to removeAtExit (see
    /// removeTemporaryFiles): what static objects print that are destroyed after
    /// this one goes nowhere.
    ~KazConsoleApp() override;

    bool isGraphical() const override;

    /// The active context; a KazMasterContext is made when none is active.
    KazMasterContext* getActiveContext() override;

    /// The application object, which must be a console application; null when
    /// there is none.
    static KazConsoleApp* getInstance();

private:
    int superMain(int argc, char** argv) override;

    /// The tool's body; its result is the status of the process.
    virtual int runTool(int argc, char** argv) = 0;
};
