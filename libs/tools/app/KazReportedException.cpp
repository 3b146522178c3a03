#include "tools/app/KazReportedException.h"

KazReportedException::KazReportedException() = default;
KazReportedException::~KazReportedException() = default;
