/// @file
/// Everything public, in one include.
#pragma once

#include "tools/export.h"

#include "tools/util/gu_set.h"
#include "tools/util/memory.h"
#include "tools/util/text.h"

#include "tools/strings/KazQuotedStringTokenizer.h"
#include "tools/strings/KazString.h"
#include "tools/strings/KazStringRep.h"
#include "tools/strings/KazStringTokenizer.h"

#include "tools/files/KazFileManager.h"
#include "tools/files/KazFilePath.h"
#include "tools/files/kazpath.h"
#include "tools/files/process.h"
#include "tools/files/tifiles.h"

#include "tools/messages/KazConsoleProgress.h"
#include "tools/messages/KazIODirector.h"
#include "tools/messages/KazMsgProgressHandle.h"
#include "tools/messages/KazNGProgress.h"
#include "tools/messages/KazProgress.h"
#include "tools/messages/KazProgressHandle.h"
#include "tools/messages/KazProgressMap.h"
#include "tools/messages/KazProgressRange.h"
#include "tools/messages/messages.h"

#include "tools/config/KazEnvValue.h"
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/config/vstring.h"

#include "tools/app/KazApp.h"
#include "tools/app/KazArgDescription.h"
#include "tools/app/KazCancellationException.h"
#include "tools/app/KazConsoleApp.h"
#include "tools/app/KazContext.h"
#include "tools/app/KazEditorsBase.h"
#include "tools/app/KazException.h"
#include "tools/app/KazFileException.h"
#include "tools/app/KazMasterContext.h"
#include "tools/app/KazMemoryException.h"
#include "tools/app/KazParsedArgs.h"
#include "tools/app/KazReportedException.h"
#include "tools/app/KazResourceException.h"
#include "tools/app/KazToolsContext.h"
#include "tools/app/KazTreeClashException.h"
#include "tools/app/arguments.h"
