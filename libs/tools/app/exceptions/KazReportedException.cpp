#include "tools/app/exceptions/KazReportedException.h"

KazReportedException::KazReportedException() = default;
KazReportedException::~KazReportedException() = default;
