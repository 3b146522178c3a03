#include "tools/app/exceptions/KazTreeClashException.h"

KazTreeClashException::KazTreeClashException(void* clashData) : clashData(clashData) {}
KazTreeClashException::~KazTreeClashException() = default;
