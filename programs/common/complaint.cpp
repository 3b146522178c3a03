// SPDX-License-Identifier: Apache-2.0
// One complaint a run is opened, the first: an editor that opens a window for each would be a
// nuisance. It is the user's setting, and an editor that needs a terminal is started only where
// there is one.
#include "common/complaint.h"

#include "tools/files/tifiles.h"
#include "tools/files/tistatus.h"
#include "tools/services/sourcenav.h"
#include "tools/settings/KazSettings.h"

#include <cstdio>

namespace {

bool isWanted(const char* program) {
    return KazSettings(program).getBool("open complaints in the editor");
}

bool isOnTerminal() {
    return TI_isTerminal(stdin) && TI_isTerminal(stdout);
}

bool needsTerminal(const std::string& file) {
    KazStringColl words;
    return kaz_source_command(nullptr, file.c_str(), 1, 1, words) == 1;
}

} // namespace

void openComplaint(const char* program, const std::string& file, int line, int column) {
    static bool isDone = false;
    if (isDone || line < 1 || !TI_isFile(file.c_str()) || !isWanted(program))
        return;
    // Also where nothing is opened below: the first complaint is the one, whatever becomes of it.
    isDone = true;
    if (isOnTerminal() || !needsTerminal(file))
        kazShowSource(file.c_str(), line, column);
}
