#include "tools/app/KazContext.h"

KazContext::~KazContext() = default;
