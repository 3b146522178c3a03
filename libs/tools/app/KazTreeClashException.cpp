#include "tools/app/KazTreeClashException.h"

KazTreeClashException::KazTreeClashException(void* clashData) : clashData(clashData) {}
KazTreeClashException::~KazTreeClashException() = default;
