#include "tools/platform/case_map.h"

namespace kaz::host {

const std::int32_t* upperCaseTable() {
    return nullptr;
}

const std::int32_t* lowerCaseTable() {
    return nullptr;
}

} // namespace kaz::host
