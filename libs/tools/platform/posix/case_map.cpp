#include "tools/platform/case_map.h"

#include <ctype.h>

namespace kaz::host {

const std::int32_t* upperCaseTable() {
    return *__ctype_toupper_loc();
}

const std::int32_t* lowerCaseTable() {
    return *__ctype_tolower_loc();
}

} // namespace kaz::host
