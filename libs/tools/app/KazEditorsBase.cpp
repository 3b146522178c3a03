// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazEditorsBase.h"

constinit KazEditorsBase* KazEditorsBase::theInstance = nullptr;

KazEditorsBase::KazEditorsBase() {
    theInstance = this;
}

KazEditorsBase::~KazEditorsBase() {
    theInstance = nullptr;
}

KazString KazEditorsBase::getCreationCommand(const char* editorName) {
    return editorName;
}

KazEditorsBase* KazEditorsBase::getInstance() {
    if (theInstance == nullptr)
        new KazEditorsBase; // Installs itself; the process keeps it.
    return theInstance;
}
