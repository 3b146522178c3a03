// SPDX-License-Identifier: Apache-2.0
/// @file
/// The library's own state in one process.
#pragma once

#include "tools/app/KazContext.h"
#include "tools/config/KazEnvValue.h"
#include "tools/config/kazenv.h"
#include "tools/containers/KazStringToStringMap.h"
#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <memory>

class KazParsedArgs;

/// What configuration, tool environment and argument parsing keep between
/// calls. There is one in the last slot of the active master context.
class KAZ_API KazToolsContext : public KazContext {
public:
    static constexpr int envValueCount = 58; ///< cells of the tool environment, one a value

    KazToolsContext(const KazToolsContext&) = delete;
    KazToolsContext& operator=(const KazToolsContext&) = delete;
    ~KazToolsContext() override;

    /// The tools context of the active master context, made on first use. Null
    /// without an application object, or when a graphical application has no
    /// active context.
    static KazToolsContext* getInstance();

    /// The tool's own argument set, or null while there is none.
    KazParsedArgs* getParsedArgs() const { return parsedArgs; }
    /// The tool's own argument set, made on first use; owned by the context.
    KazParsedArgs* allocParsedArgs();

    /// The cell of @p id, which must be one of the enumeration's values.
    KazEnvValue* getEnvValue(kaz_env_id_enum id) const { return &envValues[id]; }

    /// @name Which values of the tool environment have been settled. Nothing
    /// clears a flag.
    /// @{

    /// Whether the value has been found or assigned once.
    bool isInitProjDir() const { return initProjDir; }
    bool isInitSystem() const { return initSystem; }
    bool isInitSystemDir() const { return initSystemDir; }
    bool isInitEditorName() const { return initEditorName; }
    bool isInitDiagram() const { return initDiagram; }
    bool isInitRevision() const { return initRevision; }
    /// Notes that it has.
    void setInitProjDir() { initProjDir = true; }
    void setInitSystem() { initSystem = true; }
    void setInitSystemDir() { initSystemDir = true; }
    void setInitEditorName() { initEditorName = true; }
    void setInitDiagram() { initDiagram = true; }
    void setInitRevision() { initRevision = true; }
    /// @}

    /// Names that the suite's tools share, "" at first: what the tool calls itself, the suffix
    /// of its files, the directory of the system that the map below belongs to, and the
    /// filestore directory inside a system. The library itself looks at the last alone (see
    /// filestore.h). A reference is good until the name changes.
    const KazString& getToolName() const { return toolName; }
    void setToolName(const KazString& name) { toolName = name; }
    const KazString& getDefSuffix() const { return defSuffix; }
    void setDefSuffix(const KazString& suffix) { defSuffix = suffix; }
    const KazString& getRepinfoSysDir() const { return repinfoSysDir; }
    void setRepinfoSysDir(const KazString& directory) { repinfoSysDir = directory; }
    const KazString& getFilestoreDir() const { return filestoreDir; }
    void setFilestoreDir(const KazString& directory) { filestoreDir = directory; }

    /// The state of the project database, 0 (not open) at first, and whether it may only be
    /// read. Tools say so; nothing is opened here. filestore.h tells what follows from it.
    int getDbOpen() const { return dbOpen; }
    void setDbOpen(int state) { dbOpen = state; }
    bool isDbReadonly() const { return dbReadonly; }
    void setDbReadonly(bool readonly) { dbReadonly = readonly; }

    /// What tools know about a system's repository; empty at first, and not looked at here.
    KazStringToStringMap& refRepinfoMap() { return repinfoMap; }
    /// Run-time assignments to ToolInfo variables.
    KazStringToStringMap* getVars() { return &vars; }
    /// The simple variables of text substitution.
    KazStringToStringMap& refSimpleVars() { return simpleVars; }

protected:
    KazToolsContext();

private:
    KazParsedArgs* parsedArgs = nullptr;
    std::unique_ptr<KazEnvValue[]> envValues;
    bool initProjDir = false;
    bool initSystem = false;
    bool initSystemDir = false;
    bool initEditorName = false;
    bool initDiagram = false;
    bool initRevision = false;
    KazString toolName;
    KazString defSuffix;
    KazStringToStringMap repinfoMap;
    KazString repinfoSysDir;
    KazString filestoreDir;
    int dbOpen = 0;
    bool dbReadonly = false;
    KazStringToStringMap vars;
    KazStringToStringMap simpleVars;
};
