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
    KazParsedArgs* getParsedArgs() const { return parsedArgs_; }
    /// The tool's own argument set, made on first use; owned by the context.
    KazParsedArgs* allocParsedArgs();

    /// The cell of @p id, which must be one of the enumeration's values.
    KazEnvValue* getEnvValue(kaz_env_id_enum id) const { return &envValues_[id]; }

    /// @name Which values of the tool environment have been settled. Nothing
    /// clears a flag.
    /// @{

    /// Whether the value has been found or assigned once.
    bool isInitProjDir() const { return initProjDir_; }
    bool isInitSystem() const { return initSystem_; }
    bool isInitSystemDir() const { return initSystemDir_; }
    bool isInitEditorName() const { return initEditorName_; }
    bool isInitDiagram() const { return initDiagram_; }
    bool isInitRevision() const { return initRevision_; }
    /// Notes that it has.
    void setInitProjDir() { initProjDir_ = true; }
    void setInitSystem() { initSystem_ = true; }
    void setInitSystemDir() { initSystemDir_ = true; }
    void setInitEditorName() { initEditorName_ = true; }
    void setInitDiagram() { initDiagram_ = true; }
    void setInitRevision() { initRevision_ = true; }
    /// @}

    /// Names that the suite's tools share, "" at first: what the tool calls itself, the suffix
    /// of its files, the directory of the system that the map below belongs to, and the
    /// filestore directory inside a system. The library itself looks at the last alone (see
    /// filestore.h). A reference is good until the name changes.
    const KazString& getToolName() const { return toolName_; }
    void setToolName(const KazString& name) { toolName_ = name; }
    const KazString& getDefSuffix() const { return defSuffix_; }
    void setDefSuffix(const KazString& suffix) { defSuffix_ = suffix; }
    const KazString& getRepinfoSysDir() const { return repinfoSysDir_; }
    void setRepinfoSysDir(const KazString& directory) { repinfoSysDir_ = directory; }
    const KazString& getFilestoreDir() const { return filestoreDir_; }
    void setFilestoreDir(const KazString& directory) { filestoreDir_ = directory; }

    /// The state of the project database, 0 (not open) at first, and whether it may only be
    /// read. Tools say so; nothing is opened here. filestore.h tells what follows from it.
    int getDbOpen() const { return dbOpen_; }
    void setDbOpen(int state) { dbOpen_ = state; }
    bool isDbReadonly() const { return dbReadonly_; }
    void setDbReadonly(bool readonly) { dbReadonly_ = readonly; }

    /// What tools know about a system's repository; empty at first, and not looked at here.
    KazStringToStringMap& refRepinfoMap() { return repinfoMap_; }
    /// Run-time assignments to ToolInfo variables.
    KazStringToStringMap* getVars() { return &vars_; }
    /// The simple variables of text substitution.
    KazStringToStringMap& refSimpleVars() { return simpleVars_; }

protected:
    KazToolsContext();

private:
    KazParsedArgs* parsedArgs_ = nullptr;
    std::unique_ptr<KazEnvValue[]> envValues_;
    bool initProjDir_ = false;
    bool initSystem_ = false;
    bool initSystemDir_ = false;
    bool initEditorName_ = false;
    bool initDiagram_ = false;
    bool initRevision_ = false;
    KazString toolName_;
    KazString defSuffix_;
    KazStringToStringMap repinfoMap_;
    KazString repinfoSysDir_;
    KazString filestoreDir_;
    int dbOpen_ = 0;
    bool dbReadonly_ = false;
    KazStringToStringMap vars_;
    KazStringToStringMap simpleVars_;
};
