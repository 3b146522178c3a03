#include "tools/strings/KazStringRep.h"

#include "tools/app/KazMemoryException.h"
#include "tools/strings/detail/Block.h"

#include <cstdlib>

void KazStringRep::destroy(void* text) {
    std::free(of(text));
}

void kaz::detail::throwTextTooLong() {
    throw KazMemoryException();
}
