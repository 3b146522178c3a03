// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazToolsContext.h"

#include "tools/app/KazMasterContext.h"
#include "tools/app/KazParsedArgs.h"

static_assert(KazToolsContext::envValueCount == kaz_env_id_count);

KazToolsContext::KazToolsContext()
    : envValues_(new KazEnvValue[envValueCount]),
      repinfoMap_(true, 1),
      vars_(true, 61),
      simpleVars_(true, 61) {}

KazToolsContext::~KazToolsContext() {
    delete parsedArgs_;
}

KazToolsContext* KazToolsContext::getInstance() {
    KazMasterContext* master = KazMasterContext::getInstance();
    if (master == nullptr)
        return nullptr;
    if (master->getSlot(KazMasterContext::toolsSlot) == nullptr)
        master->setSlot(KazMasterContext::toolsSlot, new KazToolsContext);
    return static_cast<KazToolsContext*>(master->getSlot(KazMasterContext::toolsSlot));
}

KazParsedArgs* KazToolsContext::allocParsedArgs() {
    if (parsedArgs_ == nullptr)
        parsedArgs_ = new KazParsedArgs;
    return parsedArgs_;
}
