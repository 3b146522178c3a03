// SPDX-License-Identifier: Apache-2.0
/// @file
/// The application object: one in each process, found by the library's main.
#pragma once

#include "tools/containers/KazColl.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"

class KazFilePath;
class KazMasterContext;
class KazParsedArgs;

/// The state and services of the running tool. Tools derive from
/// KazConsoleApp; a graphical frame derives from this class directly.
///
/// The object registers itself on construction, is meant to have static
/// lifetime, and is safe there: it may be made before and destroyed after any
/// other static object.
class KAZ_API KazApp {
public:
    /// Makes this object the application; the one constructed last wins.
    KazApp();
    KazApp(const KazApp&) = delete;
    KazApp& operator=(const KazApp&) = delete;

    /// Deletes the parsed arguments and the product path. Neither the files
    /// given to removeAtExit nor the active context are deleted here. When this
    /// object is the application, there is none afterwards.
    virtual ~KazApp();

    /// The program's name: the last component of argv[0] in lower case without
    /// a final ".exe". Computed once for the process, again while it is empty.
    /// The text lives as long as the application object.
    virtual const char* getAppName() const;

    /// True for an application that shows its output in windows.
    virtual bool isGraphical() const = 0;

    /// The application's argument set, made on first use and owned. It is empty
    /// until the tool parses something into it (kaz_arg_parse).
    virtual KazParsedArgs* getParsedArgs();

    /// The master context in force; null when there is none. Not owned.
    virtual KazMasterContext* getActiveContext();

    /// Shows the user that the tool is busy. Does nothing here.
    virtual void setBusy(bool busy);

protected:
    /// Prepares the process environment: "COPYCMD" is "/Y"; when "KAZCOREROOT"
    /// is set to anything, another tool has started this one, which is all that
    /// is noted. Otherwise sets "KAZCOREROOT" to the installation root and
    /// "LANG" to "default", and puts the suite's program directory in front of
    /// "Path" (where the host searches a variable of another name or spelling,
    /// in front of that as well).
    virtual void initEnvironment();

public:
    /// Runs the tool and gives the status of the process. Called by main.
    virtual int superMain(int argc, char** argv) = 0;

    /// The application object; null before one is constructed and after it is
    /// destroyed.
    static KazApp* getInstance() { return theApp; }

    /// argv[0] of the vector that superMain has received; "" when there is none.
    /// The vector is not copied: what a tool changes in it shows here.
    static const char* getArgv0();

    /// Makes @p context the one in force; null for none. Takes no ownership.
    void setActiveContext(KazMasterContext* context) { activeContext_ = context; }

    /// Whether the tool serves its authors; false at first. When it is set, memory_panic tells
    /// which function had no memory. No option sets it.
    bool getDebugFlag() const { return debugFlag_; }
    void setDebugFlag(bool flag) { debugFlag_ = flag; }
    /// Whether the tool tells each step; false at first. The library only keeps it for the
    /// tool.
    bool getVerboseFlag() const { return verboseFlag_; }
    void setVerboseFlag(bool flag) { verboseFlag_ = flag; }

    /// True when another tool of the suite has started this one.
    bool isNestedCall() const { return nestedCall_; }

    /// Notes the file @p path (native or host spelling, copied, no "~") for
    /// deletion when a console application is destroyed. A relative path counts
    /// from the working directory of that moment. Directories are not deleted.
    /// The file belongs to the process that calls this: one that is forked off
    /// inherits no duty to delete it.
    void removeAtExit(const KazString& path);

    /// The directories in which the product's files are searched, from the
    /// variable "<product>_mox_file_path", or "mox_file_path" without a
    /// product; an undefined variable is reported and replaced by
    /// "templates/ct;templates". Made on first use and owned.
    KazFilePath* getProductPath();

protected:
    /// Writes out and ends the standard streams, those of C++ included, and
    /// every other stdio stream of the process, so that the files can be deleted
    /// on every host. Then deletes the files given to removeAtExit, the last one
    /// first, and forgets them. A file that cannot be deleted is left alone
    /// silently.
    ///
    /// From here on the standard streams lead to the null device, and no other
    /// stdio stream that was open may be used: hosts that cannot delete an open
    /// file have closed it.
    void removeTemporaryFiles();

private:
    friend class KazConsoleApp;

    static void setHandlers();
    static void newHandler();
    static void terminateHandler();

    static KazApp* theApp;

    int argc_ = 0;
    char** argv_ = nullptr;
    KazMasterContext* activeContext_ = nullptr;
    KazFilePath* productPath_ = nullptr;
    KazColl tempFiles_;
    KazParsedArgs* parsedArgs_ = nullptr;
    bool debugFlag_ = false;
    bool verboseFlag_ = false;
    bool nestedCall_ = false;
    int tempFilesOwner_ = 0; ///< the process that has registered tempFiles
};
